#include "engines/flash/zbflashscheme.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutexLocker>
#include <QWebEngineUrlRequestJob>
#include <QWebEngineUrlScheme>

Q_LOGGING_CATEGORY(lcFlashScheme, "norvik.engine.flash.scheme")

namespace
{
const QString AppPrefix = QStringLiteral("/app/");
const QString FsPrefix = QStringLiteral("/fs");

// Inside `directory` itself, after symbolic links are followed: a link in a
// movie's folder must not open the rest of the disk to it.
bool isInside(const QString &path, const QString &directory)
{
    const QString canonicalDir = QFileInfo(directory).canonicalFilePath();
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonicalDir.isEmpty() || canonical.isEmpty())
        return false;
    return canonical == canonicalDir || canonical.startsWith(canonicalDir + u'/');
}
} // namespace

void ZBFlashSchemeHandler::registerScheme()
{
    if (QWebEngineUrlScheme::schemeByName(SchemeName).name() == SchemeName)
        return;
    QWebEngineUrlScheme scheme(SchemeName);
    scheme.setSyntax(QWebEngineUrlScheme::Syntax::Host);
    scheme.setDefaultPort(QWebEngineUrlScheme::PortUnspecified);
    // Secure, so the engine may use what Chromium keeps for secure pages;
    // CORS-enabled, so the page's requests for movies and WebAssembly are
    // allowed at all.
    scheme.setFlags(QWebEngineUrlScheme::SecureScheme | QWebEngineUrlScheme::CorsEnabled
                    | QWebEngineUrlScheme::ContentSecurityPolicyIgnored);
    QWebEngineUrlScheme::registerScheme(scheme);
}

QString ZBFlashSchemeHandler::assetDirectory()
{
    const QString fromEnvironment = qEnvironmentVariable("NVK_FLASH_DIR");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QString installed =
        QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QStringLiteral("../share/norvikplayer/flash"));
    if (QFileInfo::exists(installed + QStringLiteral("/host.html")))
        return QDir::cleanPath(installed);
#ifdef NVK_FLASH_BUILD_ASSET_DIR
    return QStringLiteral(NVK_FLASH_BUILD_ASSET_DIR);
#else
    return installed;
#endif
}

QUrl ZBFlashSchemeHandler::appUrl(const QString &relativePath)
{
    QUrl url;
    url.setScheme(QString::fromLatin1(SchemeName));
    url.setHost(QString::fromLatin1(Host));
    url.setPath(AppPrefix + relativePath);
    return url;
}

QUrl ZBFlashSchemeHandler::fileUrl(const QString &absolutePath, const QString &query)
{
    QUrl url;
    url.setScheme(QString::fromLatin1(SchemeName));
    url.setHost(QString::fromLatin1(Host));
    url.setPath(FsPrefix + QDir::cleanPath(QDir::fromNativeSeparators(absolutePath)));
    if (!query.isEmpty())
        url.setQuery(query);
    return url;
}

QString ZBFlashSchemeHandler::pathOfFileUrl(const QUrl &url)
{
    if (url.scheme() != QLatin1String(SchemeName) || url.host() != QLatin1String(Host))
        return QString();
    const QString path = url.path(QUrl::FullyDecoded);
    if (!path.startsWith(FsPrefix + u'/'))
        return QString();
    return QDir::cleanPath(path.mid(FsPrefix.size()));
}

ZBFlashSchemeHandler::ZBFlashSchemeHandler(QObject *parent)
    : QWebEngineUrlSchemeHandler(parent)
    , m_assetDir(assetDirectory())
{
}

void ZBFlashSchemeHandler::setAssetDirectory(const QString &directory)
{
    m_assetDir = directory;
}

void ZBFlashSchemeHandler::setPrepared(const QHash<QUrl, QByteArray> &entries)
{
    QMutexLocker locker(&m_lock);
    m_prepared = entries;
}

void ZBFlashSchemeHandler::setScope(const QString &baseDirectory, bool security)
{
    QMutexLocker locker(&m_lock);
    m_scope = baseDirectory;
    m_security = security;
}

QByteArray ZBFlashSchemeHandler::mimeTypeFor(const QString &path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == u"html")
        return "text/html";
    if (suffix == u"js")
        return "text/javascript";
    if (suffix == u"wasm")
        return "application/wasm";
    if (suffix == u"swf" || suffix == u"exe" || suffix == u"spl")
        return "application/x-shockwave-flash";
    if (suffix == u"flv")
        return "video/x-flv";
    if (suffix == u"mp3")
        return "audio/mpeg";
    if (suffix == u"xml")
        return "text/xml";
    if (suffix == u"png")
        return "image/png";
    if (suffix == u"jpg" || suffix == u"jpeg")
        return "image/jpeg";
    if (suffix == u"gif")
        return "image/gif";
    if (suffix == u"txt")
        return "text/plain";
    return "application/octet-stream";
}

ZBFlashSchemeHandler::Answer ZBFlashSchemeHandler::answer(const QUrl &url) const
{
    Answer answer;
    QUrl key = url.adjusted(QUrl::RemoveFragment);
    {
        QMutexLocker locker(&m_lock);
        const auto prepared = m_prepared.constFind(key);
        if (prepared != m_prepared.cend())
        {
            answer.mimeType = "application/x-shockwave-flash";
            answer.data = prepared.value();
            return answer;
        }
    }
    if (url.host() != QLatin1String(Host))
    {
        answer.error = QWebEngineUrlRequestJob::UrlNotFound;
        return answer;
    }

    const QString path = url.path(QUrl::FullyDecoded);
    if (path == AppPrefix + QStringLiteral("qwebchannel.js"))
    {
        QFile script(QStringLiteral(":/qtwebchannel/qwebchannel.js"));
        if (script.open(QIODevice::ReadOnly))
        {
            answer.mimeType = "text/javascript";
            answer.data = script.readAll();
            return answer;
        }
        answer.error = QWebEngineUrlRequestJob::UrlNotFound;
        return answer;
    }
    if (path.startsWith(AppPrefix))
    {
        const QString file = QDir(m_assetDir).absoluteFilePath(path.mid(AppPrefix.size()));
        if (!isInside(file, m_assetDir) || !QFileInfo(file).isFile())
        {
            answer.error = QWebEngineUrlRequestJob::UrlNotFound;
            return answer;
        }
        answer.mimeType = mimeTypeFor(file);
        answer.filePath = file;
        return answer;
    }

    const QString file = pathOfFileUrl(url);
    if (file.isEmpty())
    {
        answer.error = QWebEngineUrlRequestJob::UrlNotFound;
        return answer;
    }
    bool security = false;
    QString scope;
    {
        QMutexLocker locker(&m_lock);
        security = m_security;
        scope = m_scope;
    }
    if (security && !isInside(file, scope))
    {
        qCInfo(lcFlashScheme).noquote() << "Local security keeps the movie from reading" << file;
        answer.error = QWebEngineUrlRequestJob::RequestDenied;
        return answer;
    }
    const QFileInfo info(file);
    if (!info.isFile())
    {
        answer.error = QWebEngineUrlRequestJob::UrlNotFound;
        return answer;
    }
    if (!info.isReadable())
    {
        answer.error = QWebEngineUrlRequestJob::RequestDenied;
        return answer;
    }
    answer.mimeType = mimeTypeFor(file);
    answer.filePath = file;
    return answer;
}

void ZBFlashSchemeHandler::requestStarted(QWebEngineUrlRequestJob *job)
{
    const Answer reply = answer(job->requestUrl());
    if (reply.error != QWebEngineUrlRequestJob::NoError)
    {
        job->fail(reply.error);
        return;
    }
    if (!reply.filePath.isEmpty())
    {
        // Streamed from disk: the job reads the device as the page asks, and
        // the device goes with the job.
        auto *file = new QFile(reply.filePath, job);
        if (!file->open(QIODevice::ReadOnly))
        {
            delete file;
            job->fail(QWebEngineUrlRequestJob::RequestFailed);
            return;
        }
        job->reply(reply.mimeType, file);
        return;
    }
    auto *buffer = new QBuffer(job);
    buffer->setData(reply.data);
    buffer->open(QIODevice::ReadOnly);
    job->reply(reply.mimeType, buffer);
}
