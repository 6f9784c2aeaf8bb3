#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "engines/flash/zbflashrequestguard.h"
#include "engines/flash/zbflashscheme.h"

// What the Flash page may read: the engine's own files, the movie's folder,
// and with local security off the rest of what the user can read; and what
// may leave the machine.
class TestZBFlashScheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void addressesRoundTrip_data();
    void addressesRoundTrip();
    void whatThePageMayRead();
    void networkOnlyWithoutSecurity_data();
    void networkOnlyWithoutSecurity();

private:
    void write(const QString &path, const QByteArray &bytes);

    QTemporaryDir m_root;
    QString m_movieDir;
    QString m_assets;
};

void TestZBFlashScheme::write(const QString &path, const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

void TestZBFlashScheme::initTestCase()
{
    QVERIFY(m_root.isValid());
    m_movieDir = m_root.filePath(QStringLiteral("cartoons/My Movie #1"));
    m_assets = m_root.filePath(QStringLiteral("assets"));
    write(m_movieDir + QStringLiteral("/movie.swf"), "FWS-movie");
    write(m_movieDir + QStringLiteral("/data/level 2.swf"), "FWS-level");
    write(m_root.filePath(QStringLiteral("cartoons/secret.txt")), "secret");
    write(m_assets + QStringLiteral("/host.html"), "<html>");
    write(m_root.filePath(QStringLiteral("outside.js")), "evil");
    // A link inside the folder that leads out of it.
    QVERIFY(QFile::link(m_root.filePath(QStringLiteral("cartoons/secret.txt")), m_movieDir + "/link.txt"));
}

void TestZBFlashScheme::addressesRoundTrip_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("spaces and hash") << "/home/anna/My Movie #1/a b.swf";
    QTest::newRow("non-Latin") << "/home/анна/мультик.swf";
    QTest::newRow("percent") << "/tmp/100%/x.swf";
}

void TestZBFlashScheme::addressesRoundTrip()
{
    QFETCH(QString, path);
    const QUrl url = ZBFlashSchemeHandler::fileUrl(path);
    QCOMPARE(url.scheme(), QStringLiteral("nvkflash"));
    QCOMPARE(ZBFlashSchemeHandler::pathOfFileUrl(url), path);
    // As the page sends it back: encoded, and re-read.
    QCOMPARE(ZBFlashSchemeHandler::pathOfFileUrl(QUrl::fromEncoded(url.toEncoded())), path);
    QVERIFY(ZBFlashSchemeHandler::pathOfFileUrl(ZBFlashSchemeHandler::appUrl("host.html")).isEmpty());
}

void TestZBFlashScheme::whatThePageMayRead()
{
    ZBFlashSchemeHandler handler;
    const auto answer = [&handler](const QString &path)
    {
        return handler.answer(ZBFlashSchemeHandler::fileUrl(path)).error;
    };
    const QString level = m_movieDir + QStringLiteral("/data/level 2.swf");
    const QString secret = m_root.filePath(QStringLiteral("cartoons/secret.txt"));
    const QString link = m_movieDir + QStringLiteral("/link.txt");

    handler.setScope(m_movieDir, true);
    QCOMPARE(answer(level), QWebEngineUrlRequestJob::NoError);
    QCOMPARE(handler.answer(ZBFlashSchemeHandler::fileUrl(level)).mimeType,
             QByteArray("application/x-shockwave-flash"));
    QCOMPARE(answer(secret), QWebEngineUrlRequestJob::RequestDenied);
    QCOMPARE(answer(link), QWebEngineUrlRequestJob::RequestDenied);
    // A folder whose name starts like the movie's is another folder.
    write(m_movieDir + QStringLiteral("2/x.swf"), "FWS");
    QCOMPARE(answer(m_movieDir + QStringLiteral("2/x.swf")), QWebEngineUrlRequestJob::RequestDenied);

    handler.setScope(m_movieDir, false);
    QCOMPARE(answer(secret), QWebEngineUrlRequestJob::NoError);
    QCOMPARE(answer(link), QWebEngineUrlRequestJob::NoError);
    QCOMPARE(answer(m_movieDir + QStringLiteral("/absent.swf")), QWebEngineUrlRequestJob::UrlNotFound);
    QCOMPARE(answer(m_movieDir), QWebEngineUrlRequestJob::UrlNotFound);

    // Bytes the engine prepared win over the file.
    handler.setScope(m_movieDir, true);
    const QUrl movie = ZBFlashSchemeHandler::fileUrl(m_movieDir + QStringLiteral("/movie.swf"));
    const QUrl host = ZBFlashSchemeHandler::fileUrl(m_movieDir + QStringLiteral("/movie.swf"), "nvk-host");
    handler.setPrepared({{movie, "rewritten"}, {host, "wrapper"}});
    QCOMPARE(handler.answer(movie).data, QByteArray("rewritten"));
    QCOMPARE(handler.answer(QUrl::fromEncoded(host.toEncoded())).data, QByteArray("wrapper"));
    // A projector's movie has no file of its own and is served all the same.
    const QUrl projector = ZBFlashSchemeHandler::fileUrl(m_root.filePath(QStringLiteral("elsewhere/cartoon.exe")));
    handler.setPrepared({{projector, "extracted"}});
    QCOMPARE(handler.answer(projector).data, QByteArray("extracted"));
    QCOMPARE(handler.answer(movie).filePath, m_movieDir + QStringLiteral("/movie.swf"));
    handler.setPrepared({});
    QCOMPARE(handler.answer(projector).error, QWebEngineUrlRequestJob::RequestDenied);

    // The engine's own files come from its asset folder and nowhere else.
    handler.setAssetDirectory(m_assets);
    const auto engineFile = handler.answer(ZBFlashSchemeHandler::appUrl(QStringLiteral("host.html")));
    QCOMPARE(engineFile.error, QWebEngineUrlRequestJob::NoError);
    QCOMPARE(engineFile.mimeType, QByteArray("text/html"));
    QCOMPARE(handler.answer(ZBFlashSchemeHandler::appUrl(QStringLiteral("../outside.js"))).error,
             QWebEngineUrlRequestJob::UrlNotFound);
    QCOMPARE(handler.answer(QUrl(QStringLiteral("nvkflash://player/app/%2e%2e/outside.js"))).error,
             QWebEngineUrlRequestJob::UrlNotFound);
}

void TestZBFlashScheme::networkOnlyWithoutSecurity_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("withSecurity");
    QTest::newRow("http") << "http://example.com/data.xml" << false;
    QTest::newRow("websocket") << "wss://example.com/socket" << false;
    QTest::newRow("file") << "file:///etc/passwd" << false;
    QTest::newRow("our scheme") << "nvkflash://player/fs/tmp/a.swf" << true;
}

void TestZBFlashScheme::networkOnlyWithoutSecurity()
{
    QFETCH(QString, url);
    QFETCH(bool, withSecurity);
    QVERIFY(ZBFlashRequestGuard::allows(QUrl(url), false));
    QCOMPARE(ZBFlashRequestGuard::allows(QUrl(url), true), withSecurity);
}

QTEST_GUILESS_MAIN(TestZBFlashScheme)
#include "tst_zbflashscheme.moc"
