#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkCookieJar;
class QNetworkReply;

// Learns a resource's size and content type without fetching it. The browser
// only sees the requests a page makes, never the responses, so every size the
// download tree shows comes from here.
//
// A probe asks with HEAD first; a server that refuses HEAD (or answers it
// without a length) is asked again with a GET of the first byte, which is
// dropped as soon as its headers arrive, so a server that ignores the range
// and starts sending the whole file costs nothing. Requests carry the page's
// cookies, the page as referrer and the program's user agent, like the page's
// own requests. Only a few run at once; the rest wait in order.
class ZBResourceProbe : public QObject
{
    Q_OBJECT

public:
    struct Answer
    {
        bool ok = false;
        // The whole resource's size, -1 when the server did not say.
        qint64 totalBytes = -1;
        // Without parameters, lower-case ("video/mp4").
        QString contentType;
        int httpStatus = 0;
        // Why nothing was learnt, for the log.
        QString errorString;
    };

    explicit ZBResourceProbe(QObject *parent = nullptr);
    ~ZBResourceProbe() override;

    static QByteArray userAgent(); // "NorvikPlayer"

    // Cookies are read from the browser's jar for each request; the jar stays
    // the browser's (the probe neither owns nor writes it).
    void setCookieJar(QNetworkCookieJar *jar);
    void setMaxConcurrent(int count) { m_maxConcurrent = qMax(1, count); }
    int maxConcurrent() const { return m_maxConcurrent; }
    // For each request; a stalled server must not hold a slot for ever.
    void setTimeout(int milliseconds) { m_timeoutMs = milliseconds; }

    // Queues a probe and returns its id (never 0); probed() follows later,
    // never from within this call.
    quint64 probe(const QUrl &url, const QUrl &referrer);
    // No probed() comes for a cancelled id.
    void cancel(quint64 id);
    void cancelAll();
    // Probes queued or running.
    int pendingCount() const { return int(m_queue.size() + m_running.size()); }

    // The total of "bytes 0-0/12345"; -1 for "*" or anything unreadable.
    static qint64 totalFromContentRange(const QByteArray &contentRange);

Q_SIGNALS:
    void probed(quint64 id, const ZBResourceProbe::Answer &answer);

private:
    struct Request
    {
        quint64 id = 0;
        QUrl url;
        QUrl referrer;
        bool ranged = false;
    };

    void startNext();
    void send(const Request &request);
    void headersArrived(QNetworkReply *reply);
    void replyFinished(QNetworkReply *reply);
    void conclude(QNetworkReply *reply, const Answer &answer);

    QNetworkAccessManager *m_network;
    QPointer<QNetworkCookieJar> m_cookieJar;
    int m_maxConcurrent = 4;
    int m_timeoutMs = 20000;
    quint64 m_nextId = 1;
    QList<Request> m_queue;
    QHash<QNetworkReply *, Request> m_running;
};

Q_DECLARE_METATYPE(ZBResourceProbe::Answer)
