#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>
#include <QTest>

#include "engines/zbsnapshotwriter.h"

// The screenshot writer: real files of each numbered format, and failures
// that come back as "SaveSnapshotError" with a reason and leave no file.
class TestZBSnapshotWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saveSnapshot_data();
    void saveSnapshot();

private:
    QTemporaryDir m_dir;
};

// A pseudo-random pattern of few colours, which GIF's table holds exactly,
// varied enough to fill the LZW dictionary several times.
static QImage testPicture(int colours = 16)
{
    QImage image(321, 241, QImage::Format_RGB32);
    for (int i = 0; i < image.width() * image.height(); ++i)
    {
        const int c = int(((quint32(i) * 2654435761u) >> 13) % quint32(colours));
        image.setPixel(i % image.width(), i / image.width(), qRgb(c * 37 % 256, c * 91 % 256, c * 151 % 256));
    }
    return image;
}

void TestZBSnapshotWriter::saveSnapshot_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("format");
    QTest::addColumn<QList<QByteArray>>("magic");
    QTest::addColumn<bool>("lossless");
    QTest::addColumn<QString>("reason");
    const QImage picture = testPicture();
    // The player names every shot .tiff whatever it holds: the bytes decide.
    const auto path = [this](int n) { return m_dir.filePath(QStringLiteral("%1.tiff").arg(n)); };
    const QByteArray png("\x89PNG\r\n\x1a\n");
    const bool jp2 = ZBSnapshotWriter::canWriteFormat(ZBSnapshotWriter::Jpeg2000);
    QTest::newRow("0 TIFF") << picture << path(0) << 0 << QList<QByteArray>{"II*\0", "MM\0*"} << true << "";
    QTest::newRow("1 BMP") << picture << path(1) << 1 << QList<QByteArray>{"BM"} << true << "";
    QTest::newRow("2 GIF") << picture << path(2) << 2 << QList<QByteArray>{"GIF89a"} << true << "";
    QTest::newRow("2 GIF of many colours") << testPicture(4096) << path(20) << 2 << QList<QByteArray>{"GIF89a"}
                                           << false << "";
    QTest::newRow("3 JPEG") << picture << path(3) << 3 << QList<QByteArray>{"\xff\xd8\xff"} << false << "";
    QTest::newRow("4 PNG") << picture << path(4) << 4 << QList<QByteArray>{png} << true << "";
    QTest::newRow(jp2 ? "5 JPEG 2000" : "5 JPEG 2000 written as PNG")
        << picture << path(5) << 5 << QList<QByteArray>{jp2 ? QByteArray("\0\0\0\x0cjP  ", 8) : png} << !jp2 << "";

    QTest::newRow("no picture") << QImage() << path(6) << 4 << QList<QByteArray>{} << false
                                << "cant get representation";
    QTest::newRow("too wide for GIF") << QImage(70000, 1, QImage::Format_RGB32) << path(7) << 2
                                      << QList<QByteArray>{} << false << "bad representation";
    // A parent that is a file stops even root, unlike permission bits.
    QFile blocker(m_dir.filePath(QStringLiteral("blocker")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    QTest::newRow("folder is a file") << picture << blocker.fileName() + "/shot.tiff" << 0 << QList<QByteArray>{}
                                      << false << "cant write file";
}

void TestZBSnapshotWriter::saveSnapshot()
{
    QFETCH(QImage, picture);
    QFETCH(QString, path);
    QFETCH(int, format);
    QFETCH(QList<QByteArray>, magic);
    QFETCH(bool, lossless);
    QFETCH(QString, reason);
    const ZBSnapshotWriter::Result result = ZBSnapshotWriter::saveSnapshot(picture, path, format);
    QCOMPARE(result.reason, reason);
    if (!reason.isEmpty())
    {
        QCOMPARE(result.error, QStringLiteral("SaveSnapshotError"));
        // Only the system can say why a file cannot be written.
        QCOMPARE(result.detail.isEmpty(), reason != u"cant write file");
        QVERIFY(!QFile::exists(path));
        return;
    }
    QCOMPARE(result.format, ZBSnapshotWriter::effectiveFormat(format));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray head = file.peek(16);
    QVERIFY2(std::any_of(magic.cbegin(), magic.cend(), [&head](const QByteArray &m) { return head.startsWith(m); }),
             head.toHex().constData());
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    const QImage back = reader.read();
    QCOMPARE(back.size(), picture.size());
    if (lossless)
        QCOMPARE(back.convertToFormat(QImage::Format_RGB32), picture);
}

QTEST_MAIN(TestZBSnapshotWriter)
#include "tst_zbsnapshotwriter.moc"
