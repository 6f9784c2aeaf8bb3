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

// Flash tracks played by the playback controller through the real Flash
// engine: how a movie's end is recognised, FSCommands, refusals and what the
// library learns.
class TestZBFlashPlayback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void endRulesMoveThePlayListOn_data();
    void endRulesMoveThePlayListOn();
    void withoutARuleThatFitsAMoviePlaysOn_data();
    void withoutARuleThatFitsAMoviePlaysOn();
    void completePlayMovesOnOrRepeats();
    void framesLengthSeekAndCommands();
    void damagedMovieShowsTheCannotPlayAlert();
    void capturedPackagePlaysItsBaseMovie();

private:
    ZBItem *addMovie(const QString &name, const CounterMovieOptions &options);
    void start(int row = 0);
    QString playingName() const;
    void setRules(bool lastFrame, bool decreased, bool staying, int stayingSeconds = 1);

    ZBFlashView *m_view = nullptr;
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBSettings> m_settings;
    std::unique_ptr<ScriptedUi> m_ui;
    std::unique_ptr<ZBFlashEngine> m_engine;
    std::unique_ptr<ZBPlaybackController> m_controller;
    ZBItemList m_list;
};

void TestZBFlashPlayback::initTestCase()
{
    m_view = new ZBFlashView;
    m_view->resize(400, 300);
    m_view->show();
    QSignalSpy warmed(m_view, &ZBFlashView::warmed);
    m_view->warmUp();
    QVERIFY(warmed.wait(30000));
}

void TestZBFlashPlayback::cleanupTestCase()
{
    delete m_view;
}

void TestZBFlashPlayback::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_settings = std::make_unique<ZBSettings>();
    m_ui = std::make_unique<ScriptedUi>();
    m_engine = std::make_unique<ZBFlashEngine>(ZBPlaybackEngine::FlashMovie, m_view);
    m_controller = std::make_unique<ZBPlaybackController>(m_library.get(), m_settings.get(), m_ui.get());
    m_controller->setEngine(ZBPlaybackEngine::FlashMovie, m_engine.get());
    m_list.clear();
}

void TestZBFlashPlayback::cleanup()
{
    m_controller.reset();
    m_engine.reset();
    m_library.reset();
}

ZBItem *TestZBFlashPlayback::addMovie(const QString &name, const CounterMovieOptions &options)
{
    const QString path = m_dir->filePath(name + QStringLiteral(".swf"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return nullptr;
    file.write(nvktest::makeCounterMovie(options));
    file.close();
    ZBItem *item = m_library->itemByUUID(m_library->addItemToLibrarybyName(
        name, path, QString(), QStringLiteral("swf"), 0, 0, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_list << item;
    return item;
}

void TestZBFlashPlayback::start(int row)
{
    m_controller->setCurrentList(m_list, m_library->allTracksUUID());
    m_controller->setSelectedRow(row);
    m_controller->play_video(ZBPlaybackController::Sender::TrackTable);
}

QString TestZBFlashPlayback::playingName() const
{
    ZBItem *item = m_controller->playingItem();
    return item && m_controller->isPlaying() ? item->Name() : QString();
}

void TestZBFlashPlayback::setRules(bool lastFrame, bool decreased, bool staying, int stayingSeconds)
{
    m_settings->option_gotoIfLastFrameIsMet = lastFrame;
    m_settings->option_gotoIfFrameNumberWasDecreased = decreased;
    m_settings->option_gotoIfStayOnTheSameFrameMore = staying;
    m_settings->option_gotoStayingTimeValue = stayingSeconds;
}

void TestZBFlashPlayback::endRulesMoveThePlayListOn_data()
{
    QTest::addColumn<int>("ending");
    QTest::addColumn<bool>("lastFrame");
    QTest::addColumn<bool>("decreased");
    QTest::addColumn<bool>("staying");
    // Each rule alone, on a movie it is there for: a movie that stops on its
    // last frame ends by the last-frame rule, or (with that rule off) by
    // standing on one frame too long; one that loops, by its frame number
    // going down.
    QTest::newRow("stops on the last frame") << int(Ending::Stop) << true << false << false;
    QTest::newRow("loops") << int(Ending::Loop) << false << true << false;
    QTest::newRow("stands still") << int(Ending::Stop) << false << false << true;
}

void TestZBFlashPlayback::endRulesMoveThePlayListOn()
{
    QFETCH(int, ending);
    QFETCH(bool, lastFrame);
    QFETCH(bool, decreased);
    QFETCH(bool, staying);
    setRules(lastFrame, decreased, staying, 1);
    CounterMovieOptions first;
    first.frameCount = 12;
    first.ending = Ending(ending);
    CounterMovieOptions second;
    second.frameCount = 600;
    addMovie(QStringLiteral("first"), first);
    addMovie(QStringLiteral("second"), second);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("first"), 10000);
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("second"), 10000);
    QTRY_VERIFY_WITH_TIMEOUT(m_controller->currentTime() > 2, 5000);
}

void TestZBFlashPlayback::withoutARuleThatFitsAMoviePlaysOn_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<int>("ending");
    QTest::addColumn<bool>("rulesOn");
    QTest::newRow("stops, every rule off") << 6 << int(Ending::Stop) << false;
    QTest::newRow("loops, every rule off") << 6 << int(Ending::Loop) << false;
    // Its only frame is its last, and its frame number never goes down.
    QTest::newRow("one frame") << 1 << int(Ending::Loop) << true;
}

void TestZBFlashPlayback::withoutARuleThatFitsAMoviePlaysOn()
{
    QFETCH(int, frames);
    QFETCH(int, ending);
    QFETCH(bool, rulesOn);
    setRules(rulesOn, rulesOn, false);
    CounterMovieOptions options;
    options.frameCount = frames;
    options.ending = Ending(ending);
    addMovie(QStringLiteral("forever"), options);
    addMovie(QStringLiteral("never"), options);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("forever"), 10000);
    // At 24 frames per second it has looped or stood still a good while.
    QTest::qWait(1500);
    QCOMPARE(playingName(), QStringLiteral("forever"));
    QCOMPARE(m_controller->totalTime(), double(frames));
}

void TestZBFlashPlayback::completePlayMovesOnOrRepeats()
{
    setRules(false, false, false);
    CounterMovieOptions talking;
    talking.frameCount = 8;
    talking.ending = Ending::FsCommandThenStop;
    CounterMovieOptions other;
    other.frameCount = 600;
    ZBItem *first = addMovie(QStringLiteral("talking"), talking);
    addMovie(QStringLiteral("other"), other);

    // Repeat one: the same track again, counted again.
    m_controller->setRepeat(ZBPlaySequencer::RepeatOne);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(first->PlayCount().value_or(0), 3, 15000);
    QCOMPARE(playingName(), QStringLiteral("talking"));

    m_controller->setRepeat(ZBPlaySequencer::RepeatNone);
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("other"), 10000);
}

void TestZBFlashPlayback::framesLengthSeekAndCommands()
{
    setRules(false, false, false);
    CounterMovieOptions options;
    options.frameCount = 600;
    ZBItem *item = addMovie(QStringLiteral("long"), options);
    // Nothing plays: a length has nowhere to go.
    m_controller->flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("93.7"));
    QSignalSpy times(m_controller.get(), &ZBPlaybackController::timeChanged);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("long"), 10000);
    QCOMPARE(item->Length(), std::optional<qint32>(600));
    QVERIFY(item->isValid().value_or(false));
    QTRY_VERIFY_WITH_TIMEOUT(times.size() > 5, 5000);
    // Frames shown from 1; the slider runs over frames 0..599.
    const QList<QVariant> last = times.last();
    QCOMPARE(last.at(0).toString(), QStringLiteral("%1/600").arg(last.at(1).toInt() + 1));
    QCOMPARE(last.at(2).toInt(), 599);

    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    QVERIFY(!m_controller->isPlaying());
    m_controller->seekSliderMoved(300);
    QTRY_COMPARE_WITH_TIMEOUT(m_engine->currentTime(), 300.0, 3000);
    QTRY_COMPARE_WITH_TIMEOUT(
        nvktest::counterMovieFrameForColour(m_view->snapshot().pixelColor(m_view->width() / 2, m_view->height() / 2)),
        300 % nvktest::CounterMoviePaletteSize, 3000);
    m_controller->play_video(ZBPlaybackController::Sender::PlayButton);
    QTRY_VERIFY_WITH_TIMEOUT(m_engine->currentTime() > 305, 3000);

    // A stream reports its length; not a number, or a command nobody knows,
    // changes nothing.
    QSignalSpy changed(m_controller.get(), &ZBPlaybackController::trackChanged);
    m_controller->flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("93.7"));
    QCOMPARE(item->Length(), std::optional<qint32>(93));
    QCOMPARE(changed.size(), 1);
    m_controller->flashView_invokeFSCommand(QStringLiteral("setTotalTime"), QStringLiteral("soon"));
    m_controller->flashView_invokeFSCommand(QStringLiteral("quit"), QString());
    QCOMPARE(item->Length(), std::optional<qint32>(93));
    QCOMPARE(playingName(), QStringLiteral("long"));
    // The length is in the library, not only on the object.
    ZBLibraryController reopened;
    QVERIFY(reopened.openStore(m_dir->path()).ok);
    QVERIFY(reopened.itemByUUID(item->ItemUUID()));
    QCOMPARE(reopened.itemByUUID(item->ItemUUID())->Length(), std::optional<qint32>(93));

    // The start screen's tutorial button.
    m_settings->showTutorial = QStringLiteral("show");
    m_controller->flashView_callFunction(QStringLiteral("onChangePlayerMode"), {QStringLiteral("hide")});
    QCOMPARE(m_settings->showTutorial, QStringLiteral("hide"));
    m_controller->flashView_callFunction(QStringLiteral("onChangePlayerMode"), {});
    m_controller->flashView_callFunction(QStringLiteral("somethingElse"), {QStringLiteral("show")});
    QCOMPARE(m_settings->showTutorial, QStringLiteral("hide"));
}

void TestZBFlashPlayback::damagedMovieShowsTheCannotPlayAlert()
{
    CounterMovieOptions options;
    ZBItem *item = addMovie(QStringLiteral("broken"), options);
    QFile file(item->Path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.resize(file.size() / 2));
    file.close();
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_ui->cannotPlay, QStringList{QStringLiteral("broken")}, 5000);
    QVERIFY(!m_controller->isPlaying());
    QCOMPARE(m_controller->playingItem(), nullptr);
    // The file is there; it is its contents that fail.
    QVERIFY(m_ui->asked.isEmpty());
}

void TestZBFlashPlayback::capturedPackagePlaysItsBaseMovie()
{
    setRules(false, false, false);
    // The track's own file is the captured page; its movie is a resource.
    CounterMovieOptions options;
    options.frameCount = 77;
    ZBItem *item = addMovie(QStringLiteral("page"), options);
    const QString moviePath = m_dir->filePath(QStringLiteral("package/movie.swf"));
    QVERIFY(QDir().mkpath(QFileInfo(moviePath).absolutePath()));
    QFile movie(moviePath);
    QVERIFY(movie.open(QIODevice::WriteOnly));
    options.frameCount = 55;
    movie.write(nvktest::makeCounterMovie(options));
    movie.close();
    m_library->addResourceWithPath(m_dir->filePath(QStringLiteral("package/other.xml")), false, item);
    m_library->addResourceWithPath(moviePath, true, item);
    QCOMPARE(m_controller->flashMoviePath(item), moviePath);
    start();
    QTRY_COMPARE_WITH_TIMEOUT(playingName(), QStringLiteral("page"), 10000);
    QCOMPARE(m_engine->totalTime(), 55.0);

    // A base movie that has gone is a missing track, not a damaged one.
    m_controller->stopPlayback();
    QVERIFY(QFile::remove(moviePath));
    m_ui->missingChoice = ScriptedUi::MissingTrackChoice::DoNothing;
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_ui->asked, QStringList{QStringLiteral("page")}, 5000);
    QVERIFY(m_ui->cannotPlay.isEmpty());
}

NVK_FLASH_TEST_MAIN(TestZBFlashPlayback)
#include "tst_zbflashplayback.moc"
