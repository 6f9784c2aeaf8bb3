#include <QFileInfo>
#include <QTest>

#include "engines/mpv/zbmpvengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/mediafactory.h"
#include "support/testsupport.h"
#include "ui/playback/scriptedui.h"
#include "ui/playback/zbplaybackcontroller.h"

namespace
{
// One test's library, engines and controller, built fresh for each test.
struct Rig
{
    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ScriptedUi ui;
    ZBMpvEngine video{ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless};
    ZBMpvEngine real{ZBPlaybackEngine::RealMedia, ZBMpvEngine::Output::Headless};
    ZBPlaybackController controller{&library, &settings, &ui};
    ZBItemList list;
};
} // namespace

// The playback controller with the real video engine, headless, on real
// files of several containers.
class TestZBPlaybackRealMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void playsSeeksAndMovesOn();
    void listAdvancesUnderEachRepeatMode_data();
    void listAdvancesUnderEachRepeatMode();

private:
    ZBItem *add(const QString &name, const QString &path);
    void start();

    std::unique_ptr<Rig> m_rig;
};

void TestZBPlaybackRealMedia::init()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    m_rig.reset();
    m_rig = std::make_unique<Rig>();
    QVERIFY(m_rig->library.openStore(m_rig->dir.path()).ok);
    m_rig->library.initLibrary();
    m_rig->controller.setEngine(ZBPlaybackEngine::VideoMovie, &m_rig->video);
    m_rig->controller.setEngine(ZBPlaybackEngine::RealMedia, &m_rig->real);
}

ZBItem *TestZBPlaybackRealMedia::add(const QString &name, const QString &path)
{
    ZBItem *item = m_rig->library.itemByUUID(
        m_rig->library.addItemToLibrarybyName(name, path, QStringLiteral(""), QFileInfo(path).suffix(), 0, 0, 0,
                                              QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_rig->list << item;
    return item;
}

void TestZBPlaybackRealMedia::start()
{
    m_rig->controller.setCurrentList(m_rig->list, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
}

void TestZBPlaybackRealMedia::playsSeeksAndMovesOn()
{
    QString error;
    const QString first = nvktest::MediaFactory::clip({QStringLiteral("mp4"), 3.0}, &error);
    const QString second = nvktest::MediaFactory::clip({QStringLiteral("mkv"), 1.5}, &error);
    QVERIFY2(!first.isEmpty() && !second.isEmpty(), qPrintable(error));
    ZBItem *a = add("a", first);
    ZBItem *b = add("b", second);
    ZBPlaybackController &controller = m_rig->controller;
    start();
    QTRY_VERIFY_WITH_TIMEOUT(controller.isPlaying(), 10000);
    QCOMPARE(controller.playingItem(), a);
    QCOMPARE(a->Length(), std::optional<qint32>(3));
    QCOMPARE(a->PlayCount(), std::optional<qint32>(1));

    // A drag of the seek slider lands where it was dropped.
    controller.seekSliderMoved(2.0);
    QTRY_VERIFY_WITH_TIMEOUT(std::abs(m_rig->video.currentTime() - 2.0) < 0.25, 5000);

    // The end moves on to the next track, which plays to its own end and stops
    // the list.
    QTRY_COMPARE_WITH_TIMEOUT(controller.playingItem(), b, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!controller.playingItem(), 10000);
    QCOMPARE(b->PlayCount(), std::optional<qint32>(1));
}

void TestZBPlaybackRealMedia::listAdvancesUnderEachRepeatMode_data()
{
    QTest::addColumn<int>("repeat");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << 0 << QStringList{"a", "c"};
    QTest::newRow("all") << 1 << QStringList{"a", "c", "a"};
    QTest::newRow("one") << 2 << QStringList{"a", "a"};
}

// A missing file on the way is passed over without a word.
void TestZBPlaybackRealMedia::listAdvancesUnderEachRepeatMode()
{
    QFETCH(int, repeat);
    QFETCH(QStringList, expected);
    QString error;
    const QString first = nvktest::MediaFactory::clip({QStringLiteral("avi"), 1.0}, &error);
    const QString third = nvktest::MediaFactory::clip({QStringLiteral("webm"), 1.0}, &error);
    QVERIFY2(!first.isEmpty() && !third.isEmpty(), qPrintable(error));
    add("a", first);
    ZBItem *missing = add("b", m_rig->dir.filePath("gone.mp4"));
    add("c", third);
    m_rig->controller.setRepeat(repeat);

    // One emission with a track per start, the same track again included.
    QStringList played;
    connect(&m_rig->controller, &ZBPlaybackController::playingItemChanged, &m_rig->controller,
            [&played](ZBItem *item)
            {
                if (item)
                    played << item->Name();
            });
    start();
    QTRY_VERIFY_WITH_TIMEOUT(played.size() >= expected.size(), 30000);
    QCOMPARE(played.mid(0, expected.size()), expected);
    QVERIFY(repeat == 2 || missing->isValid() == std::optional<bool>(false));
    QVERIFY(m_rig->ui.asked.isEmpty() && m_rig->ui.cannotPlay.isEmpty() && m_rig->ui.realRefused.isEmpty());
    if (repeat == 0)
        QTRY_VERIFY_WITH_TIMEOUT(!m_rig->controller.playingItem(), 10000);
}

QTEST_MAIN(TestZBPlaybackRealMedia)
#include "tst_zbplaybackrealmedia.moc"
