#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"
#include "web/zbresourceprobe.h"

namespace
{
// Answers each request after its headers by the server's mode and keeps
// "METHOD path" plus the headers that must travel with every probe.
class TinyServer : public QTcpServer
{
public:
    explicit TinyServer(const QString &mode)
        : m_mode(mode)
    {
        connect(this, &QTcpServer::newConnection, this, [this]() {
            while (QTcpSocket *socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket]() { serve(socket); });
        });
        listen(QHostAddress::LocalHost);
    }
    QStringList requests;
    QList<QByteArray> cookies, referrers, agents;

private:
    void serve(QTcpSocket *socket)
    {
        QByteArray &buffer = m_buffers[socket];
        buffer += socket->readAll();
        for (qsizetype end = buffer.indexOf("\r\n\r\n"); end >= 0; end = buffer.indexOf("\r\n\r\n"))
            answer(socket, buffer, end);
    }
    void answer(QTcpSocket *socket, QByteArray &buffer, qsizetype end)
    {
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        buffer.remove(0, end + 4);
        const QList<QByteArray> start = lines.first().trimmed().split(' ');
        QHash<QByteArray, QByteArray> headers;
        for (const QByteArray &line : lines.mid(1))
        {
            const qsizetype colon = line.indexOf(':');
            headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
        }
        const bool head = start.value(0) == "HEAD";
        requests << QString::fromLatin1(start.value(0) + ' ' + start.value(1));
        cookies << headers.value("cookie");
        referrers << headers.value("referer");
        agents << headers.value("user-agent");
        QByteArray reply = "HTTP/1.1 500 Broken\r\nContent-Length: 0\r\n\r\n";
        if (start.value(1) == "/moved")
            reply = "HTTP/1.1 302 Found\r\nLocation: /clip\r\nContent-Length: 0\r\n\r\n";
        else if (m_mode == "head" && head)
            reply = "HTTP/1.1 200 OK\r\nContent-Type: video/mp4\r\nContent-Length: 12345\r\n\r\n";
        else if (m_mode == "range" && !head && headers.value("range") == "bytes=0-0")
            reply = "HTTP/1.1 206 Partial\r\nContent-Type: video/x-flv\r\nContent-Range: bytes 0-0/777\r\n"
                    "Content-Length: 1\r\n\r\nF";
        else if (m_mode == "whole" && !head)
            reply = "HTTP/1.1 200 OK\r\nContent-Type: application/x-shockwave-flash\r\nContent-Length: 90000000\r\n\r\n" +
                    QByteArray(64 * 1024, 'x');
        else if (head)
            reply = "HTTP/1.1 405 Not Allowed\r\nContent-Length: 0\r\n\r\n";
        // One request per connection keeps the order of requests plain.
        socket->write(reply.replace("\r\n\r\n", "\r\nConnection: close\r\n\r\n"));
        socket->disconnectFromHost();
    }

    QString m_mode;
    QHash<QTcpSocket *, QByteArray> m_buffers;
};
} // namespace

class TestZBResourceProbe : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizesAndTypes_data()
    {
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QStringList>("requests");
        QTest::addColumn<qint64>("size");
        QTest::addColumn<QString>("type");
        QTest::newRow("HEAD tells") << "head" << "/clip" << QStringList{"HEAD /clip"} << qint64(12345) << "mp4";
        QTest::newRow("redirect followed") << "head" << "/moved" << QStringList{"HEAD /moved", "HEAD /clip"}
                                           << qint64(12345) << "mp4";
        QTest::newRow("HEAD refused, one byte asked")
            << "range" << "/clip" << QStringList{"HEAD /clip", "GET /clip"} << qint64(777) << "flv";
        QTest::newRow("range ignored, whole file dropped")
            << "whole" << "/clip" << QStringList{"HEAD /clip", "GET /clip"} << qint64(90000000) << "swf";
        QTest::newRow("failing server") << "fail" << "/clip" << QStringList{"HEAD /clip", "GET /clip"} << qint64(0)
                                        << "unknown";
    }
    void sizesAndTypes()
    {
        QFETCH(QString, mode);
        QFETCH(QString, path);
        QFETCH(QStringList, requests);
        TinyServer server(mode);
        QVERIFY(server.isListening());
        const QString host = QStringLiteral("127.0.0.1:%1").arg(server.serverPort());

        QNetworkCookieJar jar;
        QNetworkCookie cookie("sid", "abc");
        cookie.setDomain(QStringLiteral("127.0.0.1"));
        QVERIFY(jar.insertCookie(cookie));
        ZBResourceProbe probe;
        probe.setCookieJar(&jar);
        QSignalSpy answered(&probe, &ZBResourceProbe::probed);
        ZBCaptureTree tree;
        tree.setResourceProbe(&probe);
        tree.commitPage(QStringLiteral("http://page.test/"));
        ZBDownloadItem *item = tree.receivingUrl(host + path);
        QVERIFY(item);

        QVERIFY(answered.wait(10000));
        QCOMPARE(server.requests, requests);
        QTEST(item->expectedBytesLength(), "size");
        QTEST(item->resourceType(), "type");
        for (qsizetype i = 0; i < server.requests.size(); ++i)
        {
            QCOMPARE(server.cookies.at(i), "sid=abc");
            QCOMPARE(server.referrers.at(i), "http://page.test/");
            QCOMPARE(server.agents.at(i), "NorvikPlayer");
        }
        QCOMPARE(probe.pendingCount(), 0);
    }

    void fewAtATime()
    {
        TinyServer server(QStringLiteral("head"));
        ZBResourceProbe probe;
        probe.setMaxConcurrent(2);
        QSignalSpy answered(&probe, &ZBResourceProbe::probed);
        const QUrl url(QStringLiteral("http://127.0.0.1:%1/clip").arg(server.serverPort()));
        QList<quint64> ids;
        for (int i = 0; i < 6; ++i)
            ids << probe.probe(url, QUrl());
        probe.cancel(ids.at(5));
        QCOMPARE(probe.pendingCount(), 5);
        QTRY_COMPARE_WITH_TIMEOUT(answered.size(), 5, 10000);
        QCOMPARE(server.requests.size(), 5);
        for (const QList<QVariant> &signal : answered)
            QVERIFY(signal.at(0).toULongLong() != ids.at(5));
    }
};

QTEST_GUILESS_MAIN(TestZBResourceProbe)
#include "tst_zbresourceprobe.moc"
