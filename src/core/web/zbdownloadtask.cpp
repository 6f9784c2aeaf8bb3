#include "web/zbdownloadtask.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QNetworkAccessManager>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QThread>

#include "localization/zblocalizer.h"
#include "playback/zbmediatypes.h"
#include "strings/zbstringformsize.h"
#include "web/zbdownloadpaths.h"

namespace
{
constexpr qint64 kReadBufferSize = 1 << 20;
constexpr int kMaxRedirects = 20;
constexpr int kProgressIntervalMs = 100;
constexpr int kSpeedIntervalMs = 1000;

QMutex s_runningMutex;
QSet<QString> s_running;

QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

QString size(qint64 bytes)
{
    return ZBStringFormSize::stringFromSizeBin(bytes, true).trimmed();
}
} // namespace

ZBDownloadTask::ZBDownloadTask(const QUrl &url, const QString &targetPath, QObject *parent)
    : QObject(parent)
    , m_url(url)
    , m_finalUrl(url)
    , m_targetPath(targetPath)
{
    m_stallTimer.setSingleShot(true);
    connect(&m_stallTimer, &QTimer::timeout, this, &ZBDownloadTask::onStalled);
}

ZBDownloadTask::~ZBDownloadTask()
{
    // Going away mid-transfer (the program quits) keeps what arrived, so the
    // download can continue next time; only cancel() discards it.
    if (m_reply)
    {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
    m_part.close();
    release();
}

void ZBDownloadTask::setReferrer(const QUrl &referrer)
{
    m_referrer = referrer;
}

void ZBDownloadTask::setCookies(const QList<QNetworkCookie> &cookies)
{
    m_cookies = cookies;
}

void ZBDownloadTask::setCookieJar(QNetworkCookieJar *jar)
{
    m_jar = jar;
}

void ZBDownloadTask::setStallTimeout(int milliseconds)
{
    m_stallTimeout = milliseconds;
}

void ZBDownloadTask::setNetworkAccessManager(QNetworkAccessManager *manager)
{
    m_manager = manager;
}

QString ZBDownloadTask::speedText() const
{
    return ZBStringFormSize::stringFromSpeedBin(m_speed, true);
}

QSet<QString> ZBDownloadTask::runningTargets()
{
    QMutexLocker lock(&s_runningMutex);
    return s_running;
}

QNetworkAccessManager *ZBDownloadTask::sharedManager()
{
    static thread_local QPointer<QNetworkAccessManager> manager;
    if (!manager)
    {
        manager = new QNetworkAccessManager;
        QCoreApplication *app = QCoreApplication::instance();
        if (app && QThread::currentThread() == app->thread())
            manager->setParent(app);
        else
            connect(QThread::currentThread(), &QThread::finished, manager, &QObject::deleteLater);
    }
    return manager;
}

void ZBDownloadTask::start()
{
    if (m_state != State::Idle)
        return;
    m_state = State::Running;
    m_clock.start();
    // Failures to begin arrive from the event loop like every other outcome,
    // so a caller can connect after start() and still hear of them.
    const auto failLater = [this](const QString &reason) {
        QMetaObject::invokeMethod(this, [this, reason] { fail(reason, true); }, Qt::QueuedConnection);
    };
    const QString scheme = m_url.scheme().toLower();
    if (!m_url.isValid() || m_url.host().isEmpty() || (scheme != u"http" && scheme != u"https"))
        return failLater(text("downloadErrorInvalidURL").arg(m_url.toDisplayString()));
    {
        QMutexLocker lock(&s_runningMutex);
        if (s_running.contains(m_targetPath))
            return failLater(text("downloadErrorBusy").arg(QDir::toNativeSeparators(m_targetPath)));
        s_running.insert(m_targetPath);
        m_registered = true;
    }
    const QString folder = QFileInfo(m_targetPath).absolutePath();
    if (!QDir().mkpath(folder) || !QFileInfo(folder).isDir())
    {
        return failLater(
            text("downloadErrorFolder").arg(QDir::toNativeSeparators(folder), text("downloadErrorFolderCreate")));
    }
    const QFileInfo part(partPath());
    m_resumeFrom = part.exists() && part.isFile() ? part.size() : 0;
    m_partCreated = !part.exists();
    if (!openPart(m_resumeFrom > 0))
        return failLater(text("downloadErrorFolder").arg(QDir::toNativeSeparators(folder), m_part.errorString()));
    m_chunk.resize(kReadBufferSize);
    sendRequest(m_resumeFrom);
}

bool ZBDownloadTask::openPart(bool append)
{
    m_part.setFileName(partPath());
    // Unbuffered: a full disk shows at the write that hits it, not at close.
    const QIODevice::OpenMode mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    return m_part.open(mode | (append ? QIODevice::Append : QIODevice::Truncate));
}

void ZBDownloadTask::sendRequest(qint64 resumeFrom)
{
    QNetworkRequest request(m_url);
    request.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
    // The file as the server keeps it: a compressed transfer could neither
    // be resumed by byte position nor checked against its length.
    request.setRawHeader("Accept-Encoding", "identity");
    if (m_referrer.isValid())
        request.setRawHeader("Referer", m_referrer.toEncoded());
    QList<QNetworkCookie> cookies = m_cookies;
    if (m_jar)
        cookies += m_jar->cookiesForUrl(m_url);
    if (!cookies.isEmpty())
        request.setHeader(QNetworkRequest::CookieHeader, QVariant::fromValue(cookies));
    if (resumeFrom > 0)
        request.setRawHeader("Range", "bytes=" + QByteArray::number(resumeFrom) + '-');
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(kMaxRedirects);

    QNetworkAccessManager *manager = m_manager ? m_manager.data() : sharedManager();
    m_responseSeen = false;
    m_reply = manager->get(request);
    m_reply->setReadBufferSize(kReadBufferSize);
    connect(m_reply, &QNetworkReply::readyRead, this, &ZBDownloadTask::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &ZBDownloadTask::onFinished);
    // A loop is refused as soon as it shows, not after the last allowed hop.
    m_visited = {m_url};
    connect(m_reply, &QNetworkReply::redirected, this, [this](const QUrl &to) {
        if (m_visited.contains(to))
            return fail(text("downloadErrorRedirectLoop"), true);
        m_visited.insert(to);
    });
    m_lastData = m_clock.elapsed();
    m_stallTimer.start(m_stallTimeout);
}

// The first look at the final response: the status decides whether the body
// is the file, the rest of it, or an error page.
bool ZBDownloadTask::acceptResponse()
{
    m_responseSeen = true;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status == 416 && m_resumeFrom > 0 && !m_retried)
    {
        // The part is no prefix of what the server has now.
        restartFromZero();
        return false;
    }
    if (status < 100 || status >= 400)
    {
        QString reason = m_reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString();
        if (status <= 0)
            reason = m_reply->errorString();
        fail(text("downloadErrorHTTP").arg(QString::number(status), reason), true);
        return false;
    }
    const qint64 length = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong();
    const bool hasLength = m_reply->header(QNetworkRequest::ContentLengthHeader).isValid();
    if (status == 206 && m_resumeFrom > 0)
    {
        static const QRegularExpression range(QStringLiteral("^bytes\\s+(\\d+)-(\\d+)/(\\d+|\\*)"));
        const auto match = range.match(QString::fromLatin1(m_reply->rawHeader("Content-Range")));
        if (!match.hasMatch() || match.captured(1).toLongLong() != m_resumeFrom)
        {
            if (m_retried)
            {
                fail(text("downloadErrorHTTP").arg(QString::number(status), m_reply->errorString()), true);
                return false;
            }
            restartFromZero();
            return false;
        }
        m_received = m_resumeFrom;
        m_total = match.captured(3) == u"*" ? (hasLength ? m_resumeFrom + length : -1)
                                             : match.captured(3).toLongLong();
    }
    else
    {
        // The whole file (the server ignored the range, or none was asked).
        if (m_resumeFrom > 0 && !m_part.resize(0))
        {
            fail(text("downloadErrorWrite").arg(QDir::toNativeSeparators(partPath()), m_part.errorString()), false);
            return false;
        }
        m_resumeFrom = 0;
        m_received = 0;
        m_total = hasLength ? length : -1;
    }
    m_finalUrl = m_reply->url();
    m_speedMark = m_received;
    m_speedMarkTime = m_clock.elapsed();
    Q_EMIT responseReceived(m_finalUrl, m_total);
    return m_state == State::Running;
}

void ZBDownloadTask::restartFromZero()
{
    m_retried = true;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply = nullptr;
    m_part.close();
    if (!openPart(false))
    {
        fail(text("downloadErrorWrite").arg(QDir::toNativeSeparators(partPath()), m_part.errorString()), false);
        return;
    }
    m_resumeFrom = 0;
    sendRequest(0);
}

void ZBDownloadTask::onReadyRead()
{
    if (!m_responseSeen && !acceptResponse())
        return;
    // Not a timer restart per packet: the timer checks this when it fires.
    m_lastData = m_clock.elapsed();
    if (writeAvailable())
        measureSpeed(false);
}

bool ZBDownloadTask::writeAvailable()
{
    qint64 read = 0;
    while (m_reply && (read = m_reply->read(m_chunk.data(), m_chunk.size())) > 0)
    {
        if (m_part.write(m_chunk.constData(), read) != read)
        {
            fail(text("downloadErrorWrite").arg(QDir::toNativeSeparators(partPath()), m_part.errorString()), false);
            return false;
        }
        m_received += read;
    }
    return true;
}

void ZBDownloadTask::onFinished()
{
    m_stallTimer.stop();
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error == QNetworkReply::TooManyRedirectsError)
        return fail(text("downloadErrorRedirectLoop"), true);
    if (error == QNetworkReply::InsecureRedirectError)
        return fail(text("downloadErrorInsecureRedirect"), true);
    const bool hasStatus = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    if (!m_responseSeen && hasStatus && !acceptResponse())
        return;
    if (!m_responseSeen)
        return fail(text("downloadErrorNetwork").arg(m_reply->errorString()), true);
    if (!writeAvailable())
        return;
    if (error != QNetworkReply::NoError)
    {
        const QString total = m_total >= 0 ? size(m_total) : QStringLiteral("?");
        return fail(text("downloadErrorIncomplete").arg(size(m_received), total, m_reply->errorString()), true);
    }
    if (m_total >= 0 && m_received < m_total)
        return fail(text("downloadErrorShortBody").arg(size(m_received), size(m_total)), true);
    complete();
}

void ZBDownloadTask::onStalled()
{
    const qint64 idle = m_clock.elapsed() - m_lastData;
    if (idle < m_stallTimeout)
        return m_stallTimer.start(int(m_stallTimeout - idle));
    fail(text("downloadErrorStalled").arg(m_stallTimeout / 1000.0), true);
}

void ZBDownloadTask::complete()
{
    m_reply->deleteLater();
    m_reply = nullptr;
    m_part.close();
    if (m_part.error() != QFileDevice::NoError)
        return fail(text("downloadErrorWrite").arg(QDir::toNativeSeparators(partPath()), m_part.errorString()), false);
    QString target = m_targetPath;
    if (QFileInfo::exists(target) || QFileInfo(target).isSymLink())
    {
        // Something took the name meanwhile: never overwrite it.
        const QFileInfo info(target);
        const QString extension = ZBMediaTypes::pathExtension(info.fileName());
        const QString name = extension.isEmpty() ? info.fileName() : info.completeBaseName();
        target = ZBDownloadPaths::addSuffixForDownload(name, extension, info.absolutePath(), runningTargets());
    }
    QFile part(partPath());
    if (!part.rename(target))
        return fail(text("downloadErrorWrite").arg(QDir::toNativeSeparators(target), part.errorString()), true);
    m_state = State::Finished;
    release();
    m_targetPath = target;
    if (m_total < 0)
        m_total = m_received;
    measureSpeed(true);
    Q_EMIT progress(m_received, m_total);
    Q_EMIT finished(target);
}

void ZBDownloadTask::fail(const QString &reason, bool keepPart)
{
    if (m_state != State::Running)
        return;
    m_state = State::Failed;
    m_error = reason;
    m_stallTimer.stop();
    if (m_reply)
    {
        m_reply->disconnect(this);
        // A reply that carries an error already (an HTTP error status) must
        // not be given a second one; deleting it closes the connection.
        if (m_reply->error() == QNetworkReply::NoError)
            m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    m_part.close();
    // Only a task that owns the target touches its part file; an empty one of
    // its own making helps no later attempt.
    const bool empty = QFileInfo(partPath()).size() == 0;
    if (m_registered && (!keepPart || (m_partCreated && empty)))
        QFile::remove(partPath());
    release();
    Q_EMIT failed(reason);
}

void ZBDownloadTask::cancel()
{
    if (m_state == State::Idle)
        m_state = State::Cancelled;
    if (m_state != State::Running)
        return;
    m_state = State::Cancelled;
    m_stallTimer.stop();
    if (m_reply)
    {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    if (m_part.isOpen())
    {
        m_part.close();
        m_part.remove();
    }
    release();
}

void ZBDownloadTask::release()
{
    if (!m_registered)
        return;
    QMutexLocker lock(&s_runningMutex);
    s_running.remove(m_targetPath);
    m_registered = false;
}

void ZBDownloadTask::measureSpeed(bool force)
{
    const qint64 now = m_clock.elapsed();
    if (force || now - m_lastProgressTime >= kProgressIntervalMs)
    {
        m_lastProgressTime = now;
        if (!force)
            Q_EMIT progress(m_received, m_total);
    }
    const qint64 span = now - m_speedMarkTime;
    if (span >= kSpeedIntervalMs || (force && span > 0))
    {
        m_speed = (m_received - m_speedMark) * 1000 / span;
        m_speedMark = m_received;
        m_speedMarkTime = now;
        Q_EMIT speedChanged(m_speed);
    }
}
