#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "support/flashmovies.h"
#include "support/flashtestmain.h"
#include "ui/web/zbbrowserview.h"

namespace
{
// A few fixed pages on 127.0.0.1: enough HTTP for a browser, nothing more.
class TinySite : public QObject
{
public:
    struct Page
    {
        QByteArray type;
        QByteArray body;
        QByteArray headers;
    };

    TinySite()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this]() {
            while (QTcpSocket *socket = m_server.nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, socket, [this, socket]() { answer(socket); });
        });
    }

    QUrl url(const QString &path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(path));
    }

    QHash<QString, Page> pages;
    QList<QByteArray> userAgents;

private:
    void answer(QTcpSocket *socket)
    {
        const QByteArray head = socket->readAll();
        const QByteArray path = head.split(' ').value(1);
        for (const QByteArray &line : head.split('\n'))
        {
            if (line.toLower().startsWith("user-agent:"))
                userAgents.append(line.mid(11).trimmed());
        }
        const auto page = pages.constFind(QString::fromLatin1(path));
        const bool found = page != pages.cend();
        const Page reply = found ? *page : Page{"text/html", "<title>Missing</title>gone", {}};
        socket->write((found ? "HTTP/1.1 200 OK\r\n" : "HTTP/1.1 404 Not Found\r\n") + reply.headers
                      + "Content-Type: " + reply.type + "\r\nContent-Length: " + QByteArray::number(reply.body.size())
                      + "\r\nConnection: close\r\n\r\n" + reply.body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
};

bool reported(const QList<ZBWebRequest> &requests, const QUrl &url, int type, bool mainFrame, const QString &element)
{
    return std::any_of(requests.cbegin(), requests.cend(), [&](const ZBWebRequest &r) {
        return r.url == url && r.resourceType == type && r.mainFrame == mainFrame && r.element == element;
    });
}
} // namespace

class TestZBBrowserView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void pageRequestsAreReported_data();
    void pageRequestsAreReported();
    void userAgentAndCookiesReachTheirUsers();
    void failuresAreToldApart_data();
    void failuresAreToldApart();
    void popupsLoadInTheSameView();
    void previewedMovieRequestsAreTagged();
    void cleanupTestCase() { delete m_view; }

private:
    TinySite m_site;
    ZBBrowserView *m_view = nullptr;
    QList<ZBWebRequest> m_requests;
};

void TestZBBrowserView::initTestCase()
{
    const QByteArray swf = nvktest::makeCounterMovie();
    m_site.pages.insert("/", {"text/html",
                              "<html><head><title>Media</title></head><body>"
                              "<video src='clip.mp4'></video><video><source src='movie.webm'></video>"
                              "<iframe src='frame.html'></iframe>"
                              "<embed src='movie.swf' type='application/x-shockwave-flash' width=200 height=150>"
                              "<script>document.cookie='js=1'; fetch('data.json');"
                              "var x = new XMLHttpRequest(); x.open('GET', 'xhr.txt'); x.send();</script>"
                              "</body></html>",
                              "Set-Cookie: session=abc; HttpOnly; Path=/\r\n"});
    m_site.pages.insert("/frame.html", {"text/html", "<video src='framevideo.mp4'></video>", {}});
    m_site.pages.insert("/movie.swf", {"application/x-shockwave-flash", swf, {}});
    m_site.pages.insert("/preview.swf", {"application/x-shockwave-flash", swf, {}});
    m_site.pages.insert("/popup.html", {"text/html",
                                        "<script>window.open('about:blank'); window.open('target.html');</script>", {}});
    m_site.pages.insert("/target.html", {"text/html", "<title>Target</title>", {}});

    m_view = new ZBBrowserView;
    m_view->resize(400, 300);
    m_view->show(); // a view never shown never runs the Flash engine
    QVERIFY(m_view->isFlashAvailable());
    connect(m_view, &ZBBrowserView::resourceRequested, this, [this](const ZBWebRequest &r) { m_requests.append(r); });
    QSignalSpy finished(m_view, &ZBBrowserView::mainFrameLoadFinished);
    m_view->load(m_site.url("/"));
    QVERIFY(finished.wait(20000));
    QCOMPARE(finished.first().at(1).toString(), QStringLiteral("Media"));
}

void TestZBBrowserView::pageRequestsAreReported_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("mainFrame");
    QTest::addColumn<QString>("element");
    QTest::newRow("page") << "/" << int(ZBWebRequest::MainFrame) << true << "";
    QTest::newRow("video src") << "/clip.mp4" << int(ZBWebRequest::Media) << false << "";
    QTest::newRow("source") << "/movie.webm" << int(ZBWebRequest::Media) << false << "";
    QTest::newRow("iframe") << "/frame.html" << int(ZBWebRequest::SubFrame) << false << "";
    QTest::newRow("fetch") << "/data.json" << int(ZBWebRequest::Xhr) << false << "";
    QTest::newRow("xhr") << "/xhr.txt" << int(ZBWebRequest::Xhr) << false << "";
    QTest::newRow("swf fetched by the engine") << "/movie.swf" << int(ZBWebRequest::Xhr) << false << "";
    QTest::newRow("embed in markup") << "/movie.swf" << int(ZBWebRequest::FoundInPage) << true << "embed";
    QTest::newRow("video in markup") << "/clip.mp4" << int(ZBWebRequest::FoundInPage) << true << "video";
    QTest::newRow("source in markup") << "/movie.webm" << int(ZBWebRequest::FoundInPage) << true << "source";
    QTest::newRow("video in a frame") << "/framevideo.mp4" << int(ZBWebRequest::FoundInPage) << false << "video";
}

void TestZBBrowserView::pageRequestsAreReported()
{
    QFETCH(QString, path);
    QFETCH(int, type);
    QFETCH(bool, mainFrame);
    QFETCH(QString, element);
    QTRY_VERIFY_WITH_TIMEOUT(reported(m_requests, m_site.url(path), type, mainFrame, element), 30000);
    // Nothing of our own (the engine's files, our pages) passes for the page's.
    for (const ZBWebRequest &request : std::as_const(m_requests))
        QCOMPARE(request.url.port(), m_site.url("/").port());
}

void TestZBBrowserView::userAgentAndCookiesReachTheirUsers()
{
    QVERIFY(!m_site.userAgents.isEmpty());
    for (const QByteArray &agent : std::as_const(m_site.userAgents))
        QCOMPARE(agent, QByteArray("NorvikPlayer"));
    auto cookie = [this](const QByteArray &name) {
        const QList<QNetworkCookie> cookies = m_view->cookieJar()->cookiesForUrl(m_site.url("/"));
        const auto it = std::find_if(cookies.cbegin(), cookies.cend(),
                                     [&](const QNetworkCookie &c) { return c.name() == name; });
        return it == cookies.cend() ? QNetworkCookie() : *it;
    };
    QTRY_COMPARE(cookie("session").value(), QByteArray("abc"));
    QVERIFY(cookie("session").isHttpOnly());
    QTRY_COMPARE(cookie("js").value(), QByteArray("1"));
}

void TestZBBrowserView::failuresAreToldApart_data()
{
    QTest::addColumn<bool>("refused");
    QTest::addColumn<ZBBrowserView::FailureKind>("kind");
    QTest::addColumn<int>("code");
    QTest::newRow("refused") << true << ZBBrowserView::FailureKind::Connection << -102;
    QTest::newRow("404") << false << ZBBrowserView::FailureKind::HttpStatus << 404;
}

void TestZBBrowserView::failuresAreToldApart()
{
    QFETCH(bool, refused);
    QFETCH(ZBBrowserView::FailureKind, kind);
    QFETCH(int, code);
    QUrl url = m_site.url("/missing.html");
    if (refused)
    {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        url.setPort(closed.serverPort());
    }
    QSignalSpy failed(m_view, &ZBBrowserView::mainFrameLoadFailed);
    QSignalSpy busy(m_view, &ZBBrowserView::busyChanged);
    m_view->load(url);
    QVERIFY(failed.wait(20000));
    QCOMPARE(failed.first().at(1).value<ZBBrowserView::FailureKind>(), kind);
    QCOMPARE(failed.first().at(2).toInt(), code);
    QCOMPARE(busy.last().first().toBool(), false);
    QVERIFY(!m_view->isBusy());
}

void TestZBBrowserView::popupsLoadInTheSameView()
{
    QSignalSpy opened(m_view, &ZBBrowserView::newWindowLoaded);
    QSignalSpy finished(m_view, &ZBBrowserView::mainFrameLoadFinished);
    m_view->load(m_site.url("/popup.html"));
    QTRY_COMPARE_WITH_TIMEOUT(m_view->title(), QStringLiteral("Target"), 20000);
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.first().first().toUrl(), m_site.url("/target.html"));
    QCOMPARE(m_view->url(), m_site.url("/target.html"));
}

void TestZBBrowserView::previewedMovieRequestsAreTagged()
{
    m_requests.clear();
    m_view->previewSWF(m_site.url("/preview.swf"));
    QTRY_VERIFY_WITH_TIMEOUT(std::any_of(m_requests.cbegin(), m_requests.cend(),
                                         [this](const ZBWebRequest &r) {
                                             return r.url == m_site.url("/preview.swf") && r.preview
                                                    && r.resourceType != ZBWebRequest::FoundInPage;
                                         }),
                             30000);
    QVERIFY(m_view->isPreviewing());
    m_view->loadStartPage(QStringLiteral("typed text"));
    QTRY_VERIFY_WITH_TIMEOUT(ZBWebPane::isStartPage(m_view->url()), 20000);
    QVERIFY(!m_view->isPreviewing());
}

NVK_FLASH_TEST_MAIN(TestZBBrowserView)

#include "tst_zbbrowserview.moc"
