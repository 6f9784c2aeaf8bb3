#include "ui/web/zbbrowserview.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMenu>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QWebChannel>
#include <QWebEngineCookieStore>
#include <QWebEngineLoadingInfo>
#include <QWebEngineNewWindowRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineScriptCollection>
#include <QWebEngineSettings>

#include "engines/zbloggingwebpage.h"
#include "engines/flash/zbflashscheme.h"
#include "localization/zblocalizer.h"
#include "ui/web/zbpagescanbridge.h"
#include "ui/web/zbruffleserver.h"
#include "ui/web/zbwebrequestinterceptor.h"

Q_LOGGING_CATEGORY(lcBrowser, "norvik.web.browser", QtInfoMsg)
// Pages log a lot that is none of our business; enable with
// QT_LOGGING_RULES="norvik.web.page=true".
Q_LOGGING_CATEGORY(lcBrowserPage, "norvik.web.page", QtCriticalMsg)

namespace
{
// Chromium's ERR_ABORTED: a load cut short by a newer one or by stop().
constexpr int AbortedError = -3;


QString resourceText(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
    {
        qCWarning(lcBrowser).noquote() << "Missing built-in resource" << path;
        return QString();
    }
    return QString::fromUtf8(file.readAll());
}

QWebEngineScript pageScript(const QString &name, const QString &source, quint32 world)
{
    QWebEngineScript script;
    script.setName(name);
    script.setSourceCode(source);
    script.setInjectionPoint(QWebEngineScript::DocumentCreation);
    script.setWorldId(world);
    script.setRunsOnSubFrames(true);
    return script;
}

} // namespace

ZBBrowserView::ZBBrowserView(QWidget *parent)
    : QWebEngineView(parent)
    , m_profile(new QWebEngineProfile(this))
    , m_interceptor(new ZBWebRequestInterceptor(this))
    , m_cookieJar(new QNetworkCookieJar(this))
    , m_ruffleServer(new ZBRuffleServer(ZBFlashSchemeHandler::assetDirectory() + QStringLiteral("/ruffle"), this))
    , m_scanBridge(new ZBPageScanBridge(this))
    , m_channel(new QWebChannel(this))
    , m_backAction(new QAction(ZBLocalizer::localizedStringForKey(QStringLiteral("contexMenuItemBack")), this))
    , m_reloadAction(new QAction(ZBLocalizer::localizedStringForKey(QStringLiteral("contexMenuItemReload")), this))
{
    m_profile->setHttpUserAgent(QString::fromLatin1(UserAgent));
    m_profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
    m_profile->setUrlRequestInterceptor(m_interceptor);
    connect(m_interceptor, &ZBWebRequestInterceptor::resourceRequested, this, &ZBBrowserView::resourceRequested);

    QWebEngineCookieStore *cookies = m_profile->cookieStore();
    connect(cookies, &QWebEngineCookieStore::cookieAdded, this,
            [this](const QNetworkCookie &cookie) { m_cookieJar->insertCookie(cookie); });
    connect(cookies, &QWebEngineCookieStore::cookieRemoved, this,
            [this](const QNetworkCookie &cookie) { m_cookieJar->deleteCookie(cookie); });
    cookies->loadAllCookies();

    if (QFileInfo::exists(ZBFlashSchemeHandler::assetDirectory() + QStringLiteral("/ruffle/ruffle.js")))
    {
        if (!m_ruffleServer->start())
            qCWarning(lcBrowser) << "No loopback port for the Flash engine: Flash movies in pages will not play";
    }
    else
    {
        qCWarning(lcBrowser).noquote() << "The Flash engine's files are missing from"
                                       << ZBFlashSchemeHandler::assetDirectory() << "- Flash movies in pages will not play";
    }
    // Our own pages and the engine's files are no page's resources.
    QList<QUrl> ignored{QUrl(QStringLiteral("qrc:/"))};
    if (m_ruffleServer->isListening())
        ignored.append(m_ruffleServer->baseUrl());
    m_interceptor->setIgnoredPrefixes(ignored);

    auto *page = new ZBLoggingWebPage(lcBrowserPage, m_profile, this);
    QWebEngineSettings *settings = page->settings();
    // Movies and Flash start by themselves, so what they load is captured.
    settings->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
    settings->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, true);
    // Failed loads show our own error page, chosen by whoever drives the view.
    settings->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    settings->setAttribute(QWebEngineSettings::ShowScrollBars, false);
    m_channel->registerObject(QStringLiteral("pageScan"), m_scanBridge);
    page->setWebChannel(m_channel, QWebEngineScript::ApplicationWorld);
    setPage(page);
    installPageScripts();

    connect(m_scanBridge, &ZBPageScanBridge::addressFound, this, &ZBBrowserView::onAddressFound);
    connect(page, &QWebEnginePage::loadingChanged, this, &ZBBrowserView::onLoadingChanged);
    connect(page, &QWebEnginePage::newWindowRequested, this, &ZBBrowserView::onNewWindowRequested);
    connect(page, &QWebEnginePage::urlChanged, this, [this](const QUrl &url) {
        if (!m_busy || m_committed || url.isEmpty())
            return;
        m_committed = true;
        Q_EMIT mainFrameCommitted(url);
    });
    connect(page, &QWebEnginePage::titleChanged, this, [this](const QString &title) {
        // Until a page names itself the engine shows its address as the
        // title; that is no title of the page's.
        const QUrl url = this->page()->url();
        if (title.isEmpty() || title == url.toString() || title == url.toString(QUrl::RemoveScheme).mid(2))
            return;
        Q_EMIT titleReceived(title, url);
    });

    setAcceptDrops(false);
    m_backAction->setEnabled(false);
    connect(m_backAction, &QAction::triggered, this, &ZBBrowserView::backRequested);
    m_reloadAction->setData(ReloadMenuTag);
    m_reloadAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    m_reloadAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(m_reloadAction, &QAction::triggered, this, &ZBBrowserView::reloadRequested);
    addAction(m_reloadAction);
}

ZBBrowserView::~ZBBrowserView()
{
    // The page must go before the profile it was made with.
    delete page();
}

void ZBBrowserView::installPageScripts()
{
    QWebEngineScriptCollection &scripts = page()->scripts();
    const QString channel = resourceText(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
    scripts.insert(pageScript(QStringLiteral("nvk-pagescan"),
                              channel + u'\n' + resourceText(QStringLiteral(":/pages/pagescan.js")),
                              QWebEngineScript::ApplicationWorld));
    if (!m_ruffleServer->isListening())
        return;
    // A JSON string is a valid JavaScript string literal.
    const QString base = QStringLiteral("\"%1\"").arg(m_ruffleServer->baseUrl().toString());
    QString loader = resourceText(QStringLiteral(":/pages/rufflepolyfill.js"));
    loader.replace(QStringLiteral("NVK_RUFFLE_BASE"), base);
    scripts.insert(pageScript(QStringLiteral("nvk-ruffle"), loader, QWebEngineScript::MainWorld));
}

bool ZBBrowserView::isFlashAvailable() const
{
    return m_ruffleServer->isListening();
}

void ZBBrowserView::loadStartPage(const QString &typedText)
{
    load(ZBWebPane::startPageUrl(typedText));
}

void ZBBrowserView::loadErrorPage(const QString &address, FailureKind kind, int code, const QString &description)
{
    load(ZBWebPane::errorPageUrl(address, kind, code, description));
}

void ZBBrowserView::previewSWF(const QUrl &url)
{
    QString html = resourceText(QStringLiteral(":/pages/preview.html"));
    html.replace(QStringLiteral("NVK_MOVIE"), url.toString(QUrl::FullyEncoded).toHtmlEscaped());
    m_previewUrl = url;
    m_previewing = true;
    m_interceptor->setPreviewPage(url);
    // With the movie's address as the page's, the engine's fetch of the movie
    // stays on the movie's own site, which needs no permission from it.
    setHtml(html, url);
}

void ZBBrowserView::setBackEnabled(bool enabled)
{
    m_backAction->setEnabled(enabled);
}

void ZBBrowserView::setBusy(bool busy)
{
    if (m_busy == busy)
        return;
    m_busy = busy;
    Q_EMIT busyChanged(busy);
}

void ZBBrowserView::onLoadingChanged(const QWebEngineLoadingInfo &info)
{
    switch (info.status())
    {
    case QWebEngineLoadingInfo::LoadStartedStatus:
        // The preview page is the one page loaded from markup (setHtml), so
        // its start is reported with a "data:" address; any other page ends
        // the preview. Told by the address, not by counting starts: a page
        // asked for while the preview still loads may abort it before its
        // start is reported, and must still end it.
        if (m_previewing && info.url().scheme() != u"data")
        {
            m_previewing = false;
            m_interceptor->setPreviewPage(QUrl());
        }
        m_startedUrl = info.url();
        m_committed = false;
        setBusy(true);
        Q_EMIT mainFrameLoadStarted(info.url());
        break;
    case QWebEngineLoadingInfo::LoadSucceededStatus:
        if (!m_committed)
        {
            m_committed = true;
            Q_EMIT mainFrameCommitted(info.url());
        }
        setBusy(false);
        Q_EMIT mainFrameLoadFinished(info.url(), title());
        break;
    case QWebEngineLoadingInfo::LoadStoppedStatus:
    case QWebEngineLoadingInfo::LoadFailedStatus:
        if (info.status() == QWebEngineLoadingInfo::LoadStoppedStatus || info.errorCode() == AbortedError)
        {
            // A newer load has taken over and keeps the spinner going.
            if (info.url() == m_startedUrl)
                setBusy(false);
            break;
        }
        setBusy(false);
        switch (info.errorDomain())
        {
        case QWebEngineLoadingInfo::ConnectionErrorDomain:
        case QWebEngineLoadingInfo::DnsErrorDomain:
            Q_EMIT mainFrameLoadFailed(info.url(), FailureKind::Connection, info.errorCode(), info.errorString());
            break;
        case QWebEngineLoadingInfo::HttpStatusCodeDomain:
            Q_EMIT mainFrameLoadFailed(info.url(), FailureKind::HttpStatus, info.errorCode(), info.errorString());
            break;
        default:
            Q_EMIT mainFrameLoadFailed(info.url(), FailureKind::Other, info.errorCode(), info.errorString());
            break;
        }
        break;
    }
}

void ZBBrowserView::onNewWindowRequested(QWebEngineNewWindowRequest &request)
{
    const QUrl url = request.requestedUrl();
    // Empty pop-ups are filled by their opener's scripts, which would need a
    // window of their own; there is nothing to load.
    if (url.isEmpty() || url.toString().compare(QLatin1String("about:blank"), Qt::CaseInsensitive) == 0)
        return;
    load(url);
    Q_EMIT newWindowLoaded(url);
}

void ZBBrowserView::onAddressFound(const QString &url, const QString &element, const QString &frameUrl,
                                   bool topFrame)
{
    ZBWebRequest request;
    request.url = QUrl(url);
    request.resourceType = ZBWebRequest::FoundInPage;
    request.firstPartyUrl = topFrame ? QUrl(frameUrl) : page()->url();
    request.initiator = QUrl(frameUrl).adjusted(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment);
    request.method = QStringLiteral("GET");
    request.mainFrame = topFrame;
    request.element = element;
    request.preview = m_previewing;
    Q_EMIT resourceRequested(request);
}

void ZBBrowserView::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu menu(this);
    menu.addAction(m_backAction);
    menu.addAction(m_reloadAction);
    menu.exec(event->globalPos());
}

void ZBBrowserView::dragEnterEvent(QDragEnterEvent *event)
{
    event->ignore();
}

void ZBBrowserView::dragMoveEvent(QDragMoveEvent *event)
{
    event->ignore();
}

void ZBBrowserView::dropEvent(QDropEvent *event)
{
    event->ignore();
}
