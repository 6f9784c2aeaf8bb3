#include <QFile>
#include <QThread>
#include <QSignalSpy>
#include <QTest>

#include "engines/unsupported/zbunsupportedengine.h"
#include "engines/zbplaybackengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/testsupport.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplaybackui.h"
#include "ui/playback/scriptedui.h"

namespace
{
// An engine whose clock the test moves by hand. A file plays when its first
// line is its length in seconds; anything else is refused.
class ManualEngine : public ZBPlaybackEngine
{
public:
    explicit ManualEngine(int code)
        : m_code(code)
    {
    }

    int engineCode() const override { return m_code; }
    bool usesFrames() const override { return m_code == FlashMovie; }
    bool canInitWithFile(const QString &path) override { return lengthOf(path) > 0; }
    void load(const QString &path) override
    {
        ++loads;
        lastLoaded = path;
        m_total = lengthOf(path);
        m_current = 0;
        m_loaded = m_total > 0;
        m_playing = false;
        m_ended = false;
        QMetaObject::invokeMethod(
            this,
            [this]() {
                if (m_loaded)
                    Q_EMIT loaded();
                else
                    Q_EMIT loadFailed(QStringLiteral("not a movie"));
            },
            Qt::QueuedConnection);
    }
    void stop() override
    {
        m_loaded = false;
        m_playing = false;
        m_current = -1;
        m_total = 0;
    }
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
        if (!m_playing)
            return;
        m_current = std::min(m_total, m_current + seconds);
        if (m_current >= m_total && !m_ended)
        {
            m_ended = true;
            Q_EMIT endReached();
        }
    }

    int loads = 0;
    QString lastLoaded;

private:
    static double lengthOf(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        return file.readLine().trimmed().toDouble();
    }

    int m_code;
    double m_current = -1;
    double m_total = 0;
    bool m_loaded = false;
    bool m_playing = false;
    bool m_ended = false;
    int m_volume = 100;
};

} // namespace

class TestZBPlaybackController : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void startingATrackUpdatesTheLibrary();
    void playPausesAndResumesWhileTheTableRestarts();
    void endOfTrackFollowsTheRepeatMode_data();
    void endOfTrackFollowsTheRepeatMode();
    void missingFileOnTheWayIsSkippedSilently();
    void missingFileChosenByTheUser();
    void refusedFileShowsTheAlert();
    void silverlightIsListedButRefused();
    void realMediaRefusalAsksOnceUnlessToldNotTo();
    void holdToSeekAndClick();
    void timeLabelAndSlider();
    void movieSeekBackIsNoLoop();
    void volumeControls();

private:
    ZBItem *addTrack(const QString &name, const QString &content, const QString &type = QStringLiteral("mp4"));
    void startList(int row = 0);
    QStringList names(const ZBItemList &items) const;
    // Lets queued loads arrive and the timer tick once.
    void settle() { QCoreApplication::processEvents(); QCoreApplication::processEvents(); }

    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBSettings> m_settings;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<ManualEngine> m_video;
    std::unique_ptr<ManualEngine> m_real;
    std::unique_ptr<ZBPlaybackController> m_controller;
    ZBItemList m_list;
};

void TestZBPlaybackController::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_settings = std::make_unique<ZBSettings>();
    m_ui = std::make_unique<ScriptedUi>();
    m_video = std::make_unique<ManualEngine>(ZBPlaybackEngine::VideoMovie);
    m_real = std::make_unique<ManualEngine>(ZBPlaybackEngine::RealMedia);
    m_controller = std::make_unique<ZBPlaybackController>(m_library.get(), m_settings.get(), m_ui.get());
    m_controller->setEngine(ZBPlaybackEngine::VideoMovie, m_video.get());
    m_controller->setEngine(ZBPlaybackEngine::RealMedia, m_real.get());
    m_list.clear();
}

void TestZBPlaybackController::cleanup()
{
    m_controller.reset();
    m_library.reset();
}

ZBItem *TestZBPlaybackController::addTrack(const QString &name, const QString &content, const QString &type)
{
    const QString path = m_dir->filePath(name + QLatin1Char('.') + type);
    if (!content.isNull())
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return nullptr;
        file.write(content.toUtf8() + '\n');
    }
    ZBItem *item = m_library->itemByUUID(m_library->addItemToLibrarybyName(
        name, path, QStringLiteral(""), type, 0, 0, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_list << item;
    return item;
}

void TestZBPlaybackController::startList(int row)
{
    m_controller->setCurrentList(m_list, m_library->allTracksUUID());
    m_controller->setSelectedRow(row);
    m_controller->play_video(ZBPlaybackController::Sender::TrackTable);
    settle();
}

QStringList TestZBPlaybackController::names(const ZBItemList &items) const
{
    QStringList result;
    for (const ZBItem *item : items)
        result << item->Name();
    return result;
}

void TestZBPlaybackController::startingATrackUpdatesTheLibrary()
{
    addTrack("one", "42.7");
    ZBItem *two = addTrack("two", "3");
    // As a track that came without a count.
    two->setPlayCount(std::nullopt);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(-1);
    startList(1);
    QVERIFY(m_controller->isPlaying());
    QVERIFY(m_controller->isTimerActive());
    QCOMPARE(m_controller->playingItem(), two);
    QCOMPARE(m_video->lastLoaded, two->Path());
    QVERIFY(m_video->isPlaying());
    QCOMPARE(two->PlayCount(), std::optional<qint32>(1));
    QCOMPARE(two->Length(), std::optional<qint32>(3));
    QCOMPARE(two->isValid(), std::optional<bool>(true));
    QVERIFY(two->LastPlayed() >= before);
    QCOMPARE(m_controller->sequencer().playingCounts(), QList<int>({0, 1}));
    // Saved, not just changed in memory.
    QVERIFY(!m_library->managedObjectContext()->hasChanges());
}

void TestZBPlaybackController::playPausesAndResumesWhileTheTableRestarts()
{
    ZBItem *one = addTrack("one", "100");
    startList();
    m_video->advance(10);
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(!m_controller->isPlaying());
    QVERIFY(!m_video->isPlaying());
    QVERIFY(!m_controller->isTimerActive());
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(m_controller->isPlaying());
    QCOMPARE(m_video->currentTime(), 10.0);
    QCOMPARE(m_video->loads, 1);
    QCOMPARE(one->PlayCount(), std::optional<qint32>(1));

    // A double-click starts the track again from the start.
    m_controller->play_video(ZBPlaybackController::Sender::TrackTable);
    settle();
    QCOMPARE(m_video->loads, 2);
    QCOMPARE(m_video->currentTime(), 0.0);
    QCOMPARE(one->PlayCount(), std::optional<qint32>(2));

    // After the stop command, play starts the selection afresh.
    m_controller->stopPlayback();
    QVERIFY(!m_controller->playingItem());
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    settle();
    QCOMPARE(m_video->loads, 3);
    QVERIFY(m_controller->isPlaying());
}

void TestZBPlaybackController::endOfTrackFollowsTheRepeatMode_data()
{
    QTest::addColumn<int>("repeat");
    QTest::addColumn<QStringList>("played");
    QTest::newRow("none") << 0 << QStringList{"a", "b", "c"};
    QTest::newRow("all") << 1 << QStringList{"a", "b", "c", "a", "b"};
    QTest::newRow("one") << 2 << QStringList{"a", "a", "a", "a", "a"};
}

void TestZBPlaybackController::endOfTrackFollowsTheRepeatMode()
{
    QFETCH(int, repeat);
    QFETCH(QStringList, played);
    addTrack("a", "5");
    addTrack("b", "5");
    addTrack("c", "5");
    m_controller->setRepeat(repeat);
    QSignalSpy logo(m_controller.get(), &ZBPlaybackController::logoRequested);
    startList();
    QStringList seen;
    for (int i = 0; i < 5 && m_controller->playingItem(); ++i)
    {
        seen << m_controller->playingItem()->Name();
        m_video->advance(5);
        m_controller->timercallback();
        settle();
    }
    QCOMPARE(seen, played);
    if (repeat == 0)
    {
        QVERIFY(!m_controller->isPlaying());
        QVERIFY(!m_controller->playingItem());
        QVERIFY(logo.count() >= 1);
    }
    else
    {
        QVERIFY(m_controller->isPlaying());
    }
}

void TestZBPlaybackController::missingFileOnTheWayIsSkippedSilently()
{
    addTrack("a", "5");
    ZBItem *gone = addTrack("b", QString());
    addTrack("c", "5");
    startList();
    m_video->advance(5);
    m_controller->timercallback();
    settle();
    QCOMPARE(m_controller->playingItem()->Name(), QStringLiteral("c"));
    QCOMPARE(gone->isValid(), std::optional<bool>(false));
    QVERIFY(m_ui->asked.isEmpty());
    QVERIFY(m_ui->cannotPlay.isEmpty());
    QCOMPARE(gone->PlayCount(), std::optional<qint32>(0));
    m_controller->stopPlayback();
    m_controller->setSelectedRow(1);
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    m_controller->timercallback();
    QCOMPARE(m_controller->playingItem(), m_list.at(2));
}

void TestZBPlaybackController::missingFileChosenByTheUser()
{
    ZBItem *gone = addTrack("gone", QString());
    ZBItem *other = addTrack("other", "5");

    m_ui->missingChoice = ZBPlaybackUi::MissingTrackChoice::DoNothing;
    startList(0);
    QCOMPARE(m_ui->asked, QStringList({"gone"}));
    QVERIFY(!m_controller->isPlaying());
    QCOMPARE(gone->isValid(), std::optional<bool>(false));

    // Find: the chosen file becomes the track's and plays.
    const QString found = m_dir->filePath("found.mp4");
    {
        QFile file(found);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("7\n");
    }
    m_ui->missingChoice = ZBPlaybackUi::MissingTrackChoice::Find;
    m_ui->locatedPath = found;
    startList(0);
    settle();
    QCOMPARE(gone->Path(), found);
    QCOMPARE(gone->isValid(), std::optional<bool>(true));
    QCOMPARE(m_controller->playingItem(), gone);

    // Delete: the track leaves the library and the lists.
    m_controller->stopPlayback();
    QVERIFY(QFile::remove(found));
    m_ui->missingChoice = ZBPlaybackUi::MissingTrackChoice::Delete;
    const QString uuid = gone->ItemUUID();
    startList(0);
    QVERIFY(!m_library->itemByUUID(uuid));
    QCOMPARE(names(m_controller->currentList()), QStringList({"other"}));
    QVERIFY(!m_controller->sequencer().playbackList().contains(gone));
    QVERIFY(m_library->itemByUUID(other->ItemUUID()));
}

void TestZBPlaybackController::refusedFileShowsTheAlert()
{
    addTrack("junk", "not a movie");
    startList();
    QCOMPARE(m_ui->cannotPlay, QStringList({"junk"}));
    QVERIFY(!m_controller->isPlaying());
    QVERIFY(!m_controller->inProgress());
    QVERIFY(!m_controller->playingItem());
}

void TestZBPlaybackController::silverlightIsListedButRefused()
{
    ZBUnsupportedEngine silverlight(ZBPlaybackEngine::Silverlight, QStringLiteral("no Silverlight here"));
    m_controller->setEngine(ZBPlaybackEngine::Silverlight, &silverlight);
    ZBItem *app = addTrack("app", "5", "xap");
    addTrack("movie", "5");
    QCOMPARE(m_controller->engineCodeForItem(app), int(ZBPlaybackEngine::Silverlight));
    QVERIFY(!m_controller->canInitWithFile(app));
    startList(0);
    QCOMPARE(m_ui->cannotPlay, QStringList({"app"}));
    QVERIFY(m_ui->reasons.last().contains("no Silverlight here"));
    QVERIFY(!m_controller->isPlaying());
    QCOMPARE(m_video->loads, 0);
    // Moving along a list passes over it without a word.
    m_ui->cannotPlay.clear();
    m_controller->setRepeat(ZBPlaySequencer::RepeatAll);
    startList(1);
    m_video->advance(5);
    m_controller->timercallback();
    settle();
    QCOMPARE(m_controller->playingItem()->Name(), QStringLiteral("movie"));
    QVERIFY(m_ui->cannotPlay.isEmpty());
    m_controller->setEngine(ZBPlaybackEngine::Silverlight, nullptr);
}

void TestZBPlaybackController::realMediaRefusalAsksOnceUnlessToldNotTo()
{
    ZBItem *clip = addTrack("clip", "garbage", "rm");
    m_ui->neverAskAgain = true;
    startList();
    QCOMPARE(m_ui->realRefused, QStringList({"clip"}));
    QVERIFY(m_ui->cannotPlay.isEmpty());
    QCOMPARE(clip->isValid(), std::optional<bool>(false));
    QVERIFY(m_settings->option_DontAskMeAgainRealNotFound);
    startList();
    QCOMPARE(m_ui->realRefused.size(), 1);
    QCOMPARE(m_ui->cannotPlay, QStringList({"clip"}));
}

void TestZBPlaybackController::holdToSeekAndClick()
{
    addTrack("a", "200");
    addTrack("b", "60");
    startList();
    m_video->advance(10);
    m_controller->timercallback();
    // Held for well over half a second: every firing moves two seconds and
    // the track stays when the button is let go.
    // The firings come without a turn of the event loop in between, as they
    // would from a button that keeps firing: a slow machine cannot make the
    // release timer run early and turn the hold into a click.
    for (int i = 0; i < 30; ++i)
    {
        m_controller->holdOnButtonNext();
        QThread::msleep(25);
    }
    QCOMPARE(m_video->currentTime(), 70.0);
    QTest::qWait(250);
    QCOMPARE(m_controller->playingItem()->Name(), QStringLiteral("a"));

    // A click on previous at the first track seeks back and goes nowhere.
    m_controller->holdOnButtonPrev();
    QCOMPARE(m_video->currentTime(), 68.0);
    QTest::qWait(250);
    QCOMPARE(m_controller->playingItem()->Name(), QStringLiteral("a"));

    // A click on next moves to the next track.
    m_controller->holdOnButtonNext();
    QTRY_COMPARE_WITH_TIMEOUT(m_controller->playingItem() ? m_controller->playingItem()->Name() : QString(),
                              QStringLiteral("b"), 2000);
    // Paused, a hold past the end of b ends the list all the same.
    settle();
    m_controller->timercallback();
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    for (int i = 0; i < 31; ++i)
        m_controller->holdOnButtonNext();
    QVERIFY(!m_controller->playingItem());
}

void TestZBPlaybackController::timeLabelAndSlider()
{
    addTrack("long", "3700");
    QSignalSpy spy(m_controller.get(), &ZBPlaybackController::timeChanged);
    startList();
    m_video->advance(3599.4);
    m_controller->timercallback();
    QVERIFY(!spy.isEmpty());
    QCOMPARE(spy.last().at(0).toString(), QStringLiteral("59:59/01:01:40"));
    QCOMPARE(spy.last().at(1).toInt(), 3599);
    QCOMPARE(spy.last().at(2).toInt(), 3700);
    m_controller->seekSliderMoved(100);
    QCOMPARE(m_video->currentTime(), 100.0);
    QCOMPARE(spy.last().at(0).toString(), QStringLiteral("59:59/01:01:40"));
    QTRY_COMPARE(spy.last().at(0).toString(), QStringLiteral("01:40/01:01:40"));
    m_controller->stopPlaying();
    QCOMPARE(spy.last().at(0).toString(), QStringLiteral("00:00"));
}

void TestZBPlaybackController::movieSeekBackIsNoLoop()
{
    ManualEngine movie(ZBPlaybackEngine::FlashMovie);
    m_controller->setEngine(ZBPlaybackEngine::FlashMovie, &movie);
    addTrack("movie", "100", "swf");
    startList();
    movie.advance(50);
    m_controller->timercallback();
    m_controller->seekSliderMoved(10);
    QTest::qWait(600);
    QVERIFY(m_controller->playingItem());
}

void TestZBPlaybackController::volumeControls()
{
    m_controller->volumeAction(95);
    m_controller->volumeUp();
    QCOMPARE(m_controller->volume(), 100);
    QCOMPARE(m_video->volume(), 100);
    m_controller->volumeAction(5);
    m_controller->volumeDown();
    QCOMPARE(m_controller->volume(), 0);
    m_controller->volumeAction(60);
    m_controller->mute();
    QVERIFY(m_controller->isMuted());
    QCOMPARE(m_real->volume(), 0);
    m_controller->mute();
    QCOMPARE(m_controller->volume(), 60);
    m_controller->mute();
    m_controller->volumeUp();
    QCOMPARE(m_controller->volume(), 70);
    QVERIFY(!m_controller->isMuted());
    QCOMPARE(m_settings->programVolume, 0.7);
}

QTEST_MAIN(TestZBPlaybackController)
#include "tst_zbplaybackcontroller.moc"
