#include <QTest>

#include "support/testsite.h"
#include "support/testsupport.h"

// "norvikctl download" as a script runs it: the saved path and exit 0, or a
// reason and exit 1 with nothing under the name; media files join the library.
class TestNorvikCtlDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void download_data();
    void download();

private:
    nvktest::TestSite m_site{true}; // its own thread: the test waits for the process
};

void TestNorvikCtlDownload::download_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("saved"); // empty: must fail
    QTest::newRow("media file") << "/v/My%20Clip.flv?x=1" << "" << "My Clip.flv";
    QTest::newRow("titled, name taken") << "/v/clip.flv" << "a/b" << "a b2.flv";
    QTest::newRow("not media") << "/notes.txt" << "" << "notes.txt";
    QTest::newRow("404") << "/missing.flv" << "" << "";
}

void TestNorvikCtlDownload::download()
{
    QFETCH(QString, path);
    QFETCH(QString, title);
    QFETCH(QString, saved);
    const QByteArray bytes = nvktest::TestSite::generatedBytes(0, 100000);
    if (!saved.isEmpty())
        m_site.addFile(path.section('?', 0, 0).toUtf8(), bytes);
    nvktest::DataDir data;
    const QString to = data.filePath("down");
    QDir().mkpath(to);
    QFile(to + "/a b.flv").open(QIODevice::WriteOnly);
    QStringList arguments{"download", m_site.url(path).toString(), "--to", to};
    if (!title.isEmpty())
        arguments << "--title" << title;
    const nvktest::CtlResult result = nvktest::runCtl(data.path(), arguments);
    const QString tracks = nvktest::ctlOutput(data.path(), {"list"});
    if (saved.isEmpty())
    {
        QCOMPARE(result.code, 1);
        QVERIFY2(result.err.contains("404"), qPrintable(result.err));
        QCOMPARE(QDir(to).entryList(QDir::Files), QStringList{"a b.flv"});
        QVERIFY(tracks.isEmpty());
        return;
    }
    QCOMPARE(result.code, 0);
    QCOMPARE(result.out.trimmed(), to + '/' + saved);
    QFile file(result.out.trimmed());
    QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == bytes);
    // A track row: UUID, Name, Type, Length, PlayCount, Path.
    QCOMPARE(tracks.section('\t', 5), saved.endsWith(".flv") ? file.fileName() : QString());
}

QTEST_GUILESS_MAIN(TestNorvikCtlDownload)
#include "tst_norvikctldownload.moc"
