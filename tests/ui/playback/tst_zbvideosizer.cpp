#include <QFile>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include "engines/flash/zbflashengine.h"
#include "engines/flash/zbflashview.h"
#include "engines/mpv/zbmpvengine.h"
#include "library/zblibrarycontroller.h"
#include "settings/zbsettings.h"
#include "support/flashmovies.h"
#include "support/flashtestmain.h"
#include "support/mediafactory.h"
#include "support/testsupport.h"
#include "ui/playback/scriptedui.h"
#include "ui/playback/zbhudwindow.h"
#include "ui/playback/zbplaybackcontroller.h"
#include "ui/playback/zbvideosizer.h"

namespace
{
constexpr int WaitMs = 20000;

// A library and a controller with the shared Flash view and a headless video
// engine, the sizer on top and the HUD following it.
struct Rig
{
    explicit Rig(ZBFlashView *shared)
        : flash(ZBPlaybackEngine::FlashMovie, shared)
    {
        QObject::connect(&sizer, &ZBVideoSizer::zoomValueChanged, &hud, &ZBHUDWindow::setZoomValue);
    }

    nvktest::DataDir dir;
    ZBLibraryController library;
    ZBSettings settings;
    ScriptedUi ui;
    ZBFlashEngine flash;
    ZBMpvEngine video{ZBPlaybackEngine::VideoMovie, ZBMpvEngine::Output::Headless};
    ZBPlaybackController controller{&library, &settings, &ui};
    ZBVideoSizer sizer{&controller};
    ZBHUDWindow hud;
};
} // namespace

// The HUD's sizing tools on real engines: zoom and fit of a Flash movie, the
// window sized for 1:1, the drag mode, and what a video movie does with them.
class TestZBVideoSizer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void zoomFitAndDragOfAFlashMovie();
    void oneToOneSizesTheWindow();
    void videoMovieAspectAndNoZoom();

private:
    bool play(const QString &path, const QString &type);
    bool playCounterMovie();

    std::unique_ptr<ZBFlashView> m_view;
    std::unique_ptr<Rig> m_rig;
};

void TestZBVideoSizer::initTestCase()
{
    m_view = std::make_unique<ZBFlashView>();
    // Twice the stage of the test movie: fitted, it shows at 200 %.
    m_view->resize(400, 300);
    m_view->show();
    QSignalSpy warmed(m_view.get(), &ZBFlashView::warmed);
    m_view->warmUp();
    QVERIFY2(warmed.wait(30000), "the Flash engine did not start");
}

void TestZBVideoSizer::init()
{
    m_rig.reset();
    m_rig.reset(new Rig(m_view.get()));
    QVERIFY(m_rig->library.openStore(m_rig->dir.path()).ok);
    m_rig->library.initLibrary();
    m_rig->controller.setEngine(ZBPlaybackEngine::FlashMovie, &m_rig->flash);
    m_rig->controller.setEngine(ZBPlaybackEngine::VideoMovie, &m_rig->video);
}

bool TestZBVideoSizer::play(const QString &path, const QString &type)
{
    ZBItem *item = m_rig->library.itemByUUID(m_rig->library.addItemToLibrarybyName(
        type, path, QString(), type, 0, 0, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
    m_rig->controller.setCurrentList({item}, m_rig->library.allTracksUUID());
    m_rig->controller.setSelectedRow(0);
    m_rig->controller.play_video(ZBPlaybackController::Sender::TrackTable);
    return QTest::qWaitFor([this]() { return m_rig->controller.isPlaying(); }, WaitMs);
}

bool TestZBVideoSizer::playCounterMovie()
{
    QFile file(m_rig->dir.filePath(QStringLiteral("counter.swf")));
    return file.open(QIODevice::WriteOnly) && file.write(nvktest::makeCounterMovie()) > 0 && file.flush() &&
           play(file.fileName(), QStringLiteral("swf"));
}

void TestZBVideoSizer::zoomFitAndDragOfAFlashMovie()
{
    QWidget window;
    m_rig->sizer.setHost(&window, &window);
    QVERIFY(playCounterMovie());
    QTRY_COMPARE_WITH_TIMEOUT(m_view->zoomPercent(), 200, 3000);

    m_rig->sizer.zoomSliderMoved(300);
    QCOMPARE(m_view->zoomPercent(), 300);
    QVERIFY(m_rig->sizer.flashViewMustKeepZoom());

    m_rig->sizer.fitButtonClick();
    QVERIFY(!m_rig->sizer.flashViewMustKeepZoom());
    QTRY_COMPARE_WITH_TIMEOUT(m_rig->sizer.currentZoomValue(), 200, 3000);
    QCOMPARE(m_view->zoomPercent(), 200);
    QCOMPARE(m_rig->hud.zoomValueText(), QStringLiteral("200%"));

    // Fitted, the zoom follows the view's size.
    m_view->resize(600, 450);
    QTRY_COMPARE_WITH_TIMEOUT(m_rig->sizer.currentZoomValue(), 300, 3000);
    m_view->resize(400, 300);

    m_rig->sizer.dragButtonClick();
    QVERIFY(m_view->canDrag());
    QCOMPARE(window.cursor().shape(), Qt::OpenHandCursor);
    m_rig->controller.stopPlaying();
    QVERIFY(!m_view->canDrag());
    QCOMPARE(window.cursor().shape(), Qt::ArrowCursor);
}

void TestZBVideoSizer::oneToOneSizesTheWindow()
{
    // The 200 x 150 movie under a 40 px bar, in a window at least 260 wide
    // that starts half off the right edge of the screen.
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addSpacing(40);
    auto *area = new QWidget;
    layout->addWidget(area);
    window.setMinimumSize(260, 0);
    const QRect screen = window.screen()->availableGeometry();
    window.setGeometry(screen.right() - 250, screen.top() + 60, 500, 400);
    window.show();
    m_rig->sizer.setHost(&window, area);

    QVERIFY(playCounterMovie());
    m_rig->sizer.zoomSliderMoved(250);
    m_rig->sizer.oneToOneButtonClick();
    QTRY_COMPARE_WITH_TIMEOUT(window.size(), QSize(260, 190), 3000);
    QCOMPARE(window.geometry().top(), screen.top() + 60);
    QVERIFY(screen.contains(window.frameGeometry()));
    QCOMPARE(m_view->zoomPercent(), 100);
    QCOMPARE(m_rig->sizer.currentZoomValue(), 100);
    QCOMPARE(m_rig->hud.zoomValue(), 100);
}

void TestZBVideoSizer::videoMovieAspectAndNoZoom()
{
    if (!nvktest::MediaFactory::isAvailable())
        QSKIP(qPrintable(nvktest::MediaFactory::unavailableReason()));
    const int flashZoom = m_view->zoomPercent();
    QVERIFY(play(nvktest::MediaFactory::clip(QStringLiteral("mp4")), QStringLiteral("mp4")));

    m_rig->sizer.zoomSliderMoved(300);
    QCOMPARE(m_rig->sizer.currentZoomValue(), 100);
    QCOMPARE(m_rig->hud.zoomValue(), 100);
    QCOMPARE(m_view->zoomPercent(), flashZoom);

    // Stretch and fit reach the core: what it reports back is its own
    // "keepaspect".
    m_rig->sizer.strechButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(!m_rig->video.preservesAspectRatio(), 3000);
    m_rig->sizer.fitButtonClick();
    QTRY_VERIFY_WITH_TIMEOUT(m_rig->video.preservesAspectRatio(), 3000);
}

NVK_FLASH_TEST_MAIN(TestZBVideoSizer)
#include "tst_zbvideosizer.moc"
