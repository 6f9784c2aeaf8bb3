#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include "engines/zbsnapshotwriter.h"

// The screenshot writer: real files of each numbered format, and failures
// that come back as "SaveSnapshotError" with a reason and leave files alone.
class TestZBSnapshotWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesEachFormat_data();
    void writesEachFormat();
    void failures_data();
    void failures();

private:
    QTemporaryDir m_dir;
};

namespace
{
// Sixteen colours in a pseudo-random pattern: GIF's table holds them exactly,
// and the pattern is varied enough to fill the LZW dictionary several times.
QImage testPicture(int colours = 16)
{
    QImage image(321, 241, QImage::Format_RGB32);
    quint32 seed = 12345;
    for (int y = 0; y < image.height(); ++y)
    {
        for (int x = 0; x < image.width(); ++x)
        {
            seed = seed * 1103515245u + 12345u;
            const int c = int((seed >> 16) % quint32(colours));
            image.setPixel(x, y, qRgb(c * 37 % 256, c * 91 % 256, c * 151 % 256));
        }
    }
    return image;
}
} // namespace

void TestZBSnapshotWriter::writesEachFormat_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QList<QByteArray>>("magic");
    QTest::addColumn<bool>("lossless");
    QTest::addColumn<int>("colours");

    QTest::newRow("0 TIFF") << 0 << QList<QByteArray>{"II*\0", "MM\0*"} << true << 16;
    QTest::newRow("1 BMP") << 1 << QList<QByteArray>{"BM"} << true << 16;
    QTest::newRow("2 GIF") << 2 << QList<QByteArray>{"GIF89a"} << true << 16;
    QTest::newRow("2 GIF of many colours") << 2 << QList<QByteArray>{"GIF89a"} << false << 4096;
    QTest::newRow("3 JPEG") << 3 << QList<QByteArray>{"\xff\xd8\xff"} << false << 16;
    QTest::newRow("4 PNG") << 4 << QList<QByteArray>{"\x89PNG\r\n\x1a\n"} << true << 16;
    const bool jp2 = ZBSnapshotWriter::canWriteFormat(ZBSnapshotWriter::Jpeg2000);
    QTest::newRow(jp2 ? "5 JPEG 2000" : "5 JPEG 2000 written as PNG")
        << 5 << QList<QByteArray>{jp2 ? QByteArray("\0\0\0\x0cjP  ", 8) : QByteArray("\x89PNG\r\n\x1a\n")} << !jp2
        << 16;
    QTest::newRow("unknown number is TIFF") << 9 << QList<QByteArray>{"II*\0", "MM\0*"} << true << 16;
}

void TestZBSnapshotWriter::writesEachFormat()
{
    QFETCH(int, format);
    QFETCH(QList<QByteArray>, magic);
    QFETCH(bool, lossless);
    QFETCH(int, colours);
    // The player names every shot .tiff whatever it holds: the bytes decide.
    const QString path = m_dir.filePath(QStringLiteral("%1-%2.tiff").arg(format).arg(colours));
    const QImage picture = testPicture(colours);
    const ZBSnapshotWriter::Result result = ZBSnapshotWriter::saveSnapshot(picture, path, format);
    QVERIFY2(result.ok(), qPrintable(result.description()));
    QCOMPARE(result.format, ZBSnapshotWriter::effectiveFormat(format));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray head = file.peek(16);
    QVERIFY2(std::any_of(magic.cbegin(), magic.cend(), [&head](const QByteArray &m) { return head.startsWith(m); }),
             head.toHex().constData());
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    const QImage back = reader.read();
    QVERIFY2(!back.isNull(), qPrintable(reader.errorString()));
    QCOMPARE(back.size(), picture.size());
    if (lossless)
        QCOMPARE(back.convertToFormat(QImage::Format_RGB32), picture);
}

void TestZBSnapshotWriter::failures_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("reason");

    // A parent that is a file stops even root, unlike permission bits.
    QFile blocker(m_dir.filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    QTest::newRow("no picture") << QImage() << m_dir.filePath("kept.png") << 4 << "cant get representation";
    QTest::newRow("too wide for GIF") << QImage(70000, 1, QImage::Format_RGB32) << m_dir.filePath("kept.png") << 2
                                      << "bad representation";
    QTest::newRow("folder is a file") << testPicture() << blocker.fileName() + "/shot.tiff" << 0 << "cant write file";
}

void TestZBSnapshotWriter::failures()
{
    QFETCH(QImage, image);
    QFETCH(QString, path);
    QFETCH(int, format);
    QFETCH(QString, reason);
    const QString kept = m_dir.filePath(QStringLiteral("kept.png"));
    {
        QFile file(kept);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("earlier shot") > 0);
    }
    const ZBSnapshotWriter::Result result = ZBSnapshotWriter::saveSnapshot(image, path, format);
    QVERIFY(!result.ok());
    QCOMPARE(result.error, QStringLiteral("SaveSnapshotError"));
    QCOMPARE(result.reason, reason);
    QCOMPARE(result.detail.isEmpty(), reason != u"cant write file");
    QVERIFY(result.description().startsWith(QStringLiteral("SaveSnapshotError: ") + reason));
    QFile file(kept);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("earlier shot"));
}

QTEST_MAIN(TestZBSnapshotWriter)
#include "tst_zbsnapshotwriter.moc"
