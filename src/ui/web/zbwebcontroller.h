#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>

#include "web/zbbrowserhost.h"
#include "ui/web/zbwebpane.h"

class QMenu;
class ZBCaptureTree;
class ZBDownloadItem;
class ZBDownloadManager;
class ZBDownloadTreeModel;
class ZBHistory;
class ZBLed;
class ZBLibraryController;
class ZBMainWindowLayout;
class ZBNavigationState;
class ZBNotificationCenter;
class ZBResourceProbe;
class ZBSettings;
struct ZBCommandState;
struct ZBWebRequest;

// The browser half of the main window: the address pane, the web page, the
// download tree and the History menu, wired to the navigation rules, the
// capture tree and the download manager that own the state. The web engine
// is made the first time a page is needed, so starting the player does not
// wait for it.
class ZBWebController : public QObject, private ZBBrowserHost
{
    Q_OBJECT

public:
    // What the window does for the browser: its content mode and the choice
    // of the "Now Browsing" list.
    struct WindowHooks
    {
        std::function<int()> contentMode;
        std::function<void(int)> setContentMode;
        std::function<void()> showBrowsing;
    };

    ZBWebController(ZBLibraryController *library, ZBSettings *settings, ZBMainWindowLayout *layout, ZBLed *led,
                    ZBNotificationCenter *notifications, WindowHooks hooks, QObject *parent = nullptr);
    ~ZBWebController() override;

    // The History menu's "Recent Pages" submenu: the pages visited go after
    // its first two items, once the history is open.
    void setHistoryMenu(QMenu *menu);
    // Opens the history store (the window shows before it is read) and
    // fills the History menu. Anything that needs the history earlier
    // opens it on the way.
    void openHistory();
    // Makes the web view and shows the start page, once. False, having told
    // the user why, when the web engine cannot be loaded.
    bool ensureStarted();
    bool isStarted() const { return m_view != nullptr; }
    ZBWebPane *view() const { return m_view; }
    ZBCaptureTree &capture() { return *m_capture; }
    ZBDownloadManager &downloads() { return *m_downloads; }
    ZBNavigationState &navigation() { return *m_navigation; }

    // "norvikplayer://<address>".
    void handleGetURLEvent(const QString &url);
    void buttonBackClick();
    void goHome();
    void reloadCurrentPage();
    void clearHistory();
    void downloadSelected();
    void downloadAll();
    void previewSelected();
    void clearDownloadList();
    void showDownloadedItemInFileManager();
    void copySelectedURLs();
    void selectAll();
    // Removes the selected pages (leaving a preview that is among them).
    void removeSelected();
    void fillCommandState(ZBCommandState &state) const;

Q_SIGNALS:
    // A downloaded track to play: its library UUID.
    void playRequested(const QString &itemUUID);
    // Files joined the library.
    void libraryChanged();
    // Something the menu commands read changed.
    void stateChanged();

private:
    // ZBBrowserHost
    QString addressText() const override;
    void setAddressText(const QString &text) override;
    void setGoEnabled(bool enabled) override;
    void setBackEnabled(bool enabled) override;
    void recentURLsChanged() override;
    void historyMenuChanged() override;
    void load(const QUrl &url) override;
    void reload() override;
    QString mainFrameURL() const override;
    void setPageStatus(const QString &text) override;
    void setSpinnerRunning(bool running) override;
    void setLedBackVisible(bool visible) override;
    int contentMode() const override;
    void showBrowsing() override;
    void reloadDownloadTree() override;
    void focusDownloadTree() override;
    bool hasPreviewItem() const override;
    QString previewItemTitle() const override;
    void expandPreviewItem() override;
    void clearPreviewItem() override;
    void validatePreviewButton() override;

    void connectView();
    void resourceRequested(const ZBWebRequest &request);
    // The view names our own pages by its URLs; the navigation rules know
    // them by theirs.
    QString navigationURL(const QUrl &url) const;
    void actionClicked(const QModelIndex &index);
    // A yes/no question; with `neverAskAgain`, its check box is stored there.
    bool ask(const char *messageKey, const char *infoKey, bool *neverAskAgain);
    void downloadsChanged();
    QList<ZBDownloadItem *> selectedItems() const;

    ZBLibraryController *m_library;
    ZBSettings *m_settings;
    ZBMainWindowLayout *m_layout;
    ZBLed *m_led;
    ZBNotificationCenter *m_notifications;
    WindowHooks m_hooks;
    std::unique_ptr<ZBHistory> m_history;
    std::unique_ptr<ZBCaptureTree> m_capture;
    std::unique_ptr<ZBResourceProbe> m_probe;
    std::unique_ptr<ZBDownloadManager> m_downloads;
    std::unique_ptr<ZBNavigationState> m_navigation;
    ZBDownloadTreeModel *m_model;
    QPointer<ZBWebPane> m_view;
    QPointer<QMenu> m_historyMenu;
    // Why the last page failed, for the error page.
    ZBWebPane::FailureKind m_failureKind = ZBWebPane::FailureKind::Connection;
    int m_failureCode = 0;
    QString m_failureText;
};
