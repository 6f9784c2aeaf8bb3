#include <QFile>
#include <QSignalSpy>
#include <QTest>

#include "engines/mpv/zbmpvengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/mediafactory.h"
#include "support/testsupport.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbplaybackui.h"

namespace
{
class SilentUi : public ZBPlaybackUi
{
public:
    MissingTrackChoice askAboutMissingTrack(ZBItem *item) override
    {
        asked << item->Name();
        return MissingTrackChoice::DoNothing;
    }
    QString locateTrack(ZBItem *) override { return QString(); }
    void showCannotPlay(ZBItem *item, const QString &) override { cannotPlay << (item ? item->Name() : QString()); }
    bool showRealMediaUnsupported(ZBItem *item, const QString &) override
    {
        cannotPlay << item->Name();
        return false;
    }
    QStringList asked;
    QStringList cannotPlay;
};
} // namespace

// The playback controller with the real video engine, headless, on real
// files of several containers.
class TestZBPlaybackRealMedia : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void playsSeeksAndMovesOn();
    void listAdvancesUnderEachRepeatMode_data();
    void listAdvancesUnderEachRepeatMode();

private:
    ZBItem *add(const QString &name, const QString &path);
    QStringList playedNames(int count, int timeoutMs);

    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBSettings> m_settings;
    SilentUi m_ui;
    std::unique_ptr<ZBMpvEngine> m_video;
    std::unique_ptr<ZBMpvEngine> m_real;
    std::unique_ptr<ZBPlaybackController> m_controller;
    ZBItemList m_list;
};

void TestZBPlaybackRealMedia::initTestCase()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
}

void TestZBPlaybackRealMedia::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_settings = std::make_unique<ZBSettings>();
    m_ui = SilentUi();
    m_video = std::make_unique<ZBMpvEngine>(ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless);
    m_real = std::make_unique<ZBMpvEngine>(ZBPlaybackEngine::RealMedia, ZBMpvEngine::Output::Headless);
    m_controller = std::make_unique<ZBPlaybackController>(m_library.get(), m_settings.get(), &m_ui);
    m_controller->setEngine(ZBPlaybackEngine::VideoMovie, m_video.get());
    m_controller->setEngine(ZBPlaybackEngine::RealMedia, m_real.get());
    m_list.clear();
}

void TestZBPlaybackRealMedia::cleanup()
{
    m_controller.reset();
    m_video.reset();
    m_real.reset();
    m_library.reset();
}

ZBItem *TestZBPlaybackRealMedia::add(const QString &name, const QString &path)
{
    ZBItem *item = m_library->itemByUUID(m_library->addItemToLibrarybyName(
        name, path, QStringLiteral(""), QFileInfo(path).suffix(), 0, 0, 0, QDateTime::currentDateTimeUtc(),
        QDateTime(), QString()));
    m_list << item;
    return item;
}

QStringList TestZBPlaybackRealMedia::playedNames(int count, int timeoutMs)
{
    QStringList names;
    QElapsedTimer timer;
    timer.start();
    QObject guard;
    // One emission with a track per start, the same track again included.
    connect(m_controller.get(), &ZBPlaybackController::playingItemChanged, &guard, [&](ZBItem *item) {
        if (item)
            names << item->Name();
    });
    m_controller->setCurrentList(m_list, m_library->allTracksUUID());
    m_controller->setSelectedRow(0);
    m_controller->play_video(ZBPlaybackController::Sender::TrackTable);
    while (names.size() < count && timer.elapsed() < timeoutMs
           && (m_controller->playingItem() || m_controller->inProgress() || names.isEmpty()))
        QTest::qWait(20);
    return names;
}

void TestZBPlaybackRealMedia::playsSeeksAndMovesOn()
{
    QString error;
    const QString first = nvktest::MediaFactory::clip({QStringLiteral("mp4"), 3.0}, &error);
    QVERIFY2(!first.isEmpty(), qPrintable(error));
    const QString second = nvktest::MediaFactory::clip({QStringLiteral("mkv"), 1.5}, &error);
    QVERIFY2(!second.isEmpty(), qPrintable(error));
    ZBItem *a = add("a", first);
    ZBItem *b = add("b", second);

    m_controller->setCurrentList(m_list, m_library->allTracksUUID());
    m_controller->setSelectedRow(0);
    m_controller->play_video(ZBPlaybackController::Sender::TrackTable);
    QTRY_VERIFY_WITH_TIMEOUT(m_controller->isPlaying(), 10000);
    QCOMPARE(m_controller->playingItem(), a);
    QCOMPARE(a->Length(), std::optional<qint32>(3));
    QCOMPARE(a->PlayCount(), std::optional<qint32>(1));

    // Time moves.
    QTRY_VERIFY_WITH_TIMEOUT(m_controller->currentTime() > 0.3, 5000);

    // A drag of the seek slider lands where it was dropped.
    m_controller->seekSliderMoved(2.0);
    QTRY_VERIFY_WITH_TIMEOUT(std::abs(m_video->currentTime() - 2.0) < 0.25, 5000);

    // The end moves on to the next track, which plays to its own end and stops
    // the list.
    QTRY_COMPARE_WITH_TIMEOUT(m_controller->playingItem(), b, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_controller->playingItem(), 10000);
    QCOMPARE(b->PlayCount(), std::optional<qint32>(1));
    QVERIFY(m_ui.cannotPlay.isEmpty());
}

void TestZBPlaybackRealMedia::listAdvancesUnderEachRepeatMode_data()
{
    QTest::addColumn<int>("repeat");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("none") << 0 << QStringList{"a", "c"};
    QTest::newRow("all") << 1 << QStringList{"a", "c", "a"};
    QTest::newRow("one") << 2 << QStringList{"a", "a"};
}

void TestZBPlaybackRealMedia::listAdvancesUnderEachRepeatMode()
{
    QFETCH(int, repeat);
    QFETCH(QStringList, expected);
    QString error;
    const QString first = nvktest::MediaFactory::clip({QStringLiteral("avi"), 1.0}, &error);
    QVERIFY2(!first.isEmpty(), qPrintable(error));
    const QString third = nvktest::MediaFactory::clip({QStringLiteral("webm"), 1.0}, &error);
    QVERIFY2(!third.isEmpty(), qPrintable(error));
    add("a", first);
    ZBItem *missing = add("b", m_dir->filePath("gone.mp4"));
    add("c", third);
    m_controller->setRepeat(repeat);

    const QStringList played = playedNames(int(expected.size()), 30000);
    QCOMPARE(played.mid(0, expected.size()), expected);
    if (repeat != 2)
        QCOMPARE(missing->isValid(), std::optional<bool>(false));
    QVERIFY(m_ui.asked.isEmpty());
    QVERIFY(m_ui.cannotPlay.isEmpty());
    if (repeat == 0)
        QTRY_VERIFY_WITH_TIMEOUT(!m_controller->playingItem(), 10000);
}

QTEST_MAIN(TestZBPlaybackRealMedia)
#include "tst_zbplaybackrealmedia.moc"
