#pragma once

#include <QHash>
#include <QMutex>
#include <QUrl>

class QThread;
class QTcpServer;

namespace nvktest
{
// A small HTTP/1.1 site on 127.0.0.1 at a random port for the tests of
// browsing, capture and downloads: routes serve their bytes with the
// misbehaviour a test asks for, and every request is logged. One response
// per connection. With ownThread the server runs on a thread of its own (for
// a client that blocks, or for speed), else on the caller's event loop.
class TestSite
{
public:
    struct Route
    {
        QByteArray body;
        QByteArray contentType = "application/octet-stream";
        int status = 200;
        qint64 generatedSize = -1; // a generatedBytes() body of this size instead
        QByteArray location, setCookie;
        QByteArray needCookie; // "name=value" the request must carry, else 403
        bool chunked = false, ignoreRange = false;
        // Only this many body bytes, then the connection closes (or, with
        // stall, stays open and silent), whatever Content-Length said.
        qint64 cutAfter = -1;
        bool stall = false;
        int trickleBytes = 0, trickleMs = 0; // a slow server
    };
    struct Request
    {
        QByteArray method, path;
        QHash<QByteArray, QByteArray> headers; // names in lower case
    };

    explicit TestSite(bool ownThread = false);
    ~TestSite();

    bool isListening() const { return m_port != 0; }
    QUrl url(const QString &path) const;
    void addRoute(const QByteArray &path, const Route &route);
    void addFile(const QByteArray &path, const QByteArray &body, const QByteArray &contentType = "application/octet-stream");
    // The last request for the path; an empty one when there was none.
    Request lastRequest(const QByteArray &path) const;
    // A cheap pattern in which a byte missed or doubled shows.
    static QByteArray generatedBytes(qint64 offset, qint64 length);

private:
    friend class Exchange;
    QThread *m_thread = nullptr;
    QTcpServer *m_server = nullptr;
    quint16 m_port = 0;
    mutable QMutex m_mutex;
    QHash<QByteArray, Route> m_routes;
    QList<Request> m_requests;
};
} // namespace nvktest
