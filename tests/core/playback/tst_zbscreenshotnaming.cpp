#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "localization/zblocalizer.h"
#include "playback/zbscreenshotnaming.h"

// Where the next screenshot of a track goes: never over an existing file and
// never outside the track's own folder, whatever the track is called.
class TestZBScreenshotNaming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }
    void nextShotPath_data();
    void nextShotPath();
};

void TestZBScreenshotNaming::nextShotPath_data()
{
    QTest::addColumn<QString>("trackName");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("expected");

    const QString folder = QStringLiteral("Clip screenshots/");
    QTest::newRow("first shot") << "Clip" << QStringList{} << folder + "screenshot.tiff";
    QTest::newRow("one taken") << "Clip" << QStringList{folder + "screenshot.tiff"} << folder + "screenshot2.tiff";
    QTest::newRow("two taken") << "Clip" << QStringList{folder + "screenshot.tiff", folder + "screenshot2.tiff"}
                               << folder + "screenshot3.tiff";
    QTest::newRow("a gap is filled") << "Clip" << QStringList{folder + "screenshot.tiff", folder + "screenshot3.tiff"}
                                     << folder + "screenshot2.tiff";
    QTest::newRow("slash") << "AC/DC live" << QStringList{} << "AC_DC live screenshots/screenshot.tiff";
    QTest::newRow("climbing out") << "../../etc" << QStringList{} << ".._.._etc screenshots/screenshot.tiff";
    QTest::newRow("refused characters") << " a\tb: c?*\"<>|\\ " << QStringList{}
                                        << "a_b_ c_______ screenshots/screenshot.tiff";
    QTest::newRow("too long for a file name")
        << QString(300, QChar(0xe9)) << QStringList{} << QString(100, QChar(0xe9)) + " screenshots/screenshot.tiff";
}

void TestZBScreenshotNaming::nextShotPath()
{
    QFETCH(QString, trackName);
    QFETCH(QStringList, existing);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    for (const QString &file : existing)
    {
        QVERIFY(QDir(dir.path()).mkpath(QFileInfo(dir.filePath(file)).path()));
        QFile touched(dir.filePath(file));
        QVERIFY(touched.open(QIODevice::WriteOnly));
    }
    // A slash at the end of the chosen folder changes nothing.
    QCOMPARE(ZBScreenshotNaming::nextShotPath(dir.path() + QLatin1Char('/'), trackName), dir.filePath(expected));
}

QTEST_GUILESS_MAIN(TestZBScreenshotNaming)
#include "tst_zbscreenshotnaming.moc"
