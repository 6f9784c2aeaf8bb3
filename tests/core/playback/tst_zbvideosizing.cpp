#include <QTest>

#include "playback/zbvideosizing.h"

Q_DECLARE_METATYPE(ZBHudButtons)

namespace
{
// "drag fit stretch 1:1 shot series zoom" by name, for readable rows.
ZBHudButtons buttons(const QString &names)
{
    const auto on = [list = names.split(QLatin1Char(' '))](const char *name) { return list.contains(name); };
    return {on("drag"), on("fit"), on("stretch"), on("1:1"), on("shot"), on("series"), on("zoom")};
}
} // namespace

class TestZBVideoSizing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void windowSizeForNaturalSize_data();
    void windowSizeForNaturalSize();
    void hudButtons_data();
    void hudButtons();
};

void TestZBVideoSizing::windowSizeForNaturalSize_data()
{
    QTest::addColumn<QSize>("natural");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("playerArea");
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QSize>("expected");
    // On a 1920 x 1050 screen; the main window has 200 px of tree beside the
    // picture and 150 px of list and transport below it.
    const QSize main(1000, 700), area(800, 550), detached(640, 480), none(0, 0);
    QTest::newRow("chrome added") << QSize(640, 360) << main << area << none << QSize(840, 510);
    QTest::newRow("detached") << QSize(320, 240) << detached << detached << QSize(200, 150) << QSize(320, 240);
    QTest::newRow("larger than the screen") << QSize(3840, 2160) << main << area << none << QSize(1920, 1050);
    QTest::newRow("tiny movie") << QSize(32, 24) << detached << detached << QSize(200, 150) << QSize(200, 150);
    QTest::newRow("minimum height only") << QSize(400, 50) << detached << QSize(640, 430) << QSize(200, 150)
                                         << QSize(400, 150);
    QTest::newRow("no natural size") << QSize() << main << area << none << main;
    QTest::newRow("area larger than window") << QSize(320, 240) << detached << main << none << QSize(320, 240);
}

void TestZBVideoSizing::windowSizeForNaturalSize()
{
    QFETCH(QSize, natural);
    QFETCH(QSize, window);
    QFETCH(QSize, playerArea);
    QFETCH(QSize, minimum);
    QFETCH(QSize, expected);
    QCOMPARE(ZBVideoSizing::windowSizeForNaturalSize(natural, window, playerArea, minimum, QSize(1920, 1050)),
             expected);
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
