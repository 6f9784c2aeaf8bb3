#include "support/testsite.h"

#include <QMutexLocker>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>

namespace nvktest
{
namespace
{
constexpr qint64 kSlice = 1 << 20;
constexpr qint64 kPeriod = 65521; // prime, so the pattern never lines up with a buffer size

const QByteArray &patternBlock()
{
    static const QByteArray block = [] {
        QByteArray bytes(kSlice + kPeriod, Qt::Uninitialized);
        for (qint64 i = 0; i < bytes.size(); ++i)
            bytes[i] = char(((i % kPeriod) * 2654435761u) >> 24);
        return bytes;
    }();
    return block;
}

QByteArray reasonPhrase(int status)
{
    switch (status)
    {
        case 200: return "OK";
        case 206: return "Partial Content";
        case 301: return "Moved Permanently";
        case 302: return "Found";
        case 403: return "Forbidden";
        case 404: return "Not Found";
        case 416: return "Range Not Satisfiable";
        default: return "Status";
    }
}
} // namespace

// One connection: reads one request, answers it the way its route says.
class Exchange : public QObject
{
public:
    Exchange(TestSite *site, QTcpSocket *socket)
        : QObject(socket)
        , m_site(site)
        , m_socket(socket)
    {
        connect(socket, &QTcpSocket::readyRead, this, &Exchange::onRequest);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

private:
    void onRequest()
    {
        if (m_answered)
            return;
        m_buffer += m_socket->readAll();
        const qsizetype end = m_buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        m_answered = true;
        const QList<QByteArray> lines = m_buffer.left(end).split('\n');
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        TestSite::Request request{first.value(0), first.value(1), {}};
        for (qsizetype i = 1; i < lines.size(); ++i)
        {
            const qsizetype colon = lines[i].indexOf(':');
            if (colon > 0)
                request.headers.insert(lines[i].left(colon).trimmed().toLower(), lines[i].mid(colon + 1).trimmed());
        }
        m_site->log(request);
        answer(request);
    }

    void answer(const TestSite::Request &request)
    {
        const auto refuse = [this](int status) {
            m_route = TestSite::Route();
            m_route.status = status;
            m_route.body = reasonPhrase(status);
        };
        if (!m_site->route(request.path.split('?').value(0), &m_route))
            refuse(404);
        if (!m_route.needCookie.isEmpty() && !request.headers.value("cookie").contains(m_route.needCookie))
            refuse(403);
        const qint64 size = m_route.generatedSize >= 0 ? m_route.generatedSize : m_route.body.size();
        int status = m_route.status;
        QByteArray headers;
        m_end = size;
        const QByteArray range = request.headers.value("range");
        if (status == 200 && !m_route.ignoreRange && range.startsWith("bytes="))
        {
            const QList<QByteArray> bounds = range.mid(6).split('-');
            m_pos = bounds.value(0).toLongLong();
            const QByteArray last = bounds.value(1);
            m_end = last.isEmpty() ? size : qMin(size, last.toLongLong() + 1);
            status = m_pos < size ? 206 : 416;
            const QByteArray first = m_pos < size ? QByteArray::number(m_pos) + '-' + QByteArray::number(m_end - 1)
                                                  : QByteArray("*");
            headers += "Content-Range: bytes " + first + '/' + QByteArray::number(size) + "\r\n";
            if (status == 416)
                m_pos = m_end = 0;
        }
        if (!m_route.location.isEmpty())
            headers += "Location: " + m_route.location + "\r\n";
        if (!m_route.setCookie.isEmpty())
            headers += "Set-Cookie: " + m_route.setCookie + "\r\n";
        headers += m_route.chunked ? QByteArray("Transfer-Encoding: chunked\r\n")
                                   : "Content-Length: " + QByteArray::number(m_end - m_pos) + "\r\n";
        m_socket->write("HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status) + "\r\nContent-Type: " +
                        m_route.contentType + "\r\nAccept-Ranges: bytes\r\nConnection: close\r\n" + headers + "\r\n");
        if (request.method == "HEAD")
            m_pos = m_end;
        m_limit = m_route.cutAfter >= 0 ? qMin(m_end, m_pos + m_route.cutAfter) : m_end;
        if (m_route.trickleBytes > 0)
        {
            auto *timer = new QTimer(this);
            connect(timer, &QTimer::timeout, this, &Exchange::pump);
            timer->start(m_route.trickleMs);
        }
        else
        {
            connect(m_socket, &QTcpSocket::bytesWritten, this, &Exchange::pump);
        }
        pump();
    }

    void pump()
    {
        const qint64 slice = m_route.trickleBytes > 0 ? m_route.trickleBytes : kSlice;
        do
        {
            if (m_pos >= m_limit)
                return finish();
            const qint64 length = qMin(slice, m_limit - m_pos);
            const QByteArray bytes = m_route.generatedSize >= 0 ? TestSite::generatedBytes(m_pos, length)
                                                                : m_route.body.mid(m_pos, length);
            if (m_route.chunked)
                m_socket->write(QByteArray::number(length, 16) + "\r\n" + bytes + "\r\n");
            else
                m_socket->write(bytes);
            m_pos += length;
        } while (m_route.trickleBytes == 0 && m_socket->bytesToWrite() < 4 * kSlice);
    }

    void finish()
    {
        if (m_finished)
            return;
        m_finished = true;
        if (m_limit == m_end && m_route.chunked)
            m_socket->write("0\r\n\r\n");
        if (m_limit == m_end || !m_route.stall)
            m_socket->disconnectFromHost();
    }

    TestSite *m_site;
    QTcpSocket *m_socket;
    TestSite::Route m_route;
    QByteArray m_buffer;
    qint64 m_pos = 0;
    qint64 m_end = 0;
    qint64 m_limit = 0;
    bool m_answered = false;
    bool m_finished = false;
};

TestSite::TestSite(bool ownThread)
    : m_server(new QTcpServer)
{
    if (ownThread)
    {
        m_thread = new QThread;
        m_server->moveToThread(m_thread);
        m_thread->start();
    }
    QObject::connect(m_server, &QTcpServer::newConnection, m_server, [this] {
        while (QTcpSocket *socket = m_server->nextPendingConnection())
            new Exchange(this, socket);
    });
    const auto listen = [this] {
        if (m_server->listen(QHostAddress::LocalHost, 0))
            m_port = m_server->serverPort();
    };
    if (m_thread)
        QMetaObject::invokeMethod(m_server, listen, Qt::BlockingQueuedConnection);
    else
        listen();
}

TestSite::~TestSite()
{
    const auto stop = [this] { delete m_server; };
    if (!m_thread)
    {
        stop();
        return;
    }
    QMetaObject::invokeMethod(m_server, stop, Qt::BlockingQueuedConnection);
    m_thread->quit();
    m_thread->wait();
    delete m_thread;
}

QUrl TestSite::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
}

void TestSite::addRoute(const QByteArray &path, const Route &route)
{
    QMutexLocker lock(&m_mutex);
    m_routes.insert(path, route);
}

void TestSite::addFile(const QByteArray &path, const QByteArray &body, const QByteArray &contentType)
{
    Route route;
    route.body = body;
    route.contentType = contentType;
    addRoute(path, route);
}

void TestSite::addRedirect(const QByteArray &path, const QByteArray &to, int status)
{
    Route route;
    route.status = status;
    route.location = to;
    addRoute(path, route);
}

QList<TestSite::Request> TestSite::requests() const
{
    QMutexLocker lock(&m_mutex);
    return m_requests;
}

TestSite::Request TestSite::lastRequest(const QByteArray &path) const
{
    QMutexLocker lock(&m_mutex);
    for (auto it = m_requests.crbegin(); it != m_requests.crend(); ++it)
    {
        if (it->path == path)
            return *it;
    }
    return {};
}

QByteArray TestSite::generatedBytes(qint64 offset, qint64 length)
{
    QByteArray bytes;
    bytes.reserve(length);
    while (length > 0)
    {
        const qint64 part = qMin(length, kSlice);
        bytes.append(patternBlock().constData() + offset % kPeriod, part);
        offset += part;
        length -= part;
    }
    return bytes;
}

bool TestSite::route(const QByteArray &path, Route *route) const
{
    QMutexLocker lock(&m_mutex);
    const auto it = m_routes.constFind(path);
    if (it == m_routes.cend())
        return false;
    *route = *it;
    return true;
}

void TestSite::log(const Request &request)
{
    QMutexLocker lock(&m_mutex);
    m_requests.append(request);
}
} // namespace nvktest
