#include <algorithm>
#include <cstdlib>

#include <QImage>
#include <QTest>

#include "ui/widgets/zbglyphicon.h"

namespace
{
QImage render(ZBGlyphIcon::Glyph glyph, int side, QIcon::Mode mode = QIcon::Normal)
{
    return ZBGlyphIcon::icon(glyph).pixmap(QSize(side, side), 1.0, mode).toImage();
}

// Antialiased edges may round differently once mirrored.
int largestAlphaDifference(const QImage &a, const QImage &b)
{
    int largest = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            largest = std::max(largest, std::abs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y))));
    return largest;
}

int inkedPixels(const QImage &image)
{
    int inked = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            inked += qAlpha(image.pixel(x, y)) > 0;
    return inked;
}
} // namespace

class TestZBGlyphIcon : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void glyphsDrawAtEverySize_data()
    {
        QTest::addColumn<int>("glyph");
        QTest::addColumn<int>("side");
        for (int glyph = ZBGlyphIcon::Previous; glyph <= ZBGlyphIcon::Extension; ++glyph)
            for (int side : {16, 22, 48})
                QTest::addRow("glyph %d at %d", glyph, side) << glyph << side;
    }

    // Each glyph fills a fair part of its box at any size, whatever the box,
    // and a disabled button shows it in another colour.
    void glyphsDrawAtEverySize()
    {
        QFETCH(int, glyph);
        QFETCH(int, side);
        const QImage normal = render(ZBGlyphIcon::Glyph(glyph), side);
        QCOMPARE(normal.size(), QSize(side, side));
        const int inked = inkedPixels(normal);
        QVERIFY2(inked > side * side / 10, qPrintable(QString::number(inked)));
        QVERIFY(render(ZBGlyphIcon::Glyph(glyph), side, QIcon::Disabled) != normal);
    }

    void pairsAreMirrors_data()
    {
        QTest::addColumn<int>("glyph");
        QTest::addColumn<int>("mirror");
        QTest::newRow("previous and next") << int(ZBGlyphIcon::Previous) << int(ZBGlyphIcon::Next);
        QTest::newRow("back and forward") << int(ZBGlyphIcon::Back) << int(ZBGlyphIcon::Forward);
    }

    void pairsAreMirrors()
    {
        QFETCH(int, glyph);
        QFETCH(int, mirror);
        const QImage left = render(ZBGlyphIcon::Glyph(glyph), 32);
        const QImage flipped = left.mirrored(true, false);
        QVERIFY(largestAlphaDifference(left, flipped) > 200);
        const int difference = largestAlphaDifference(render(ZBGlyphIcon::Glyph(mirror), 32), flipped);
        QVERIFY2(difference < 40, qPrintable(QString::number(difference)));
    }
};

QTEST_MAIN(TestZBGlyphIcon)
#include "tst_zbglyphicon.moc"
