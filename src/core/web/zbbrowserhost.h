#pragma once

#include <QString>
#include <QUrl>

// What ZBNavigationState needs from the window around the browser: the
// address field, the web view's main frame, the status panel's browsing page
// and the download tree. The main window implements it over its widgets;
// tests implement it with a recorder.
class ZBBrowserHost
{
public:
    virtual ~ZBBrowserHost() = default;

    // The address field (the editable combo box) and the buttons beside it.
    virtual QString addressText() const = 0;
    virtual void setAddressText(const QString &text) = 0;
    virtual void setGoEnabled(bool enabled) = 0;
    virtual void setBackEnabled(bool enabled) = 0;
    // The drop-down's rows (ZBNavigationState::recentURLs()) changed.
    virtual void recentURLsChanged() = 0;
    // The History menu's pages (ZBNavigationState::historyMenuItems()) changed.
    virtual void historyMenuChanged() = 0;

    // The web view's main frame.
    virtual void load(const QUrl &url) = 0;
    virtual void reload() = 0;
    // The URL the main frame shows now, as the view gives it.
    virtual QString mainFrameURL() const = 0;

    // The status panel's browsing page.
    virtual void setPageStatus(const QString &text) = 0;
    virtual void setSpinnerRunning(bool running) = 0;
    virtual void setLedBackVisible(bool visible) = 0;

    // The rest of the window. contentMode() is the window's content mode
    // (0 browsing, 1 library, 2 search results, 3 preview of a resource).
    virtual int contentMode() const = 0;
    // Selects the available-now row of the source list and shows the browser
    // (content mode 0).
    virtual void showBrowsing() = 0;
    virtual void reloadDownloadTree() = 0;
    virtual void focusDownloadTree() = 0;
    // The captured resource being previewed, if any.
    virtual bool hasPreviewItem() const = 0;
    virtual QString previewItemTitle() const = 0;
    virtual void expandPreviewItem() = 0;
    virtual void clearPreviewItem() = 0;
    virtual void validatePreviewButton() = 0;
};
