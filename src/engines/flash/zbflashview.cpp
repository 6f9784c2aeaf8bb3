#include "engines/flash/zbflashview.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>


#include "app/zbmediamoduleloader.h"
#include "engines/zbloggingwebpage.h"
#include "engines/flash/zbflashbridge.h"
#include "engines/flash/zbflashrequestguard.h"
#include "engines/flash/zbflashscheme.h"
#include "playback/flash/zbflashmovieplan.h"

Q_LOGGING_CATEGORY(lcFlash, "norvik.engine.flash", QtInfoMsg)
// The engine talks a lot, errors included for what it recovers from by itself
// (no WebGL: it draws on a canvas instead); failures that matter reach us
// through the page. Enable with QT_LOGGING_RULES="norvik.engine.flash.page=true".
Q_LOGGING_CATEGORY(lcFlashPage, "norvik.engine.flash.page", QtCriticalMsg)

namespace
{
QString qualityName(int quality)
{
    switch (quality)
    {
    case 0:
        return QStringLiteral("low");
    case 1:
        return QStringLiteral("medium");
    default:
        return QStringLiteral("high");
    }
}

QString scriptCall(const QString &function, const QJsonValue &argument = QJsonValue())
{
    if (argument.isUndefined() || argument.isNull())
        return QStringLiteral("window.nvk && nvk.%1();").arg(function);
    QString json;
    if (argument.isObject())
        json = QString::fromUtf8(QJsonDocument(argument.toObject()).toJson(QJsonDocument::Compact));
    else if (argument.isString())
        json = QString::fromUtf8(QJsonDocument(QJsonArray{argument}).toJson(QJsonDocument::Compact)).mid(1).chopped(1);
    else if (argument.isBool())
        json = argument.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    else
        json = QString::number(argument.toDouble(), 'g', 17);
    return QStringLiteral("window.nvk && nvk.%1(%2);").arg(function, json);
}

QString directoryOf(const QUrl &url)
{
    const QFileInfo info(url.toLocalFile());
    return info.isDir() ? info.absoluteFilePath() : info.absolutePath();
}
} // namespace

void ZBFlashView::prepareApplication()
{
    ZBMediaModuleLoader::prepareApplication();
    ZBFlashSchemeHandler::registerScheme();
}

ZBFlashView::ZBFlashView(QWidget *parent)
    : QWebEngineView(parent)
    , m_profile(new QWebEngineProfile(this))
    , m_scheme(new ZBFlashSchemeHandler(this))
    , m_guard(new ZBFlashRequestGuard(this))
    , m_bridge(new ZBFlashBridge(this))
    , m_channel(new QWebChannel(this))
{
    m_profile->setHttpUserAgent(QStringLiteral("NorvikPlayer"));
    m_profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache);
    m_profile->installUrlSchemeHandler(ZBFlashSchemeHandler::SchemeName, m_scheme);
    m_profile->setUrlRequestInterceptor(m_guard);

    auto *page = new ZBLoggingWebPage(lcFlashPage, m_profile, this);
    QWebEngineSettings *settings = page->settings();
    settings->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
    settings->setAttribute(QWebEngineSettings::ShowScrollBars, false);
    settings->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    settings->setAttribute(QWebEngineSettings::JavascriptCanAccessClipboard, false);
    settings->setAttribute(QWebEngineSettings::LocalStorageEnabled, true);
    settings->setAttribute(QWebEngineSettings::ErrorPageEnabled, false);
    page->setBackgroundColor(m_background);
    m_channel->registerObject(QStringLiteral("bridge"), m_bridge);
    page->setWebChannel(m_channel);
    setPage(page);
    setContextMenuPolicy(Qt::NoContextMenu);

    connect(page, &QWebEnginePage::renderProcessTerminated, this, [this]() { onRendererGone(); });
    connect(page, &QWebEnginePage::loadFinished, this, [this](bool ok) {
        if (ok)
            return;
        qCWarning(lcFlash).noquote() << "The Flash host page did not load from" << m_scheme->assetDirectoryInUse();
        // Try again on the next movie; this one cannot start.
        m_hostRequested = false;
        m_pendingScripts.clear();
        if (m_mode != Mode::None && !m_loaded)
            onLoadFailed(m_generation, tr("The Flash engine's page could not be loaded."));
    });
    m_loadGuard.setSingleShot(true);
    m_loadGuard.setInterval(LoadTimeoutMs + 5000);
    connect(&m_loadGuard, &QTimer::timeout, this, [this]() {
        if (m_mode != Mode::None && !m_loaded)
            onLoadFailed(m_generation, tr("The Flash engine did not start the movie in time."));
    });

    connect(m_bridge, &ZBFlashBridge::hostReadyReceived, this, &ZBFlashView::onHostReady);
    connect(m_bridge, &ZBFlashBridge::warmedReceived, this, [this](bool ok) {
        m_warm = true;
        if (!ok)
            qCWarning(lcFlash) << "The Flash engine did not start its blank movie";
        Q_EMIT warmed();
    });
    connect(m_bridge, &ZBFlashBridge::loadedReceived, this,
            [this](int generation, double width, double height, double rate, int total, bool) {
                onLoaded(generation, width, height, rate, total);
            });
    connect(m_bridge, &ZBFlashBridge::loadFailedReceived, this, &ZBFlashView::onLoadFailed);
    connect(m_bridge, &ZBFlashBridge::firstFrameShownReceived, this, [this](int generation) {
        if (generation != m_generation || m_firstFrameMs >= 0)
            return;
        m_firstFrameMs = m_loadClock.elapsed();
        Q_EMIT firstFrameShown();
    });
    connect(m_bridge, &ZBFlashBridge::frameStateReceived, this,
            [this](int generation, int frame, int total, bool playing) {
                if (generation != m_generation || !m_loaded)
                    return;
                m_frame = frame;
                m_totalFrames = total;
                m_playing = playing;
                Q_EMIT stateChanged();
            });
    connect(m_bridge, &ZBFlashBridge::frameShownReceived, this,
            [this](int generation, int sequence, int shown, bool drawn) {
                if (generation != m_generation || !m_loaded || sequence != m_gotoSequence)
                    return;
                m_gotoShownSequence = sequence;
                if (shown >= 0)
                    m_frame = shown;
                Q_EMIT frameShown(m_frame, drawn);
                Q_EMIT stateChanged();
            });
    connect(m_bridge, &ZBFlashBridge::timeStateReceived, this,
            [this](int generation, double time, double duration, double width, double height, bool playing) {
                if (generation != m_generation || !m_loaded)
                    return;
                m_time = time;
                m_duration = duration;
                m_playing = playing;
                if (width > 0 && height > 0)
                    m_movieSize = QSize(int(width), int(height));
                Q_EMIT stateChanged();
            });
    connect(m_bridge, &ZBFlashBridge::fsCommandReceived, this,
            [this](int generation, const QString &command, const QString &arguments) {
                if (generation == m_generation && m_mode != Mode::None)
                    Q_EMIT invokeFSCommand(command, arguments);
            });
    connect(m_bridge, &ZBFlashBridge::zoomChangedReceived, this, [this](double percent) {
        const int before = zoomPercent();
        m_zoom = percent;
        if (zoomPercent() != before)
            Q_EMIT zoomChanged(zoomPercent());
    });
}

ZBFlashView::~ZBFlashView()
{
    // The page belongs to the profile's lifetime: it must go first.
    delete page();
}

QString ZBFlashView::missingEngineFiles() const
{
    const QDir assets(m_scheme->assetDirectoryInUse());
    QStringList missing;
    for (const char *file : {"host.html", "host.js", "schemefetch.js", "ruffle/ruffle.js"})
    {
        if (!QFileInfo::exists(assets.filePath(QLatin1String(file))))
            missing << QLatin1String(file);
    }
    return missing.join(QStringLiteral(", "));
}

void ZBFlashView::ensureHost()
{
    if (m_hostRequested)
        return;
    m_hostRequested = true;
    m_hostReady = false;
    const QString host = QDir(m_scheme->assetDirectoryInUse()).absoluteFilePath(QStringLiteral("host.html"));
    if (!QFileInfo::exists(host))
        qCWarning(lcFlash).noquote() << "The Flash engine's files are missing:" << host;
    page()->setUrl(ZBFlashSchemeHandler::appUrl(QStringLiteral("host.html")));
}

void ZBFlashView::warmUp()
{
    m_warmRequested = true;
    ensureHost();
    if (m_hostReady && !m_warm)
        runHostScript(scriptCall(QStringLiteral("warm")));
}

void ZBFlashView::onHostReady(bool engineScriptLoaded)
{
    m_hostReady = true;
    if (!engineScriptLoaded)
    {
        qCWarning(lcFlash).noquote() << "The Flash engine's script did not load from"
                                     << m_scheme->assetDirectoryInUse();
    }
    const QStringList scripts = std::exchange(m_pendingScripts, {});
    // A movie asked for before the page was ready warms the engine itself.
    if (m_warmRequested && !m_warm && scripts.isEmpty())
        page()->runJavaScript(scriptCall(QStringLiteral("warm")));
    for (const QString &script : scripts)
        page()->runJavaScript(script);
    if (!engineScriptLoaded && m_mode != Mode::None && !m_loaded)
        onLoadFailed(m_generation, tr("The Flash engine is not installed."));
}

void ZBFlashView::runHostScript(const QString &script)
{
    ensureHost();
    if (!m_hostReady)
    {
        m_pendingScripts.append(script);
        return;
    }
    page()->runJavaScript(script);
}

void ZBFlashView::onRendererGone()
{
    qCWarning(lcFlash) << "The Flash engine's page stopped; it is started again";
    const bool hadMovie = m_mode != Mode::None;
    m_hostRequested = false;
    m_hostReady = false;
    m_warm = false;
    m_pendingScripts.clear();
    if (hadMovie)
        onLoadFailed(m_generation, tr("The Flash engine stopped while playing this movie."));
    ensureHost();
}

QByteArray ZBFlashView::hostMovie(const QString &fileName, QString *error)
{
    QFile file(QDir(m_scheme->assetDirectoryInUse()).absoluteFilePath(fileName));
    if (!file.open(QIODevice::ReadOnly))
    {
        if (error)
            *error = tr("The Flash engine's host movie %1 is missing.").arg(fileName);
        return QByteArray();
    }
    return file.readAll();
}

void ZBFlashView::resetMovieState()
{
    m_loaded = false;
    m_playing = false;
    m_frame = -1;
    m_totalFrames = 0;
    m_frameRate = 0;
    m_time = -1;
    m_duration = 0;
    m_movieSize = QSize();
    m_firstFrameMs = -1;
    // A goto into the movie that is gone will never be answered.
    m_gotoShownSequence = m_gotoSequence;
}

bool ZBFlashView::loadMovie(const QByteArray &data, const QUrl &url, const QUrl &baseUrl, QString *error)
{
    const QString moviePath = QFileInfo(url.toLocalFile()).absoluteFilePath();
    const QString baseDirectory = directoryOf(baseUrl.isEmpty() ? url : baseUrl);
    const QUrl movieUrl = ZBFlashSchemeHandler::fileUrl(moviePath);
    // Wrappers and hosts ask for the movie relative to its folder when it
    // is the base, so a captured package moved elsewhere still plays.
    const QByteArray contentUrl = QFileInfo(moviePath).absolutePath() == QDir::cleanPath(baseDirectory)
                                      ? QUrl(QFileInfo(moviePath).fileName()).toEncoded()
                                      : movieUrl.toEncoded();

    QString reason;
    QByteArray as3Host;
    const std::optional<ZBSwfHeader::Info> header = ZBSwfHeader::readHeader(data);
    if (header && header->isAS3)
        as3Host = hostMovie(QStringLiteral("FrameHost.swf"), &reason);
    const std::optional<ZBFlashMoviePlan> plan =
        ZBFlashMoviePlan::make(data, CallbackPrefix, contentUrl, as3Host, reason.isEmpty() ? &reason : nullptr);
    if (!plan)
    {
        if (error)
            *error = reason;
        return false;
    }

    QHash<QUrl, QByteArray> prepared;
    QUrl rootUrl = movieUrl;
    if (plan->servesContentSeparately())
    {
        rootUrl = ZBFlashSchemeHandler::fileUrl(moviePath, QString::fromLatin1(ZBFlashMoviePlan::HostQuery));
        // The original is served from memory too: a projector's movie has no
        // file of its own.
        prepared.insert(movieUrl, data);
    }
    prepared.insert(rootUrl, plan->rootMovie);
    m_scheme->setPrepared(prepared);
    if (!startLoad(Mode::Frames, rootUrl, baseDirectory, plan->flashvars,
                   QSize(int(std::lround(plan->header.width())), int(std::lround(plan->header.height()))), error))
    {
        m_scheme->setPrepared({});
        return false;
    }
    // The movie's own rate: a host movie may run at another until it has
    // loaded it.
    m_frameRate = plan->header.frameRate;
    return true;
}

bool ZBFlashView::loadFlvAtPath(const QString &path, QString *error)
{
    const QFileInfo info(path);
    if (!info.isFile())
    {
        if (error)
            *error = tr("The file does not exist.");
        return false;
    }
    QString reason;
    const QByteArray player = hostMovie(QStringLiteral("FlvPlayer.swf"), &reason);
    if (player.isEmpty())
    {
        if (error)
            *error = reason;
        return false;
    }
    const QUrl rootUrl =
        ZBFlashSchemeHandler::fileUrl(info.absoluteFilePath(), QString::fromLatin1(ZBFlashMoviePlan::HostQuery));
    m_scheme->setPrepared({{rootUrl, player}});
    QVariantMap flashvars;
    flashvars.insert(QStringLiteral("nvkPrefix"), QString::fromLatin1(CallbackPrefix));
    flashvars.insert(QStringLiteral("nvkContent"), QString::fromLatin1(QUrl(info.fileName()).toEncoded()));
    flashvars.insert(QStringLiteral("nvkBackground"), m_background.name());
    flashvars.insert(QStringLiteral("nvkRepeat"), m_repeat ? QStringLiteral("1") : QStringLiteral("0"));
    return startLoad(Mode::Video, rootUrl, info.absolutePath(), flashvars, QSize(), error);
}

bool ZBFlashView::startLoad(Mode mode, const QUrl &rootUrl, const QString &baseDirectory,
                            const QVariantMap &flashvars, QSize size, QString *error)
{
    if (const QString missing = missingEngineFiles(); !missing.isEmpty())
    {
        if (error)
            *error = tr("The Flash engine is not installed: %1 missing from %2.")
                         .arg(missing, QDir::toNativeSeparators(m_scheme->assetDirectoryInUse()));
        return false;
    }
    resetMovieState();
    m_mode = mode;
    ++m_generation;
    m_scheme->setScope(baseDirectory, m_security);
    m_guard->setSecurity(m_security);
    m_movieSize = size;
    m_loadClock.start();

    QJsonObject options;
    options.insert(QStringLiteral("generation"), m_generation);
    options.insert(QStringLiteral("url"), QString::fromLatin1(rootUrl.toEncoded()));
    options.insert(QStringLiteral("base"),
                   QString(QString::fromLatin1(ZBFlashSchemeHandler::fileUrl(baseDirectory).toEncoded()) + u'/'));
    options.insert(QStringLiteral("mode"), mode == Mode::Video ? QStringLiteral("video") : QStringLiteral("frames"));
    options.insert(QStringLiteral("prefix"), QString::fromLatin1(CallbackPrefix));
    options.insert(QStringLiteral("flashvars"), QJsonObject::fromVariantMap(flashvars));
    options.insert(QStringLiteral("width"), size.width());
    options.insert(QStringLiteral("height"), size.height());
    options.insert(QStringLiteral("quality"), qualityName(m_quality));
    options.insert(QStringLiteral("background"), m_background.name());
    options.insert(QStringLiteral("security"), m_security);
    options.insert(QStringLiteral("volume"), m_volume);
    options.insert(QStringLiteral("timeoutMs"), LoadTimeoutMs);
    m_loadGuard.start();
    runHostScript(scriptCall(QStringLiteral("load"), options));
    return true;
}

void ZBFlashView::onLoaded(int generation, double width, double height, double frameRate, int totalFrames)
{
    if (generation != m_generation || m_mode == Mode::None || m_loaded)
        return;
    m_loadGuard.stop();
    m_loaded = true;
    m_playing = true;
    if (width > 0 && height > 0)
        m_movieSize = QSize(int(std::lround(width)), int(std::lround(height)));
    if (m_frameRate <= 0)
        m_frameRate = frameRate;
    m_totalFrames = totalFrames;
    m_frame = 0;
    m_time = 0;
    Q_EMIT movieLoaded();
    Q_EMIT stateChanged();
}

void ZBFlashView::onLoadFailed(int generation, const QString &reason)
{
    if (generation != m_generation || m_mode == Mode::None)
        return;
    m_loadGuard.stop();
    qCWarning(lcFlash).noquote() << "The Flash engine refused the movie:" << reason;
    m_mode = Mode::None;
    resetMovieState();
    m_scheme->setPrepared({});
    Q_EMIT movieLoadFailed(reason);
}

void ZBFlashView::unloadMovie()
{
    if (m_mode == Mode::None && !m_loaded)
        return;
    m_mode = Mode::None;
    ++m_generation;
    m_loadGuard.stop();
    resetMovieState();
    m_scheme->setPrepared({});
    if (m_hostRequested)
        runHostScript(scriptCall(QStringLiteral("unload")));
    Q_EMIT stateChanged();
}

void ZBFlashView::play()
{
    if (m_mode == Mode::None)
        return;
    m_playing = true;
    runHostScript(scriptCall(QStringLiteral("play")));
}

void ZBFlashView::stop()
{
    if (m_mode == Mode::None)
        return;
    m_playing = false;
    runHostScript(scriptCall(QStringLiteral("pause")));
}

void ZBFlashView::gotoFrame(int frame)
{
    if (m_mode != Mode::Frames || !m_loaded)
        return;
    frame = std::clamp(frame, 0, std::max(0, m_totalFrames - 1));
    // Shown at once: the page confirms with the frame it lands on.
    m_frame = frame;
    ++m_gotoSequence;
    runHostScript(QStringLiteral("window.nvk && nvk.gotoFrame(%1, %2, %3);")
                      .arg(frame)
                      .arg(m_playing ? QStringLiteral("true") : QStringLiteral("false"))
                      .arg(m_gotoSequence));
}

void ZBFlashView::gotoTime(double seconds)
{
    if (m_mode != Mode::Video || !m_loaded)
        return;
    seconds = std::max(0.0, m_duration > 0 ? std::min(seconds, m_duration) : seconds);
    m_time = seconds;
    runHostScript(scriptCall(QStringLiteral("seek"), seconds));
}

void ZBFlashView::setZoomPercent(int percent)
{
    m_zoom = std::max(1, percent);
    runHostScript(scriptCall(QStringLiteral("setZoom"), m_zoom));
}

void ZBFlashView::setFitSize()
{
    runHostScript(scriptCall(QStringLiteral("fit")));
}

void ZBFlashView::setOriginalSize()
{
    setZoomPercent(100);
}

void ZBFlashView::setCanDrag(bool canDrag)
{
    m_canDrag = canDrag;
    if (m_hostRequested)
        runHostScript(scriptCall(QStringLiteral("setDragEnabled"), canDrag));
}

void ZBFlashView::setEnabledSecurity(bool enabled)
{
    m_security = enabled;
}

void ZBFlashView::setFlashBackgroundColor(const QColor &colour)
{
    if (!colour.isValid())
        return;
    m_background = colour;
    page()->setBackgroundColor(colour);
    if (m_hostRequested)
        runHostScript(scriptCall(QStringLiteral("setBackground"), colour.name()));
}

void ZBFlashView::setVolume(double volume)
{
    m_volume = std::clamp(volume, 0.0, 1.0);
    if (m_hostRequested)
        runHostScript(scriptCall(QStringLiteral("setVolume"), m_volume));
}

QImage ZBFlashView::snapshot()
{
    return grab().toImage();
}
