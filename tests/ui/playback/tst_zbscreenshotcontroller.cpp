#include <QImageReader>
#include <QSignalSpy>
#include <QTest>

#include "engines/mpv/zbmpvengine.h"
#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "support/mediafactory.h"
#include "support/testsupport.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbscreenshotcontroller.h"

namespace
{
struct Rig
{
    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ZBMpvEngine video{ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless};
    ZBPlaybackController controller{&library, &settings, nullptr};
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
    void seriesRunsUntilPlaybackStops_data();
    void seriesRunsUntilPlaybackStops();
    void trackChangeEndsSeriesUnlessKept_data();
    void trackChangeEndsSeriesUnlessKept();

private:
    QString shot(const QString &track, const QString &file = QString()) const
    {
        return QDir::cleanPath(m_rig->dir.filePath("shots/" + track + " screenshots/" + file));
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
    ZBItemList list;
    for (const QString name : {"a", "b"})
        list << m_rig->library.itemByUUID(m_rig->library.addItemToLibrarybyName(
            name, nvktest::MediaFactory::clip({QStringLiteral("mp4"), 4.0 + list.size()}), "", "mp4", 0, 0, 0,
            QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_rig->controller.setCurrentList(list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
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
    m_rig->settings.option_alwaysStartCapturingFromFirstFrame = fromFirstFrame;
    ZBScreenshotController &shots = m_rig->shots;
    QSignalSpy saved(&shots, &ZBScreenshotController::shotSaved);
    QSignalSpy finished(&shots, &ZBScreenshotController::seriesFinished);
    // A single shot with nothing loaded starts the selection first.
    shots.makeScreenShot();
    QTRY_COMPARE_WITH_TIMEOUT(saved.size(), 1, 10000);
    QCOMPARE(saved.first(), (QVariantList{shot("a", "screenshot.tiff"), shot("a"), 0}));
    QCOMPARE(shots.ledCaption(), QStringLiteral("Screenshot saved"));
    m_rig->controller.seekSliderMoved(2.5);
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->video.currentTime() >= 2.5, 10000);
    shots.seriesButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(shots.shotCount() >= 1, 10000);
    QCOMPARE(m_rig->video.currentTime() < 2.0, fromFirstFrame);
    QTRY_VERIFY_WITH_TIMEOUT(shots.shotCount() >= 3, 10000);
    QCOMPARE(shots.ledCaption().left(11), QStringLiteral("Every 0.2 s"));
    m_rig->controller.stopPlayback();
    QVERIFY(!shots.isSeriesInProgress());
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toString(), shot("a"));
    for (const char *file : {"screenshot2.tiff", "screenshot3.tiff", "screenshot4.tiff"})
        QCOMPARE(QImageReader(shot("a", file)).format(), QByteArray("tiff"));
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
    m_rig->settings.option_keepCapturingToNextTrackInPlaylist = keep;
    m_rig->shots.seriesButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->shots.shotCount() >= 1, 10000);
    m_rig->controller.buttonNextClick();
    QCOMPARE(m_rig->shots.isSeriesInProgress(), keep);
    if (keep)
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(shot("b", "screenshot.tiff")), 10000);
}

QTEST_MAIN(TestZBScreenshotController)
#include "tst_zbscreenshotcontroller.moc"
