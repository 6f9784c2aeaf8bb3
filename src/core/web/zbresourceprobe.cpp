#include "web/zbresourceprobe.h"

#include <QNetworkAccessManager>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace
{
bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

// Errors after which a second request to the same server cannot fare better.
bool isUnreachable(QNetworkReply::NetworkError error)
{
    switch (error)
    {
        case QNetworkReply::ConnectionRefusedError:
        case QNetworkReply::HostNotFoundError:
        case QNetworkReply::TimeoutError:
        case QNetworkReply::OperationCanceledError:
        case QNetworkReply::ProtocolUnknownError:
        case QNetworkReply::TooManyRedirectsError:
        case QNetworkReply::InsecureRedirectError:
            return true;
        default:
            return false;
    }
}

ZBResourceProbe::Answer answerFrom(QNetworkReply *reply)
{
    ZBResourceProbe::Answer answer;
    answer.httpStatus = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.ok = isSuccess(answer.httpStatus);
    if (!answer.ok)
    {
        answer.errorString = reply->error() != QNetworkReply::NoError
                                 ? reply->errorString()
                                 : QStringLiteral("HTTP status %1").arg(answer.httpStatus);
        return answer;
    }
    const QString type = reply->header(QNetworkRequest::ContentTypeHeader).toString();
    answer.contentType = type.section(u';', 0, 0).trimmed().toLower();
    if (answer.httpStatus == 206)
    {
        answer.totalBytes = ZBResourceProbe::totalFromContentRange(reply->rawHeader("Content-Range"));
    }
    else
    {
        bool isNumber = false;
        const qint64 length = reply->rawHeader("Content-Length").trimmed().toLongLong(&isNumber);
        if (isNumber && length >= 0)
            answer.totalBytes = length;
    }
    return answer;
}
} // namespace

ZBResourceProbe::ZBResourceProbe(QObject *parent)
    : QObject(parent)
    , m_network(new QNetworkAccessManager(this))
{
    qRegisterMetaType<ZBResourceProbe::Answer>();
    m_network->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    connect(m_network, &QNetworkAccessManager::finished, this, &ZBResourceProbe::replyFinished);
}

ZBResourceProbe::~ZBResourceProbe()
{
    cancelAll();
}

void ZBResourceProbe::setCookieJar(QNetworkCookieJar *jar)
{
    m_cookieJar = jar;
}

QByteArray ZBResourceProbe::userAgent()
{
    return QByteArrayLiteral("NorvikPlayer");
}

quint64 ZBResourceProbe::probe(const QUrl &url, const QUrl &referrer)
{
    Request request;
    request.id = m_nextId++;
    request.url = url;
    request.referrer = referrer;
    m_queue.append(request);
    startNext();
    return request.id;
}

void ZBResourceProbe::cancel(quint64 id)
{
    for (qsizetype i = 0; i < m_queue.size(); ++i)
    {
        if (m_queue.at(i).id == id)
        {
            m_queue.removeAt(i);
            return;
        }
    }
    for (auto it = m_running.cbegin(); it != m_running.cend(); ++it)
    {
        if (it->id == id)
        {
            QNetworkReply *reply = it.key();
            m_running.erase(it);
            reply->disconnect(this);
            reply->abort();
            reply->deleteLater();
            startNext();
            return;
        }
    }
}

void ZBResourceProbe::cancelAll()
{
    m_queue.clear();
    const QList<QNetworkReply *> replies = m_running.keys();
    m_running.clear();
    for (QNetworkReply *reply : replies)
    {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

qint64 ZBResourceProbe::totalFromContentRange(const QByteArray &contentRange)
{
    const qsizetype slash = contentRange.lastIndexOf('/');
    if (slash < 0)
        return -1;
    bool isNumber = false;
    const qint64 total = contentRange.mid(slash + 1).trimmed().toLongLong(&isNumber);
    return isNumber && total >= 0 ? total : -1;
}

void ZBResourceProbe::startNext()
{
    while (!m_queue.isEmpty() && m_running.size() < m_maxConcurrent)
        send(m_queue.takeFirst());
}

void ZBResourceProbe::send(const Request &request)
{
    QNetworkRequest networkRequest(request.url);
    networkRequest.setHeader(QNetworkRequest::UserAgentHeader, userAgent());
    if (request.referrer.isValid())
        networkRequest.setRawHeader("Referer", request.referrer.toEncoded());
    // The size on disk, not that of a compressed transfer.
    networkRequest.setRawHeader("Accept-Encoding", "identity");
    if (m_cookieJar)
    {
        const QList<QNetworkCookie> cookies = m_cookieJar->cookiesForUrl(request.url);
        if (!cookies.isEmpty())
            networkRequest.setHeader(QNetworkRequest::CookieHeader, QVariant::fromValue(cookies));
    }
    // The browser's cookies are its own: a probe neither adds to them nor
    // keeps any of its own.
    networkRequest.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    networkRequest.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    networkRequest.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    networkRequest.setTransferTimeout(m_timeoutMs);

    QNetworkReply *reply = nullptr;
    if (request.ranged)
    {
        networkRequest.setRawHeader("Range", "bytes=0-0");
        reply = m_network->get(networkRequest);
        connect(reply, &QNetworkReply::metaDataChanged, this, [this, reply]() { headersArrived(reply); });
    }
    else
    {
        reply = m_network->head(networkRequest);
    }
    m_running.insert(reply, request);
}

void ZBResourceProbe::headersArrived(QNetworkReply *reply)
{
    if (!m_running.contains(reply))
        return;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // A redirect hop's headers say nothing about the resource, and an error
    // ends the reply by itself.
    if (!isSuccess(status))
        return;
    conclude(reply, answerFrom(reply));
}

void ZBResourceProbe::replyFinished(QNetworkReply *reply)
{
    auto it = m_running.find(reply);
    if (it == m_running.end())
        return;
    Answer answer = answerFrom(reply);
    if (!it->ranged && (!answer.ok || answer.totalBytes < 0) && !isUnreachable(reply->error()))
    {
        // Many servers refuse HEAD or leave the length out of it.
        Request retry = it.value();
        retry.ranged = true;
        m_running.erase(it);
        reply->deleteLater();
        send(retry);
        return;
    }
    if (answer.errorString.isEmpty() && reply->error() != QNetworkReply::NoError &&
        reply->error() != QNetworkReply::OperationCanceledError)
        answer.errorString = reply->errorString();
    conclude(reply, answer);
}

void ZBResourceProbe::conclude(QNetworkReply *reply, const Answer &answer)
{
    const quint64 id = m_running.take(reply).id;
    reply->disconnect(this);
    // A GET the server answers with the whole file stops here.
    if (reply->isRunning())
        reply->abort();
    reply->deleteLater();
    startNext();
    Q_EMIT probed(id, answer);
}
