#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/flashmovies.h"
#include "support/flashtestmain.h"
#include "support/testsupport.h"
#include "ui/playback/scriptedui.h"
#include "ui/playback/zbplaybackcontroller.h"

using nvktest::CounterMovieOptions;
using Ending = nvktest::CounterMovieOptions::Ending;

namespace
{
bool writeMovie(const QString &path, int frames, Ending ending = Ending::Loop)
{
    nvktest::CounterMovieOptions options;
    options.frameCount = frames;
    options.ending = ending;
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).absolutePath()) && file.open(QIODevice::WriteOnly) &&
           file.write(nvktest::makeCounterMovie(options)) > 0;
}

// One test's library and controller on the shared view, built fresh for each.
struct Rig
{
    explicit Rig(ZBFlashView *shared)
        : view(shared)
    {
    }

    ZBFlashView *view;
    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ScriptedUi ui;
    ZBFlashEngine engine{ZBPlaybackEngine::FlashMovie, view};
    ZBPlaybackController controller{&library, &settings, &ui};
    ZBItemList list;
};
} // namespace

// Flash tracks played by the playback controller through the real Flash
// engine: how a movie's end is recognised, FSCommands, refusals and what the
// library learns.
class TestZBFlashPlayback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void endRulesDecideWhenTheListMovesOn_data();
    void endRulesDecideWhenTheListMovesOn();
    void completePlayMovesOnOrRepeats();
    void framesLengthSeekAndCommands();
    void packagesPlayTheirBaseMovieAndBrokenOnesAreRefused();

private:
    ZBItem *addMovie(const QString &name, int frames, Ending ending = Ending::Loop);
    void start();
    QString playingName() const;

    std::unique_ptr<ZBFlashView> m_view;
    std::unique_ptr<Rig> m_rig;
};

void TestZBFlashPlayback::initTestCase()
{
    m_view = std::make_unique<ZBFlashView>();
    m_view->resize(400, 300);
    m_view->show();
    QSignalSpy warmed(m_view.get(), &ZBFlashView::warmed);
    m_view->warmUp();
    QVERIFY(warmed.wait(30000));
}

void TestZBFlashPlayback::init()
{
    m_rig.reset();
    m_rig.reset(new Rig(m_view.get()));
    QVERIFY(m_rig->library.openStore(m_rig->dir.path()).ok);
    m_rig->library.initLibrary();
    m_rig->controller.setEngine(ZBPlaybackEngine::FlashMovie, &m_rig->engine);
    // No end rule unless a test names it.
    m_rig->settings.option_gotoIfLastFrameIsMet = false;
    m_rig->settings.option_gotoIfFrameNumberWasDecreased = false;
    m_rig->settings.option_gotoIfStayOnTheSameFrameMore = false;
}

ZBItem *TestZBFlashPlayback::addMovie(const QString &name, int frames, Ending ending)
{
    const QString path = m_rig->dir.filePath(name + QStringLiteral(".swf"));
    if (!writeMovie(path, frames, ending))
        return nullptr;
    ZBItem *item = m_rig->library.itemByUUID(
        m_rig->library.addItemToLibrarybyName(name, path, QString(), QStringLiteral("swf"), 0, 0, 0,
                                              QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_rig->list << item;
    return item;
}

void TestZBFlashPlayback::start()
{
    m_rig->controller.setCurrentList(m_rig->list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
}

QString TestZBFlashPlayback::playingName() const
{
    ZBItem *item = m_rig->controller.playingItem();
    return item && m_rig->controller.isPlaying() ? item->Name() : QString();
}

void TestZBFlashPlayback::endRulesDecideWhenTheListMovesOn_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("ending");
    // The rules on: the last frame met, the frame number gone down, the
    // same frame for over a second.
    QTest::addColumn<QString>("rules");
    QTest::addColumn<bool>("movesOn");
    // Each rule alone, on a movie it is there for: a movie that stops on its
    // last frame ends by the last-frame rule, or (with that rule off) by
    // standing on one frame too long; one that loops, by its frame number
    // going down. Without a rule that fits, a movie plays on: a one-frame
    // movie's only frame is its last, and its frame number never goes down.
    QTest::newRow("stops on the last frame") << 12 << int(Ending::Stop) << "last" << true;
    QTest::newRow("loops") << 12 << int(Ending::Loop) << "down" << true;
    QTest::newRow("stands still") << 12 << int(Ending::Stop) << "same" << true;
    QTest::newRow("stops, every rule off") << 6 << int(Ending::Stop) << "" << false;
    QTest::newRow("loops, every rule off") << 6 << int(Ending::Loop) << "" << false;
    QTest::newRow("one frame") << 1 << int(Ending::Loop) << "last down" << false;
}

void TestZBFlashPlayback::endRulesDecideWhenTheListMovesOn()
{
    QFETCH(int, frames);
    QFETCH(int, ending);
    QFETCH(QString, rules);
    QFETCH(bool, movesOn);
    m_rig->settings.option_gotoIfLastFrameIsMet = rules.contains(u"last");
    m_rig->settings.option_gotoIfFrameNumberWasDecreased = rules.contains(u"down");
    m_rig->settings.option_gotoIfStayOnTheSameFrameMore = rules.contains(u"same");
    m_rig->settings.option_gotoStayingTimeValue = 1;
    addMovie(QStringLiteral("first"), frames, Ending(ending));
    addMovie(QStringLiteral("second"), 600);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("first"), 10000);
    if (movesOn)
    {
        QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("second"), 10000);
        return;
    }
    // At 24 frames per second it has looped or stood still a good while.
    QTest::qWait(1500);
    QCOMPARE(playingName(), QStringLiteral("first"));
}

void TestZBFlashPlayback::completePlayMovesOnOrRepeats()
{
    ZBItem *first = addMovie(QStringLiteral("talking"), 8, Ending::FsCommandThenStop);
    addMovie(QStringLiteral("other"), 600);

    // Repeat one: the same track again, counted again.
    m_rig->controller.setRepeat(ZBPlaySequencer::RepeatOne);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(first->PlayCount().value_or(0), 3, 15000);
    QCOMPARE(playingName(), QStringLiteral("talking"));

    m_rig->controller.setRepeat(ZBPlaySequencer::RepeatNone);
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("other"), 10000);
}

void TestZBFlashPlayback::framesLengthSeekAndCommands()
{
    ZBItem *item = addMovie(QStringLiteral("long"), 600);
    ZBPlaybackController &controller = m_rig->controller;
    // Nothing plays: a length has nowhere to go.
    controller.flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("93.7"));
    QSignalSpy times(&controller, &ZBPlaybackController::timeChanged);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("long"), 10000);
    QCOMPARE(item->Length(), std::optional<qint32>(600));
    QTRY_VERIFY_WITH_TIMEOUT(times.size() > 5, 5000);
    // Frames shown from 1; the slider runs over frames 0..599.
    QCOMPARE(times.last().at(0).toString(), QStringLiteral("%1/600").arg(times.last().at(1).toInt() + 1));
    QCOMPARE(times.last().at(2).toInt(), 599);

    controller.play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(!controller.isPlaying());
    controller.seekSliderMoved(300);
    QTRY_COMPARE_WITH_TIMEOUT(m_rig->engine.currentTime(), 300.0, 3000);
    QTRY_COMPARE_WITH_TIMEOUT(
        nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(m_view->width() / 2, m_view->height() / 2)),
        300 % nvktest::CounterMoviePaletteSize, 3000);
    controller.play_video(ZBPlaybackController::Sender::PlayButton);
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->engine.currentTime() > 305, 3000);

    // A stream reports its length; not a number, or a command nobody knows,
    // changes nothing. The length is in the library, not only on the object.
    controller.flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("93.7"));
    controller.flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("soon"));
    controller.flashView_invokeFSCommand(QStringLiteral("quit"), QString());
    QCOMPARE(playingName(), QStringLiteral("long"));
    ZBLibraryController reopened;
    QVERIFY(reopened.openStore(m_rig->dir.path()).ok);
    const ZBItem *saved = reopened.itemByUUID(item->ItemUUID());
    QVERIFY(saved && saved->Length() == std::optional<qint32>(93));

    // The start screen's tutorial button.
    m_rig->settings.showTutorial = QStringLiteral("show");
    controller.flashView_callFunction(QStringLiteral("onChangePlayerMode"), {QStringLiteral("hide")});
    controller.flashView_callFunction(QStringLiteral("somethingElse"), {QStringLiteral("show")});
    QCOMPARE(m_rig->settings.showTutorial, QStringLiteral("hide"));
}

void TestZBFlashPlayback::packagesPlayTheirBaseMovieAndBrokenOnesAreRefused()
{
    // The track's own file is the captured page; its movie is a resource.
    ZBItem *item = addMovie(QStringLiteral("page"), 77);
    const QString moviePath = m_rig->dir.filePath(QStringLiteral("package/movie.swf"));
    QVERIFY(writeMovie(moviePath, 55));
    m_rig->library.addResourceWithPath(m_rig->dir.filePath(QStringLiteral("package/other.xml")), false, item);
    m_rig->library.addResourceWithPath(moviePath, true, item);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("page"), 10000);
    QCOMPARE(m_rig->engine.totalTime(), 55.0);

    // A damaged movie gets the alert: the file is there, its contents fail.
    m_rig->controller.stopPlayback();
    QVERIFY(QFile::resize(moviePath, QFileInfo(moviePath).size() / 2));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_rig->ui.cannotPlay, QStringList{QStringLiteral("page")}, 5000);
    QVERIFY(m_rig->ui.asked.isEmpty());

    // A base movie that has gone is a missing track, not a damaged one.
    QVERIFY(QFile::remove(moviePath));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_rig->ui.asked, QStringList{QStringLiteral("page")}, 5000);
    QCOMPARE(m_rig->ui.cannotPlay.size(), 1);
}

NVK_FLASH_TEST_MAIN(TestZBFlashPlayback)
#include "tst_zbflashplayback.moc"
