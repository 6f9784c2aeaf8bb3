#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "playback/zbprojector.h"
#include "playback/zbswfheader.h"
#include "support/swfwriter.h"

using Trailer = ZBProjector::Trailer;

namespace
{
// Stands for the player executable in front of the movie.
QByteArray fakePlayer(qsizetype size)
{
    QByteArray player(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        player[i] = char((i * 31 + 7) & 0xff);
    return player;
}

QByteArray trailer(quint32 first, quint32 second, bool bigEndian)
{
    QByteArray out;
    for (const quint32 word : {first, second})
    {
        for (int i = 0; i < 4; ++i)
            out.append(char(bigEndian ? (word >> (24 - 8 * i)) : (word >> (8 * i))));
    }
    return out;
}
} // namespace

// Movies inside Windows and Mac projectors: finding them by the trailer,
// refusing forged trailers, and writing them out as plain movies.
class TestZBProjector : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void trailers_data();
    void trailers();
    void shortInputs();
    void moviesFromFiles_data();
    void moviesFromFiles();
    void applicationFilesByTrailer();
    void convertWritesThePlainMovie();
    void convertFailureLeavesDestinationAlone();

private:
    QString write(const QString &name, const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> m_dir;
    QByteArray m_movie;
};

void TestZBProjector::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_movie = nvktest::SwfWriter().setVersion(8).setStageSize(640, 480).addFrames(12).build(
        nvktest::SwfWriter::Compression::Zlib);
}

QString TestZBProjector::write(const QString &name, const QByteArray &bytes)
{
    QFile file(m_dir->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

void TestZBProjector::trailers_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Trailer>("kind");
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<qint64>("length");

    const QByteArray player = fakePlayer(3000);
    const QByteArray movie(1000, 'M');
    const QByteArray body = player + movie;
    const qint64 fileSize = body.size() + 8;
    // 56 34 12 FA, then L = 1000 little-endian: the 1000 bytes before.
    QTest::newRow("windows, L = 1000") << body + trailer(0xFA123456, 1000, false) << Trailer::Windows
                                       << qint64(3000) << qint64(1000);
    QTest::newRow("mac, L = 1000") << body + trailer(1000, 0xFA123456, true) << Trailer::Mac << qint64(3000)
                                   << qint64(1000);
    QTest::newRow("windows trailer read as mac") << body + trailer(0xFA123456, 1000, false) << Trailer::Mac
                                                 << qint64(-1) << qint64(0);
    QTest::newRow("mac trailer in little-endian order")
        << body + trailer(1000, 0xFA123456, false) << Trailer::Mac << qint64(-1) << qint64(0);
    QTest::newRow("mac trailer read as windows") << body + trailer(1000, 0xFA123456, true) << Trailer::Windows
                                                 << qint64(-1) << qint64(0);
    QTest::newRow("L = 0") << body + trailer(0xFA123456, 0, false) << Trailer::Windows << qint64(-1) << qint64(0);
    QTest::newRow("L = length - 8") << body + trailer(0xFA123456, quint32(fileSize - 8), false)
                                    << Trailer::Windows << qint64(-1) << qint64(0);
    QTest::newRow("L = length - 9") << body + trailer(0xFA123456, quint32(fileSize - 9), false)
                                    << Trailer::Windows << qint64(1) << fileSize - 9;
    QTest::newRow("L beyond the file") << body + trailer(quint32(fileSize * 10), 0xFA123456, true) << Trailer::Mac
                                       << qint64(-1) << qint64(0);
    QTest::newRow("L = 0xFFFFFFFF") << body + trailer(0xFA123456, 0xFFFFFFFF, false) << Trailer::Windows
                                    << qint64(-1) << qint64(0);
    QTest::newRow("magic off by one") << body + trailer(0xFA123457, 1000, false) << Trailer::Windows << qint64(-1)
                                      << qint64(0);
    QTest::newRow("no trailer at all") << body << Trailer::Windows << qint64(-1) << qint64(0);
}

void TestZBProjector::trailers()
{
    QFETCH(QByteArray, file);
    QFETCH(Trailer, kind);
    QFETCH(qint64, offset);
    QFETCH(qint64, length);

    const auto range = ZBProjector::locateMovie(QByteArrayView(file).last(8), file.size(), kind);
    const QByteArray movie = ZBProjector::extractMovie(file, kind);
    if (offset < 0)
    {
        QVERIFY(!range);
        QVERIFY(movie.isEmpty());
        return;
    }
    QVERIFY(range);
    QCOMPARE(range->offset, offset);
    QCOMPARE(range->length, length);
    QCOMPARE(movie, file.mid(offset, length));
}

void TestZBProjector::shortInputs()
{
    for (qsizetype size = 0; size <= 9; ++size)
    {
        // The magic alone, cut to `size` bytes from the front.
        const QByteArray bytes = QByteArray(QByteArray(1, 'x') + trailer(1, 0xFA123456, true)).right(size);
        QVERIFY(ZBProjector::extractMovie(bytes, Trailer::Mac).isEmpty());
        QVERIFY(ZBProjector::extractMovie(bytes, Trailer::Windows).isEmpty());
    }
    // A movie needs something in front of it: 10 bytes with L = 1 is the
    // smallest projector there is.
    const QByteArray smallest = QByteArray("PS") + trailer(1, 0xFA123456, true);
    QCOMPARE(ZBProjector::extractMovie(smallest, Trailer::Mac), QByteArray("S"));
    QVERIFY(ZBProjector::extractMovie(QByteArrayView(smallest).sliced(1), Trailer::Mac).isEmpty());
    QVERIFY(!ZBProjector::locateMovie(QByteArrayView(smallest).first(7), smallest.size(), Trailer::Mac));
}

void TestZBProjector::moviesFromFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("layout");
    QTest::addColumn<bool>("found");
    // Layouts: 0 the movie itself, 1 Windows trailer, 2 Mac trailer.
    QTest::newRow("swf is read whole") << "movie.swf" << 0 << true;
    QTest::newRow("SWF any case") << "MOVIE.SWF" << 0 << true;
    QTest::newRow("flv is read whole") << "clip.flv" << 0 << true;
    QTest::newRow("windows exe") << "Game.exe" << 1 << true;
    QTest::newRow("EXE any case") << "GAME.EXE" << 1 << true;
    QTest::newRow("mac projector without extension") << "Game Projector" << 2 << true;
    QTest::newRow("mac trailer inside an exe") << "Game.exe" << 2 << true;
    QTest::newRow("named 'APPL' with mac trailer") << "Game.'APPL'" << 2 << true;
    QTest::newRow("named 'APPL' with windows trailer") << "Game.'APPL'" << 1 << false;
    QTest::newRow("windows trailer without exe name") << "Game.bin" << 1 << false;
    QTest::newRow("mp4 is no flash") << "clip.mp4" << 0 << false;
    QTest::newRow("exe without trailer") << "setup.exe" << 0 << false;
}

void TestZBProjector::moviesFromFiles()
{
    QFETCH(QString, name);
    QFETCH(int, layout);
    QFETCH(bool, found);
    const QByteArray player = fakePlayer(5000);
    const QByteArray bytes = layout == 0   ? m_movie
                             : layout == 1 ? nvktest::windowsProjector(player, m_movie)
                                           : nvktest::macProjector(player, m_movie);
    const QString path = write(name, bytes);
    const QByteArray movie = ZBProjector::dataWithContentsOfSWF(path);
    QCOMPARE(movie.isEmpty(), !found);
    if (!found)
        return;
    QCOMPARE(movie, m_movie);
    const auto header = ZBSwfHeader::readHeader(movie);
    QVERIFY(header);
    QCOMPARE(header->frameCount, quint16(12));
    QCOMPARE(header->width(), 640.0);
}

void TestZBProjector::applicationFilesByTrailer()
{
    const QByteArray player = fakePlayer(100);
    QVERIFY(ZBProjector::isApplicationFile(write("Projector", nvktest::macProjector(player, m_movie))));
    QVERIFY(!ZBProjector::isApplicationFile(write("Game.exe", nvktest::windowsProjector(player, m_movie))));
    QVERIFY(!ZBProjector::isApplicationFile(write("movie.swf", m_movie)));
    QVERIFY(!ZBProjector::isApplicationFile(write("tiny", QByteArray::fromHex("fa123456"))));
    QVERIFY(!ZBProjector::isApplicationFile(write("empty", QByteArray())));
    QVERIFY(!ZBProjector::isApplicationFile(m_dir->filePath("missing")));
    QVERIFY(!ZBProjector::isApplicationFile(m_dir->path()));
    // The magic alone marks it; a useless length only means there is no movie.
    const QString broken = write("Broken", player + trailer(0, 0xFA123456, true));
    QVERIFY(ZBProjector::isApplicationFile(broken));
    QVERIFY(ZBProjector::dataWithContentsOfSWF(broken).isEmpty());
    QVERIFY(ZBProjector::dataWithContentsOfSWF(m_dir->filePath("missing.swf")).isEmpty());
    QVERIFY(ZBProjector::dataWithContentsOfSWF(m_dir->path()).isEmpty());
}

void TestZBProjector::convertWritesThePlainMovie()
{
    const QString source = write("Game.exe", nvktest::windowsProjector(fakePlayer(2000), m_movie));
    const QString destination = write("Game.swf", "an older file, longer than the movie that replaces it " +
                                                      QByteArray(4000, '.'));
    QVERIFY(ZBProjector::convertEXE(source, destination));
    QFile written(destination);
    QVERIFY(written.open(QIODevice::ReadOnly));
    QCOMPARE(written.readAll(), m_movie);

    const QString mac = write("Mac Projector", nvktest::macProjector(fakePlayer(10), m_movie));
    QVERIFY(ZBProjector::convertEXE(mac, m_dir->filePath("fresh.swf")));
    QFile fresh(m_dir->filePath("fresh.swf"));
    QVERIFY(fresh.open(QIODevice::ReadOnly));
    QCOMPARE(fresh.readAll(), m_movie);
}

void TestZBProjector::convertFailureLeavesDestinationAlone()
{
    const QByteArray kept("keep me");
    const QString destination = write("kept.swf", kept);
    QVERIFY(!ZBProjector::convertEXE(write("setup.exe", fakePlayer(500)), destination));
    QVERIFY(!ZBProjector::convertEXE(m_dir->filePath("missing.exe"), destination));
    QFile file(destination);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), kept);

    const QString source = write("Game.exe", nvktest::windowsProjector(fakePlayer(10), m_movie));
    QVERIFY(!ZBProjector::convertEXE(source, m_dir->filePath("no/such/folder/out.swf")));
}

QTEST_GUILESS_MAIN(TestZBProjector)
#include "tst_zbprojector.moc"
