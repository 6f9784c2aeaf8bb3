#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include "support/mediafactory.h"
#include "support/testsupport.h"

using nvktest::MediaFactory;

// `norvikctl snapshot` as a script uses it: a frame of a real movie through
// the player's video engine, written as an image; clear errors otherwise.
class TestNorvikCtlSnapshot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void writesTheFrameAtATime_data();
    void writesTheFrameAtATime();
    void refusesWithAMessage_data();
    void refusesWithAMessage();

private:
    using Result = nvktest::CtlResult;
    Result ctl(const QStringList &arguments) { return nvktest::runCtl(m_data.path(), arguments); }

    nvktest::DataDir m_data;
    QTemporaryDir m_out;
};

void TestNorvikCtlSnapshot::initTestCase()
{
    if (!MediaFactory::isAvailable())
        QSKIP(qPrintable(MediaFactory::unavailableReason()));
    QVERIFY(m_out.isValid());
}

void TestNorvikCtlSnapshot::writesTheFrameAtATime_data()
{
    QTest::addColumn<QString>("extension");
    QTest::newRow("mp4") << "mp4";
    QTest::newRow("rmvb") << "rmvb";
    QTest::newRow("flv") << "flv";
}

void TestNorvikCtlSnapshot::writesTheFrameAtATime()
{
    QFETCH(QString, extension);
    QString error;
    const QString movie = MediaFactory::clip(extension, &error);
    QVERIFY2(!movie.isEmpty(), qPrintable(error));

    const QString early = m_out.filePath(extension + "-early.png");
    const QString late = m_out.filePath(extension + "-late.png");
    const Result first = ctl({"snapshot", movie, "--time", "0.2", "-o", early});
    QVERIFY2(first.code == 0, qPrintable(first.err));
    QVERIFY(first.out.contains(early));
    const Result second = ctl({"snapshot", movie, "--time", "1.6", "--output", late});
    QVERIFY2(second.code == 0, qPrintable(second.err));

    const QImage earlyImage(early);
    const QImage lateImage(late);
    QCOMPARE(earlyImage.size(), QSize(160, 120));
    QCOMPARE(lateImage.size(), QSize(160, 120));
    // The test picture moves: two times give two pictures.
    QVERIFY(earlyImage.convertToFormat(QImage::Format_RGB32) != lateImage.convertToFormat(QImage::Format_RGB32));
    // And it is the movie's picture, not a blank: the colour bars differ.
    QVERIFY(earlyImage.pixel(10, 10) != earlyImage.pixel(150, 10));
}

void TestNorvikCtlSnapshot::refusesWithAMessage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    if (!MediaFactory::isAvailable())
        return;
    const QString movie = MediaFactory::clip(QStringLiteral("mkv"));
    const QString out = QDir::temp().filePath(QStringLiteral("nvk-never-written.png"));
    QTest::newRow("missing file") << QStringList{"snapshot", MediaFactory::folder() + "/absent.mp4", "-o", out}
                                  << "does not exist";
    QTest::newRow("past the end") << QStringList{"snapshot", movie, "--time", "7.5", "-o", out} << "past the end";
    QTest::newRow("garbage") << QStringList{"snapshot", MediaFactory::garbage("avi"), "-o", out}
                             << "cannot be decoded";
    QTest::newRow("bad time") << QStringList{"snapshot", movie, "--time", "soon", "-o", out} << "seconds";
    QTest::newRow("negative time") << QStringList{"snapshot", movie, "--time", "-1", "-o", out} << "seconds";
    QTest::newRow("no output") << QStringList{"snapshot", movie} << "-o OUT";
    QTest::newRow("unknown image type") << QStringList{"snapshot", movie, "-o", out + ".xyz"} << "cannot write images";
    QTest::newRow("unwritable output") << QStringList{"snapshot", movie, "-o", "/nonexistent-folder/x.png"}
                                       << "cannot write";
}

void TestNorvikCtlSnapshot::refusesWithAMessage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const Result result = ctl(arguments);
    QVERIFY(result.code > 0);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    QVERIFY(result.out.isEmpty());
    QVERIFY(!QFile::exists(QDir::temp().filePath(QStringLiteral("nvk-never-written.png"))));
}

QTEST_GUILESS_MAIN(TestNorvikCtlSnapshot)
#include "tst_norvikctlsnapshot.moc"
