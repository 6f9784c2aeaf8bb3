#include "support/testsite.h"

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

TestSite::Route refused(int status)
{
    TestSite::Route route;
    route.status = status;
    return route;
}
} // namespace

// One connection: reads one request and answers it the way its route says.
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
        m_buffer += m_socket->readAll();
        const qsizetype end = m_buffer.indexOf("\r\n\r\n");
        if (m_pump || end < 0)
            return;
        const QList<QByteArray> lines = m_buffer.left(end).split('\n');
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        TestSite::Request request{first.value(0), first.value(1), {}};
        for (const QByteArray &line : lines.mid(1))
            request.headers.insert(line.left(line.indexOf(':')).trimmed().toLower(), line.mid(line.indexOf(':') + 1).trimmed());
        QMutexLocker lock(&m_site->m_mutex);
        m_site->m_requests.append(request);
        m_route = m_site->m_routes.value(request.path.split('?').value(0), refused(404));
        lock.unlock();
        if (!m_route.needCookie.isEmpty() && !request.headers.value("cookie").contains(m_route.needCookie))
            m_route = refused(403);
        answer(request);
    }

    void answer(const TestSite::Request &request)
    {
        const qint64 size = m_route.generatedSize >= 0 ? m_route.generatedSize : m_route.body.size();
        int status = m_route.status;
        QByteArray headers = "Content-Type: " + m_route.contentType + "\r\n";
        m_end = size;
        const QList<QByteArray> range = request.headers.value("range").mid(6).split('-');
        if (status == 200 && !m_route.ignoreRange && request.headers.value("range").startsWith("bytes="))
        {
            m_pos = qMin(range.value(0).toLongLong(), size);
            m_end = range.value(1).isEmpty() ? size : qMin(size, range.value(1).toLongLong() + 1);
            status = m_pos < size ? 206 : 416;
            headers += "Content-Range: bytes " + QByteArray::number(m_pos) + '-' + QByteArray::number(m_end - 1) + '/' +
                       QByteArray::number(size) + "\r\n";
        }
        if (status >= 300)
            m_pos = m_end = 0;
        if (!m_route.location.isEmpty())
            headers += "Location: " + m_route.location + "\r\n";
        if (!m_route.setCookie.isEmpty())
            headers += "Set-Cookie: " + m_route.setCookie + "\r\n";
        headers += m_route.chunked ? QByteArray("Transfer-Encoding: chunked\r\n")
                                   : "Content-Length: " + QByteArray::number(m_end - m_pos) + "\r\n";
        m_socket->write("HTTP/1.1 " + QByteArray::number(status) + " Status\r\nConnection: close\r\n" + headers +
                        "\r\n");
        if (request.method == "HEAD")
            m_pos = m_end;
        m_limit = m_route.cutAfter >= 0 ? qMin(m_end, m_pos + m_route.cutAfter) : m_end;
        m_pump = new QTimer(this);
        connect(m_pump, &QTimer::timeout, this, &Exchange::pump);
        if (m_route.trickleBytes > 0)
            m_pump->start(m_route.trickleMs);
        else
            connect(m_socket, &QTcpSocket::bytesWritten, this, &Exchange::pump);
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
            m_socket->write(m_route.chunked ? QByteArray::number(length, 16) + "\r\n" + bytes + "\r\n" : bytes);
            m_pos += length;
        } while (m_route.trickleBytes == 0 && m_socket->bytesToWrite() < 4 * kSlice);
    }

    void finish()
    {
        if (std::exchange(m_finished, true))
            return;
        if (m_limit == m_end && m_route.chunked)
            m_socket->write("0\r\n\r\n");
        if (m_limit == m_end || !m_route.stall)
            m_socket->disconnectFromHost();
    }

    TestSite *m_site;
    QTcpSocket *m_socket;
    QTimer *m_pump = nullptr;
    TestSite::Route m_route;
    QByteArray m_buffer;
    qint64 m_pos = 0, m_end = 0, m_limit = 0;
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
    QMetaObject::invokeMethod(
        m_server, [this] { m_port = m_server->listen(QHostAddress::LocalHost, 0) ? m_server->serverPort() : 0; },
        m_thread ? Qt::BlockingQueuedConnection : Qt::DirectConnection);
}

TestSite::~TestSite()
{
    QMetaObject::invokeMethod(m_server, [this] { delete m_server; },
                              m_thread ? Qt::BlockingQueuedConnection : Qt::DirectConnection);
    if (m_thread)
    {
        m_thread->quit();
        m_thread->wait();
        delete m_thread;
    }
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

TestSite::Request TestSite::lastRequest(const QByteArray &path) const
{
    QMutexLocker lock(&m_mutex);
    const auto found = std::find_if(m_requests.crbegin(), m_requests.crend(), [&](auto &r) { return r.path == path; });
    return found == m_requests.crend() ? Request() : *found;
}

QByteArray TestSite::generatedBytes(qint64 offset, qint64 length)
{
    static const QByteArray block = [] {
        QByteArray bytes(kSlice + kPeriod, Qt::Uninitialized);
        for (qint64 i = 0; i < bytes.size(); ++i)
            bytes[i] = char(((i % kPeriod) * 2654435761u) >> 24);
        return bytes;
    }();
    QByteArray bytes;
    for (bytes.reserve(length); length > 0; length -= qMin(length, kSlice), offset += kSlice)
        bytes.append(block.constData() + offset % kPeriod, qMin(length, kSlice));
    return bytes;
}
} // namespace nvktest
