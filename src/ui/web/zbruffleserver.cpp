#include "ui/web/zbruffleserver.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTcpServer>
#include <QTcpSocket>

#include "engines/flash/zbflashscheme.h"

namespace
{
const QString Prefix = QStringLiteral("/ruffle/");
// A request line and a few headers; anything longer is no page's request.
constexpr int MaxRequestBytes = 16 * 1024;
// The engine's WebAssembly is some 14 MB: send it as the socket drains.
constexpr qint64 ChunkBytes = 256 * 1024;
} // namespace

ZBRuffleServer::ZBRuffleServer(const QString &ruffleDirectory, QObject *parent)
    : QObject(parent)
    , m_directory(QDir::cleanPath(ruffleDirectory))
    , m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, [this]() {
        while (QTcpSocket *socket = m_server->nextPendingConnection())
            serve(socket);
    });
}

bool ZBRuffleServer::start()
{
    return m_server->isListening() || m_server->listen(QHostAddress::LocalHost, 0);
}

bool ZBRuffleServer::isListening() const
{
    return m_server->isListening();
}

QUrl ZBRuffleServer::baseUrl() const
{
    if (!m_server->isListening())
        return QUrl();
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("127.0.0.1"));
    url.setPort(m_server->serverPort());
    url.setPath(Prefix);
    return url;
}

void ZBRuffleServer::serve(QTcpSocket *socket)
{
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    connect(socket, &QTcpSocket::readyRead, socket, [this, socket]() {
        if (socket->property("nvkAnswered").toBool())
            return;
        QByteArray head = socket->property("nvkHead").toByteArray() + socket->readAll();
        if (!head.contains("\r\n\r\n"))
        {
            if (head.size() > MaxRequestBytes)
                socket->abort();
            else
                socket->setProperty("nvkHead", head);
            return;
        }
        socket->setProperty("nvkAnswered", true);
        const QList<QByteArray> requestLine = head.left(head.indexOf("\r\n")).split(' ');
        if (requestLine.size() != 3)
        {
            reply(socket, 400, "Bad Request", "text/plain", 0);
            socket->disconnectFromHost();
            return;
        }
        const QString path = QUrl(QString::fromLatin1(requestLine.at(1))).path(QUrl::FullyDecoded);
        answer(socket, requestLine.at(0), path);
    });
}

void ZBRuffleServer::answer(QTcpSocket *socket, const QByteArray &method, const QString &path)
{
    const bool head = method == "HEAD";
    if (!head && method != "GET")
    {
        reply(socket, 405, "Method Not Allowed", "text/plain", 0);
        socket->disconnectFromHost();
        return;
    }
    const QString file = QDir::cleanPath(m_directory + u'/' + path.mid(Prefix.size()));
    auto *input = new QFile(file, socket);
    if (!path.startsWith(Prefix) || !file.startsWith(m_directory + u'/') || !QFileInfo(file).isFile()
        || !input->open(QIODevice::ReadOnly))
    {
        reply(socket, 404, "Not Found", "text/plain", 0);
        socket->disconnectFromHost();
        return;
    }
    reply(socket, 200, "OK", ZBFlashSchemeHandler::mimeTypeFor(file), input->size());
    if (head)
    {
        socket->disconnectFromHost();
        return;
    }
    auto sendMore = [socket, input]() {
        if (socket->bytesToWrite() > ChunkBytes)
            return;
        const QByteArray chunk = input->read(ChunkBytes);
        if (chunk.isEmpty())
        {
            socket->disconnectFromHost();
            return;
        }
        socket->write(chunk);
    };
    connect(socket, &QTcpSocket::bytesWritten, input, sendMore);
    sendMore();
}

void ZBRuffleServer::reply(QTcpSocket *socket, int status, const QByteArray &reason, const QByteArray &mimeType,
                           qint64 length)
{
    QByteArray header = "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason + "\r\n";
    header += "Content-Type: " + mimeType + "\r\n";
    header += "Content-Length: " + QByteArray::number(length) + "\r\n";
    // Any page may load the engine; its files never change within a version.
    header += "Access-Control-Allow-Origin: *\r\n";
    header += "Cache-Control: max-age=86400\r\n";
    header += "Connection: close\r\n\r\n";
    socket->write(header);
}
