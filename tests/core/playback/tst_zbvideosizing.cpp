#include <QTest>

#include "playback/zbvideosizing.h"

Q_DECLARE_METATYPE(ZBHudButtons)

namespace
{
// "drag fit stretch 1:1 shot series zoom" by name, for readable rows.
ZBHudButtons buttons(const QString &names)
{
    const QStringList on = names.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    ZBHudButtons result;
    result.drag = on.contains(u"drag");
    result.fit = on.contains(u"fit");
    result.stretch = on.contains(u"stretch");
    result.oneToOne = on.contains(u"1:1");
    result.screenshot = on.contains(u"shot");
    result.series = on.contains(u"series");
    result.zoomSlider = on.contains(u"zoom");
    return result;
}
} // namespace

class TestZBVideoSizing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowSizeForNaturalSize_data();
    void windowSizeForNaturalSize();
    void placeWindowStaysOnTheScreen_data();
    void placeWindowStaysOnTheScreen();
    void hudButtons_data();
    void hudButtons();
};

void TestZBVideoSizing::windowSizeForNaturalSize_data()
{
    QTest::addColumn<QSize>("natural");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("playerArea");
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QSize>("screen");
    QTest::addColumn<QSize>("expected");

    // The main window: 200 px of tree beside the picture, 150 px of list
    // and transport below it.
    QTest::newRow("chrome added") << QSize(640, 360) << QSize(1000, 700) << QSize(800, 550) << QSize(0, 0)
                                  << QSize(1920, 1050) << QSize(840, 510);
    QTest::newRow("detached, no chrome") << QSize(320, 240) << QSize(640, 480) << QSize(640, 480) << QSize(200, 150)
                                         << QSize(1920, 1050) << QSize(320, 240);
    QTest::newRow("larger than the screen clamps") << QSize(3840, 2160) << QSize(1000, 700) << QSize(800, 550)
                                                   << QSize(0, 0) << QSize(1920, 1050) << QSize(1920, 1050);
    QTest::newRow("only too tall") << QSize(800, 1200) << QSize(800, 600) << QSize(800, 600) << QSize(0, 0)
                                   << QSize(1920, 1050) << QSize(800, 1050);
    QTest::newRow("tiny movie stops at the minimum") << QSize(32, 24) << QSize(640, 480) << QSize(640, 480)
                                                     << QSize(200, 150) << QSize(1920, 1050) << QSize(200, 150);
    QTest::newRow("minimum in one direction") << QSize(400, 50) << QSize(640, 480) << QSize(640, 430)
                                              << QSize(200, 150) << QSize(1920, 1050) << QSize(400, 150);
    QTest::newRow("no screen known") << QSize(3000, 2000) << QSize(640, 480) << QSize(640, 480) << QSize(0, 0)
                                     << QSize() << QSize(3000, 2000);
    QTest::newRow("no natural size keeps the window") << QSize() << QSize(640, 480) << QSize(600, 400)
                                                      << QSize(0, 0) << QSize(1920, 1050) << QSize(640, 480);
    QTest::newRow("area larger than window counts no chrome") << QSize(320, 240) << QSize(640, 480)
                                                              << QSize(700, 500) << QSize(0, 0) << QSize(1920, 1050)
                                                              << QSize(320, 240);
}

void TestZBVideoSizing::windowSizeForNaturalSize()
{
    QFETCH(QSize, natural);
    QFETCH(QSize, window);
    QFETCH(QSize, playerArea);
    QFETCH(QSize, minimum);
    QFETCH(QSize, screen);
    QFETCH(QSize, expected);
    QCOMPARE(ZBVideoSizing::windowSizeForNaturalSize(natural, window, playerArea, minimum, screen), expected);
}

void TestZBVideoSizing::placeWindowStaysOnTheScreen_data()
{
    QTest::addColumn<QRect>("window");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QRect>("expected");

    QTest::newRow("room enough keeps the corner") << QRect(100, 80, 400, 300) << QSize(800, 600)
                                                  << QRect(100, 80, 800, 600);
    QTest::newRow("past the right edge moves left") << QRect(1500, 80, 400, 300) << QSize(800, 600)
                                                    << QRect(1120, 80, 800, 600);
    QTest::newRow("past the bottom moves up") << QRect(100, 900, 400, 300) << QSize(800, 600)
                                              << QRect(100, 480, 800, 600);
    QTest::newRow("larger than the screen keeps the title bar") << QRect(100, 80, 400, 300) << QSize(2400, 1200)
                                                               << QRect(0, 30, 2400, 1200);
}

void TestZBVideoSizing::placeWindowStaysOnTheScreen()
{
    QFETCH(QRect, window);
    QFETCH(QSize, size);
    QFETCH(QRect, expected);
    // A 1920 x 1080 screen with a 30 px panel at the top.
    QCOMPARE(ZBVideoSizing::placeWindow(window, size, QRect(0, 30, 1920, 1050)), expected);
}

void TestZBVideoSizing::hudButtons_data()
{
    QTest::addColumn<bool>("stopped");
    QTest::addColumn<int>("engine");
    QTest::addColumn<int>("displayMode");
    QTest::addColumn<QString>("enabled");

    for (int engine = 0; engine <= 4; ++engine)
        QTest::addRow("stopped, engine %d", engine) << true << engine << 1 << "";
    QTest::newRow("swf, normal") << false << 0 << 0 << "drag fit 1:1 shot series zoom";
    QTest::newRow("swf, fullscreen") << false << 0 << 2 << "drag fit 1:1 shot series zoom";
    QTest::newRow("video, normal") << false << 1 << 0 << "fit stretch shot series";
    QTest::newRow("video, detached") << false << 1 << 1 << "fit stretch 1:1 shot series";
    QTest::newRow("video, fullscreen") << false << 1 << 2 << "fit stretch shot series";
    QTest::newRow("flv, normal") << false << 2 << 0 << "shot series";
    QTest::newRow("flv, detached") << false << 2 << 1 << "1:1 shot series";
    QTest::newRow("real, detached") << false << 3 << 1 << "shot series";
    QTest::newRow("silverlight, detached") << false << 4 << 1 << "shot series";
}

void TestZBVideoSizing::hudButtons()
{
    QFETCH(bool, stopped);
    QFETCH(int, engine);
    QFETCH(int, displayMode);
    QFETCH(QString, enabled);
    QCOMPARE(ZBVideoSizing::hudButtons(stopped, engine, displayMode), buttons(enabled));
}

QTEST_APPLESS_MAIN(TestZBVideoSizing)
#include "tst_zbvideosizing.moc"
