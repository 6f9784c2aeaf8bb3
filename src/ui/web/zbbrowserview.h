#pragma once

#include <QString>
#include <QUrl>
#include <QWebEngineView>

#include "ui/web/zbwebpane.h"
#include "web/zbwebrequest.h"

class QAction;
class QNetworkCookieJar;
class QWebChannel;
class QWebEngineLoadingInfo;
class QWebEngineNewWindowRequest;
class QWebEngineProfile;
class ZBPageScanBridge;
class ZBRuffleServer;
class ZBWebRequestInterceptor;

// The browser pane's web view, in an off-the-record profile of its own.
//
// Reports what capture and navigation need and decides nothing about either:
// every request a page makes and every movie address its markup names
// (resourceRequested), the main frame's load steps, told apart by how a load
// failed, and the busy state for the spinner. Pop-ups open in this view, the
// context menu is our own (Back, Reload) and nothing can be dropped in.
//
// Flash movies in pages play in the Flash engine (Ruffle), which the view
// adds to every page that holds an <embed> or <object>; the engine's files
// come from a loopback server of the view's own.
class ZBBrowserView : public QWebEngineView
{
    Q_OBJECT

public:
    using FailureKind = ZBWebPane::FailureKind;

    static constexpr const char *UserAgent = "NorvikPlayer";
    // Tag of the context menu's Reload item.
    static constexpr int ReloadMenuTag = 9001;

    explicit ZBBrowserView(QWidget *parent = nullptr);
    ~ZBBrowserView() override;

    QWebEngineProfile *profile() const { return m_profile; }
    // Every cookie the pages hold, HttpOnly ones included, for downloads and
    // size probes made outside the web engine. Owned by the view: a network
    // access manager given it with setCookieJar() takes it over, so give it
    // back with cookieJar()->setParent(view) afterwards.
    QNetworkCookieJar *cookieJar() const { return m_cookieJar; }
    // False when the Flash engine's files are missing: pages then show their
    // movies as the web engine alone does (not at all).
    bool isFlashAvailable() const;

    // Our own pages: ZBWebPane::startPageUrl() and errorPageUrl().
    void loadStartPage(const QString &typedText);
    void loadErrorPage(const QString &address, FailureKind kind = FailureKind::Connection, int code = 0,
                       const QString &description = QString());

    // Plays the Flash movie at `url` filling the view. Its page and the
    // requests it makes carry ZBWebRequest::preview until the next load.
    void previewSWF(const QUrl &url);
    bool isPreviewing() const { return m_previewing; }

    // A main-frame load is under way.
    bool isBusy() const { return m_busy; }

    // The context menu's Back item; off until the owner says there is a page
    // to go back to.
    void setBackEnabled(bool enabled);

Q_SIGNALS:
    // Every request any frame makes, and every movie or media address found
    // in a frame's markup (ZBWebRequest::FoundInPage).
    void resourceRequested(const ZBWebRequest &request);

    // The main frame's steps, in this order: started, committed, then title
    // (any number of times), then finished or failed.
    void mainFrameLoadStarted(const QUrl &url);
    void mainFrameCommitted(const QUrl &url);
    void titleReceived(const QString &title, const QUrl &url);
    void mainFrameLoadFinished(const QUrl &url, const QString &title);
    // Not sent for a load that a newer one or stop() cut short.
    void mainFrameLoadFailed(const QUrl &url, ZBWebPane::FailureKind kind, int code, const QString &description);
    // For the spinner: on when a main-frame load starts, off when it ends.
    void busyChanged(bool busy);

    // A page asked for a new window; its address is loading in this view.
    void newWindowLoaded(const QUrl &url);

    // The context menu (or its shortcut) asked for Back or Reload.
    void backRequested();
    void reloadRequested();

protected:
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void installPageScripts();
    void onLoadingChanged(const QWebEngineLoadingInfo &info);
    void onNewWindowRequested(QWebEngineNewWindowRequest &request);
    void onAddressFound(const QString &url, const QString &element, const QString &frameUrl, bool topFrame);
    void setBusy(bool busy);

    QWebEngineProfile *m_profile;
    ZBWebRequestInterceptor *m_interceptor;
    QNetworkCookieJar *m_cookieJar;
    ZBRuffleServer *m_ruffleServer;
    ZBPageScanBridge *m_scanBridge;
    QWebChannel *m_channel;
    QAction *m_backAction;
    QAction *m_reloadAction;

    bool m_busy = false;
    QUrl m_startedUrl;
    bool m_committed = false;
    bool m_previewing = false;
    QUrl m_previewUrl;
};
