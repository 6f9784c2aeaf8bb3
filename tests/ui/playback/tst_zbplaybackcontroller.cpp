#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include "engines/unsupported/zbunsupportedengine.h"
#include "engines/zbplaybackengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/testsupport.h"
#include "ui/playback/scriptedui.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplaybackui.h"

namespace
{
// An engine whose clock the test moves by hand. A file plays when its first
// line is its length in seconds; anything else is refused.
template <int Kind>
class ManualEngine : public ZBPlaybackEngine
{
public:
    int engineCode() const override { return Kind; }
    bool usesFrames() const override { return Kind == FlashMovie; }
    bool canInitWithFile(const QString &path) override { return lengthOf(path) > 0; }
    void load(const QString &path) override
    {
        ++loads;
        m_total = lengthOf(path);
        m_current = 0;
        m_loaded = m_total > 0;
        m_playing = false;
        QMetaObject::invokeMethod(
            this, [this]() { m_loaded ? Q_EMIT loaded() : Q_EMIT loadFailed(QStringLiteral("not a movie")); },
            Qt::QueuedConnection);
    }
    void stop() override { m_loaded = m_playing = false, m_current = -1, m_total = 0; }
    void play() override { m_playing = m_loaded; }
    void pause() override { m_playing = false; }
    bool isLoaded() const override { return m_loaded; }
    bool isPlaying() const override { return m_playing; }
    double currentTime() const override { return m_current; }
    double totalTime() const override { return m_total; }
    void seek(double position) override { m_current = std::clamp(position, 0.0, m_total); }
    void setVolume(int volume) override { m_volume = std::clamp(volume, 0, 100); }
    int volume() const override { return m_volume; }
    QSize naturalSize() const override { return {}; }
    QWidget *view() override { return nullptr; }
    QImage snapshot() override { return {}; }

    void advance(double seconds)
    {
        if (!m_playing || m_current >= m_total)
            return;
        m_current = std::min(m_total, m_current + seconds);
        if (m_current >= m_total)
            Q_EMIT endReached();
    }

    int loads = 0;

private:
    static double lengthOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed().toDouble() : 0;
    }

    double m_current = -1;
    double m_total = 0;
    bool m_loaded = false;
    bool m_playing = false;
    int m_volume = 100;
};

// One test's library, engines and controller, built fresh for each test.
struct Rig
{
    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ScriptedUi ui;
    ManualEngine<ZBPlaybackEngine::VideoMovie> video;
    ManualEngine<ZBPlaybackEngine::RealMedia> real;
    ZBUnsupportedEngine silverlight{ZBPlaybackEngine::Silverlight, QStringLiteral("no Silverlight here")};
    ZBPlaybackController controller{&library, &settings, &ui};
    ZBItemList list;
};

} // namespace

class TestZBPlaybackController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void startingATrackUpdatesTheLibrary();
    void playPausesAndResumesWhileTheTableRestarts();
    void endOfTrackFollowsTheRepeatMode_data();
    void endOfTrackFollowsTheRepeatMode();
    void chosenUnplayableTrackShowsWhy_data();
    void chosenUnplayableTrackShowsWhy();
    void missingFileChosenByTheUser();
    void holdToSeekAndClick();
    void timeLabelAndSlider();
    void movieSeekBackIsNoLoop();
    void volumeControls();

private:
    ZBItem *addTrack(const QString &name, const QString &content, const QString &type = QStringLiteral("mp4"));
    void startList(int row = 0);
    QString playing() const { return m_rig->controller.playingItem() ? m_rig->controller.playingItem()->Name() : ""; }
    // Lets queued loads arrive and the timer tick once.
    void settle() { QCoreApplication::processEvents(), QCoreApplication::processEvents(); }

    std::unique_ptr<Rig> m_rig;
};

void TestZBPlaybackController::init()
{
    m_rig = std::make_unique<Rig>();
    QVERIFY(m_rig->library.openStore(m_rig->dir.path()).ok);
    m_rig->library.initLibrary();
    m_rig->controller.setEngine(ZBPlaybackEngine::VideoMovie, &m_rig->video);
    m_rig->controller.setEngine(ZBPlaybackEngine::RealMedia, &m_rig->real);
    m_rig->controller.setEngine(ZBPlaybackEngine::Silverlight, &m_rig->silverlight);
}

ZBItem *TestZBPlaybackController::addTrack(const QString &name, const QString &content, const QString &type)
{
    const QString path = m_rig->dir.filePath(name + QLatin1Char('.') + type);
    QFile file(path);
    if (!content.isNull() && (!file.open(QIODevice::WriteOnly) || file.write(content.toUtf8() + '\n') < 0))
        return nullptr;
    ZBItem *item = m_rig->library.itemByUUID(m_rig->library.addItemToLibrarybyName(
        name, path, QStringLiteral(""), type, 0, 0, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_rig->list << item;
    return item;
}

void TestZBPlaybackController::startList(int row)
{
    m_rig->controller.setCurrentList(m_rig->list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(row);
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
    settle();
}

void TestZBPlaybackController::startingATrackUpdatesTheLibrary()
{
    ZBItem *two = addTrack("two", "3");
    // As a track that came without a count.
    two->setPlayCount(std::nullopt);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    startList();
    QCOMPARE(m_rig->controller.playingItem(), two);
    QCOMPARE(two->PlayCount(), std::optional<qint32>(1));
    QCOMPARE(two->Length(), std::optional<qint32>(3));
    QCOMPARE(two->isValid(), std::optional<bool>(true));
    QVERIFY(two->LastPlayed() >= before);
    // Saved, not just changed in memory.
    QVERIFY(!m_rig->library.managedObjectContext()->hasChanges());
}

void TestZBPlaybackController::playPausesAndResumesWhileTheTableRestarts()
{
    ZBItem *one = addTrack("one", "100");
    startList();
    m_rig->video.advance(10);
    m_rig->controller.play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(!m_rig->controller.isPlaying());
    m_rig->controller.play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(m_rig->controller.isPlaying());
    QCOMPARE(m_rig->video.currentTime(), 10.0);

    // A double-click starts the track again from the start.
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
    settle();
    QCOMPARE(m_rig->video.loads, 2);
    QCOMPARE(one->PlayCount(), std::optional<qint32>(2));

    // After the stop command, play starts the selection afresh.
    m_rig->controller.stopPlayback();
    m_rig->controller.play_video(ZBPlaybackController::Sender::PlayButton);
    settle();
    QCOMPARE(m_rig->video.loads, 3);
}

void TestZBPlaybackController::endOfTrackFollowsTheRepeatMode_data()
{
    QTest::addColumn<int>("repeat");
    QTest::addColumn<QStringList>("played");
    QTest::newRow("none") << 0 << QStringList{"a", "b"};
    QTest::newRow("all") << 1 << QStringList{"a", "b", "a", "b", "a"};
    QTest::newRow("one") << 2 << QStringList{"a", "a", "a", "a", "a"};
}

void TestZBPlaybackController::endOfTrackFollowsTheRepeatMode()
{
    QFETCH(int, repeat);
    QFETCH(QStringList, played);
    // A missing file and one no engine plays are passed over without a word,
    // whether the play button lands on them or the list runs into them.
    ZBItem *gone = addTrack("gone", QString());
    addTrack("app", "5", "xap");
    addTrack("a", "5");
    addTrack("b", "5");
    QSignalSpy logo(&m_rig->controller, &ZBPlaybackController::logoRequested);
    m_rig->controller.setCurrentList(m_rig->list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
    m_rig->controller.play_video(ZBPlaybackController::Sender::PlayButton);
    m_rig->controller.timercallback();
    settle();
    m_rig->controller.setRepeat(repeat);
    QStringList seen;
    for (int i = 0; i < 5 && m_rig->controller.playingItem(); ++i)
    {
        seen << playing();
        m_rig->video.advance(5);
        m_rig->controller.timercallback();
        settle();
    }
    QCOMPARE(seen, played);
    QCOMPARE(m_rig->controller.isPlaying(), repeat != 0);
    QCOMPARE(logo.isEmpty(), repeat != 0);
    QCOMPARE(gone->isValid(), std::optional<bool>(false));
    QVERIFY(m_rig->ui.asked.isEmpty());
    QVERIFY(m_rig->ui.cannotPlay.isEmpty());
}

void TestZBPlaybackController::chosenUnplayableTrackShowsWhy_data()
{
    // Each row is named for the file's type.
    QTest::addColumn<QString>("reason");
    QTest::addColumn<QStringList>("cannotPlay");
    QTest::addColumn<QStringList>("realRefused");
    const QStringList twice{"junk", "junk"};
    QTest::newRow("mp4") << "" << twice << QStringList();
    QTest::newRow("xap") << "no Silverlight here" << twice << QStringList();
    // Told never to ask again, the second time gets the plain alert.
    QTest::newRow("rm") << "" << QStringList{"junk"} << QStringList{"junk"};
}

void TestZBPlaybackController::chosenUnplayableTrackShowsWhy()
{
    QFETCH(QString, reason);
    QFETCH(QStringList, cannotPlay);
    QFETCH(QStringList, realRefused);
    addTrack("junk", "not a movie", QTest::currentDataTag());
    m_rig->ui.neverAskAgain = true;
    startList();
    startList();
    QCOMPARE(m_rig->ui.cannotPlay, cannotPlay);
    QCOMPARE(m_rig->ui.realRefused, realRefused);
    QCOMPARE(m_rig->ui.reasons.last(), reason);
    QVERIFY(!m_rig->controller.isPlaying());
}

void TestZBPlaybackController::missingFileChosenByTheUser()
{
    ZBItem *gone = addTrack("gone", QString());
    ZBItem *other = addTrack("other", "5");
    startList(0);
    QCOMPARE(m_rig->ui.asked, QStringList({"gone"}));
    QCOMPARE(gone->isValid(), std::optional<bool>(false));

    // Find: the chosen file becomes the track's and plays.
    const QString found = addTrack("found", "7")->Path();
    m_rig->list.removeLast();
    m_rig->ui.missingChoice = ZBPlaybackUi::MissingTrackChoice::Find;
    m_rig->ui.locatedPath = found;
    startList(0);
    settle();
    QCOMPARE(gone->Path(), found);
    QCOMPARE(m_rig->controller.playingItem(), gone);

    // Delete: the track leaves the library and the lists.
    m_rig->controller.stopPlayback();
    QVERIFY(QFile::remove(found));
    m_rig->ui.missingChoice = ZBPlaybackUi::MissingTrackChoice::Delete;
    const QString uuid = gone->ItemUUID();
    startList(0);
    QVERIFY(!m_rig->library.itemByUUID(uuid));
    QCOMPARE(m_rig->controller.currentList(), ZBItemList({other}));
}

void TestZBPlaybackController::holdToSeekAndClick()
{
    addTrack("a", "200");
    addTrack("b", "60");
    startList();
    m_rig->video.advance(10);
    m_rig->controller.timercallback();
    // Held for well over half a second: every firing moves two seconds and
    // the track stays when the button is let go.
    // The firings come without a turn of the event loop in between, as they
    // would from a button that keeps firing: a slow machine cannot make the
    // release timer run early and turn the hold into a click.
    for (int i = 0; i < 30; ++i)
    {
        m_rig->controller.holdOnButtonNext();
        QThread::msleep(25);
    }
    QCOMPARE(m_rig->video.currentTime(), 70.0);
    QTest::qWait(250);
    QCOMPARE(playing(), QStringLiteral("a"));

    // A click on previous at the first track seeks back and goes nowhere.
    m_rig->controller.holdOnButtonPrev();
    QCOMPARE(m_rig->video.currentTime(), 68.0);
    QTest::qWait(250);
    QCOMPARE(playing(), QStringLiteral("a"));

    // A click on next moves to the next track.
    m_rig->controller.holdOnButtonNext();
    QTRY_COMPARE_WITH_TIMEOUT(playing(), QStringLiteral("b"), 2000);
    // Paused, a hold past the end of b ends the list all the same.
    settle();
    m_rig->controller.timercallback();
    m_rig->controller.play_video(ZBPlaybackController::Sender::PlayButton);
    for (int i = 0; i < 31; ++i)
        m_rig->controller.holdOnButtonNext();
    QVERIFY(!m_rig->controller.playingItem());
}

void TestZBPlaybackController::timeLabelAndSlider()
{
    addTrack("long", "3700");
    QSignalSpy spy(&m_rig->controller, &ZBPlaybackController::timeChanged);
    startList();
    m_rig->video.advance(3599.4);
    m_rig->controller.timercallback();
    QCOMPARE(spy.last(), QVariantList({QStringLiteral("59:59/01:01:40"), 3599, 3700}));
    m_rig->controller.seekSliderMoved(100);
    QCOMPARE(m_rig->video.currentTime(), 100.0);
    QTRY_COMPARE(spy.last().at(0).toString(), QStringLiteral("01:40/01:01:40"));
    m_rig->controller.stopPlaying();
    QCOMPARE(spy.last().at(0).toString(), QStringLiteral("00:00"));
}

void TestZBPlaybackController::movieSeekBackIsNoLoop()
{
    ManualEngine<ZBPlaybackEngine::FlashMovie> movie;
    m_rig->controller.setEngine(ZBPlaybackEngine::FlashMovie, &movie);
    addTrack("movie", "100", "swf");
    startList();
    movie.advance(50);
    m_rig->controller.timercallback();
    m_rig->controller.seekSliderMoved(10);
    QTest::qWait(600);
    QVERIFY(m_rig->controller.playingItem());
}

void TestZBPlaybackController::volumeControls()
{
    m_rig->controller.volumeAction(95);
    m_rig->controller.volumeUp();
    QCOMPARE(m_rig->video.volume(), 100);
    m_rig->controller.volumeAction(60);
    m_rig->controller.mute();
    QCOMPARE(m_rig->real.volume(), 0);
    m_rig->controller.mute();
    // Volume Up while muted lifts the mute and steps from the old volume.
    m_rig->controller.mute();
    m_rig->controller.volumeUp();
    QCOMPARE(m_rig->controller.volume(), 70);
    QVERIFY(!m_rig->controller.isMuted());
    QCOMPARE(m_rig->settings.programVolume, 0.7);
}

QTEST_MAIN(TestZBPlaybackController)
#include "tst_zbplaybackcontroller.moc"
