#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include "web/zbhistoryentity.h"

class ZBBrowserHost;
class ZBHistory;

// The browser pane's rules, without the widgets: how the address field's text
// becomes a request, the back stack, what the URL history remembers and when,
// the page-status texts, and the bookkeeping of a main-frame load (whether
// capture is paused, the resource counters). It acts on the window only
// through ZBBrowserHost; the methods named after the web view's events are
// called by the view's owner as those events arrive.
//
// The start page and the error page are local files; the view shows the
// address-field text passed to them in the query.
class ZBNavigationState
{
public:
    // What a title arriving for the main frame means for the download tree:
    // the page root titled `previousTitle` (or, failing that, `title`) takes
    // `title`.
    struct PageTitleChange
    {
        bool valid = false;
        QString previousTitle;
        QString title;
    };

    ZBNavigationState(ZBBrowserHost *host, ZBHistory *history, const QString &startPagePath,
                      const QString &errorPagePath);

    // At start: the drop-down from the history, Back off, the History menu
    // refreshed, Go validated and the start page loaded.
    void start();

    // The address field and its buttons.
    void goToURL();
    void buttonGoClick();
    // Return in the address field.
    void cellTextDidEndEditing();
    void addUrlToHistoryListWithHandWritedOption(bool handWrited);
    void validateGoButton();
    void buttonBackClick();
    // Back from a preview (the status panel's Back button).
    void buttonLEDBackClick();
    void reloadCurrentPage();
    void gotoURLfromHistoryMenu(const QString &url);
    void clearHistoryMenu();
    // A "norvikplayer://<address>" URL handed over by the desktop.
    void handleGetURLEvent(const QString &eventURL);
    // A page asks for a new window: true when it opened in the same view
    // instead; "about:blank" pop-ups are ignored.
    bool decidePolicyForNewWindowAction(const QString &url);

    // The address field's completion: the first stored URL beginning with
    // `text`, or `text` itself.
    QString firstURLMatchingPrefix(const QString &text) const;
    // The drop-down's rows, most recently used first.
    QStringList recentURLs() const;
    // The History menu's pages ("PageTitle" to show, "HistoryItem" to open).
    QList<ZBHistoryEntity> historyMenuItems() const;

    // The web view's main-frame events; `mainFrame` false for a sub-frame.
    void webViewDidStartProvisionalLoad(bool mainFrame, const QString &url);
    // The URL whose page root the download tree must hold now (created when
    // missing, its own address handed to capture); empty when none.
    QString webViewDidCommitLoad(bool mainFrame, const QString &url);
    PageTitleChange webViewDidReceiveTitle(bool mainFrame, const QString &title, const QString &url);
    void webViewDidFailProvisionalLoad(bool mainFrame);
    void webViewDidFinishLoad(bool mainFrame);
    // Resource events of the page: the identifier of a new request, a request
    // sent (also on each redirect), one finished, one failed.
    int identifierForInitialRequest();
    void resourceWillSendRequest();
    void resourceDidFinishLoading();
    void resourceDidFailLoading();

    // The page-status text: a localisation key's text, or a ready-made text.
    void updatePageLoadingStatus(const QString &key);
    void updatePageLoadingStatusWithString(const QString &text);
    void updateResourceStatus();

    // The built-in pages as the view is asked to load them, with the address
    // field's text in the query.
    QString startPageURL() const;
    QString errorPageURL() const;

    // The request an address-field text makes: trimmed, percent-escaped when
    // it is not a valid URL as typed, "http://" in front when it names no
    // scheme. Invalid for an empty text or one no URL can be made of.
    static QUrl urlForAddress(const QString &text);
    // What capture is handed for a page's own address: the URL without its
    // scheme, cut before any second "http://" in it.
    static QString pageAddressForCapture(const QString &url);
    // The address in a "norvikplayer://" URL, percent escapes decoded.
    static QString addressFromSchemeURL(const QString &eventURL);

    QStringList URLHistory() const { return m_URLHistory; }
    bool webViewGoingBack() const { return m_webViewGoingBack; }
    QString webFrameTitle() const { return m_webFrameTitle; }
    void setWebFrameTitle(const QString &title) { m_webFrameTitle = title; }
    QString currentURL() const { return m_currentURL; }
    bool pageLoadError() const { return m_pageLoadError; }
    // True while capture must ignore resource responses.
    bool shouldBypassReceiveURLs() const { return m_shouldBypassReceiveURLs; }
    void setShouldBypassReceiveURLs(bool bypass) { m_shouldBypassReceiveURLs = bypass; }
    int resourceCount() const { return m_resourceCount; }
    int resourceCompletedCount() const { return m_resourceCompletedCount; }
    int resourceFailedCount() const { return m_resourceFailedCount; }

private:
    void resetResourceCounters();
    void reloadRecentURLs();
    // Leaves a preview for the page list: the same steps precede every
    // navigation that does not come from the page itself.
    void leavePreview();
    QString builtInPageURL(const QString &format, const QString &path) const;
    bool isBuiltInPage(const QString &url) const;
    bool isErrorPage(const QString &url) const;

    ZBBrowserHost *m_host;
    ZBHistory *m_history;
    QString m_startPagePath;
    QString m_errorPagePath;

    QStringList m_URLHistory;
    bool m_webViewGoingBack = false;
    QList<ZBHistoryEntity> m_recentURLs;
    QString m_webFrameTitle;
    QString m_currentURL;
    bool m_pageLoadError = false;
    bool m_shouldBypassReceiveURLs = false;
    int m_resourceCount = 0;
    int m_resourceCompletedCount = 0;
    int m_resourceFailedCount = 0;
};
