#include <QDir>
#include <QFileInfo>
#include <QImageReader>
#include <QSignalSpy>
#include <QTest>

#include "engines/mpv/zbmpvengine.h"
#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "support/mediafactory.h"
#include "support/testsupport.h"
#include "ui/playback/scriptedui.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbscreenshotcontroller.h"

namespace
{
struct Rig
{
    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ScriptedUi ui;
    ZBMpvEngine video{ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless};
    ZBPlaybackController controller{&library, &settings, &ui};
    ZBScreenshotController shots{&controller, &settings};
};
} // namespace

// Screenshots of the real video engine, headless: single shots, series, and
// how series follow the player's stops and changes of track.
class TestZBScreenshotController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }
    void init();
    void singleShotStartsTheSelection_data();
    void singleShotStartsTheSelection();
    void seriesRunsUntilPlaybackStops_data();
    void seriesRunsUntilPlaybackStops();
    void trackChangeEndsSeriesUnlessKept_data();
    void trackChangeEndsSeriesUnlessKept();

private:
    void addClips(int count);
    QString shot(const QString &track, const QString &file) const
    {
        return m_rig->dir.filePath(QStringLiteral("shots/%1 screenshots/%2").arg(track, file));
    }

    std::unique_ptr<Rig> m_rig;
};

void TestZBScreenshotController::init()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    m_rig.reset();
    m_rig = std::make_unique<Rig>();
    QVERIFY(m_rig->library.openStore(m_rig->dir.path()).ok);
    m_rig->library.initLibrary();
    m_rig->controller.setEngine(ZBPlaybackEngine::VideoMovie, &m_rig->video);
    m_rig->settings.option_pathForScreenshot = m_rig->dir.filePath(QStringLiteral("shots"));
    m_rig->settings.option_screenShotInterval = 0.2;
}

void TestZBScreenshotController::addClips(int count)
{
    ZBItemList list;
    for (int i = 0; i < count; ++i)
    {
        const QString path = nvktest::MediaFactory::clip({QStringLiteral("mp4"), 4.0 + i});
        QVERIFY(!path.isEmpty());
        list << m_rig->library.itemByUUID(m_rig->library.addItemToLibrarybyName(
            QString(QChar(u'a' + i)), path, QStringLiteral(""), QStringLiteral("mp4"), 0, 0, 0,
            QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    }
    m_rig->controller.setCurrentList(list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
}

void TestZBScreenshotController::singleShotStartsTheSelection_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<bool>("folderIsAFile");
    QTest::newRow("JPEG") << 3 << false;
    QTest::newRow("screenshot folder is a file") << 0 << true;
}

void TestZBScreenshotController::singleShotStartsTheSelection()
{
    QFETCH(int, format);
    QFETCH(bool, folderIsAFile);
    addClips(1);
    m_rig->settings.option_formatOfScreenshot = format;
    if (folderIsAFile)
    {
        QFile file(m_rig->settings.option_pathForScreenshot);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QSignalSpy saved(&m_rig->shots, &ZBScreenshotController::shotSaved);
    QSignalSpy failed(&m_rig->shots, &ZBScreenshotController::shotFailed);
    m_rig->shots.makeScreenShot();
    QTRY_VERIFY_WITH_TIMEOUT(saved.size() + failed.size() == 1, 10000);
    QVERIFY(m_rig->controller.isPlaying());
    if (folderIsAFile)
    {
        QVERIFY2(failed.first().first().toString().contains(u"cannot be written ("), qPrintable(failed.first().first().toString()));
        return;
    }
    QCOMPARE(saved.first(), (QVariantList{shot("a", "screenshot.tiff"), QFileInfo(shot("a", "")).path(), 0}));
    QImageReader reader(shot("a", "screenshot.tiff"));
    QCOMPARE(reader.format(), QByteArray("jpeg"));
    QCOMPARE(reader.size(), QSize(160, 120));
    QCOMPARE(m_rig->shots.ledCaption(), QStringLiteral("Screenshot saved"));
    QCOMPARE(m_rig->shots.notificationDescription(), QStringLiteral("Screenshot of “a” saved."));
}

void TestZBScreenshotController::seriesRunsUntilPlaybackStops_data()
{
    QTest::addColumn<bool>("fromFirstFrame");
    QTest::newRow("from where it plays") << false;
    QTest::newRow("from the first frame") << true;
}

void TestZBScreenshotController::seriesRunsUntilPlaybackStops()
{
    QFETCH(bool, fromFirstFrame);
    addClips(1);
    m_rig->settings.option_alwaysStartCapturingFromFirstFrame = fromFirstFrame;
    ZBScreenshotController &shots = m_rig->shots;
    QSignalSpy finished(&shots, &ZBScreenshotController::seriesFinished);
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->controller.isPlaying(), 10000);
    m_rig->controller.seekSliderMoved(2.5);
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->video.currentTime() >= 2.5, 10000);
    shots.seriesButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(shots.shotCount() >= 1, 10000);
    QCOMPARE(m_rig->video.currentTime() < 2.0, fromFirstFrame);
    QTRY_VERIFY_WITH_TIMEOUT(shots.shotCount() >= 3, 10000);
    QVERIFY(shots.isSeriesInProgress());
    QCOMPARE(shots.ledCaption().left(11), QStringLiteral("Every 0.2 s"));
    m_rig->controller.stopPlayback();
    QVERIFY(!shots.isSeriesInProgress());
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toString(), QFileInfo(shot("a", "")).path());
    for (const char *file : {"screenshot.tiff", "screenshot2.tiff", "screenshot3.tiff"})
    {
        QImageReader reader(shot("a", file));
        QCOMPARE(reader.format(), QByteArray("tiff"));
        QCOMPARE(reader.size(), QSize(160, 120));
    }
}

void TestZBScreenshotController::trackChangeEndsSeriesUnlessKept_data()
{
    QTest::addColumn<bool>("keep");
    QTest::newRow("stops") << false;
    QTest::newRow("keeps capturing") << true;
}

void TestZBScreenshotController::trackChangeEndsSeriesUnlessKept()
{
    QFETCH(bool, keep);
    addClips(2);
    m_rig->settings.option_keepCapturingToNextTrackInPlaylist = keep;
    ZBScreenshotController &shots = m_rig->shots;
    shots.seriesButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(shots.shotCount() >= 1, 10000);
    m_rig->controller.buttonNextClick();
    QCOMPARE(shots.isSeriesInProgress(), keep);
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->controller.isPlaying(), 10000);
    if (keep)
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(shot("b", "screenshot.tiff")), 10000);
    QVERIFY(!QFile::exists(shot("b", "screenshot.tiff")) == !keep);
}

QTEST_MAIN(TestZBScreenshotController)
#include "tst_zbscreenshotcontroller.moc"
