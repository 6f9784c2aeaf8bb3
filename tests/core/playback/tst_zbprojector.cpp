#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "playback/zbprojector.h"
#include "support/swfwriter.h"

using Trailer = ZBProjector::Trailer;

namespace
{
constexpr quint32 Magic = 0xFA123456;

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
    void moviesFromFiles_data();
    void moviesFromFiles();
    void convertWritesThePlainMovieOrNothing();

private:
    QString write(const QString &name, const QByteArray &bytes);

    std::unique_ptr<QTemporaryDir> m_dir;
    QByteArray m_movie;
};

void TestZBProjector::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_movie = nvktest::SwfWriter().setVersion(8).addFrames(12).build(nvktest::SwfWriter::Compression::Zlib);
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
    // 3000 bytes of player, 1000 of movie, then the trailer: for Windows the
    // magic 56 34 12 FA and the length little-endian, for the Mac the length
    // and the magic big-endian.
    const QByteArray body = fakePlayer(3000) + QByteArray(1000, 'M');
    const auto row = [&body](const char *name, const QByteArray &end, Trailer kind, qint64 offset, qint64 length)
    {
        QTest::newRow(name) << body + end << kind << offset << length;
    };
    row("windows", trailer(Magic, 1000, false), Trailer::Windows, 3000, 1000);
    row("mac", trailer(1000, Magic, true), Trailer::Mac, 3000, 1000);
    row("windows trailer read as mac", trailer(Magic, 1000, false), Trailer::Mac, -1, 0);
    row("mac trailer in little-endian order", trailer(1000, Magic, false), Trailer::Mac, -1, 0);
    row("mac trailer read as windows", trailer(1000, Magic, true), Trailer::Windows, -1, 0);
    row("no movie", trailer(Magic, 0, false), Trailer::Windows, -1, 0);
    // A movie needs at least a byte in front of it.
    row("no player", trailer(Magic, 4000, false), Trailer::Windows, -1, 0);
    row("one byte of player", trailer(Magic, 3999, false), Trailer::Windows, 1, 3999);
    row("longer than the file", trailer(40000, Magic, true), Trailer::Mac, -1, 0);
    row("L = 0xFFFFFFFF", trailer(Magic, 0xFFFFFFFF, false), Trailer::Windows, -1, 0);
    row("magic off by one", trailer(Magic + 1, 1000, false), Trailer::Windows, -1, 0);
    row("no trailer at all", {}, Trailer::Windows, -1, 0);
}

void TestZBProjector::trailers()
{
    QFETCH(QByteArray, file);
    QFETCH(Trailer, kind);
    QFETCH(qint64, offset);
    QFETCH(qint64, length);
    const auto range = ZBProjector::locateMovie(QByteArrayView(file).last(8), file.size(), kind);
    QCOMPARE(range ? range->offset : -1, offset);
    QCOMPARE(range ? range->length : 0, length);
    QCOMPARE(ZBProjector::extractMovie(file, kind), offset < 0 ? QByteArray() : file.mid(offset, length));
    // Cut short from the front, a file keeps its trailer but loses the room
    // the movie needs, down to no trailer at all.
    for (qsizetype size = 0; size <= 9; ++size)
        QVERIFY(ZBProjector::extractMovie(file.right(size), kind).isEmpty());
}

void TestZBProjector::moviesFromFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("layout");
    QTest::addColumn<bool>("found");
    QTest::addColumn<bool>("application");
    // Layouts: 0 the movie itself, 1 Windows trailer, 2 Mac trailer.
    QTest::newRow("swf any case") << "MOVIE.SWF" << 0 << true << false;
    QTest::newRow("flv is read whole") << "clip.flv" << 0 << true << false;
    QTest::newRow("windows exe, any case") << "GAME.EXE" << 1 << true << false;
    // A Mac projector is an application by its trailer alone.
    QTest::newRow("mac projector without extension") << "Game Projector" << 2 << true << true;
    QTest::newRow("mac trailer inside an exe") << "Game.exe" << 2 << true << true;
    QTest::newRow("named 'APPL' with windows trailer") << "Game.'APPL'" << 1 << false << false;
    QTest::newRow("windows trailer without exe name") << "Game.bin" << 1 << false << false;
    QTest::newRow("mp4 is no flash") << "clip.mp4" << 0 << false << false;
    QTest::newRow("exe without trailer") << "setup.exe" << 0 << false << false;
}

void TestZBProjector::moviesFromFiles()
{
    QFETCH(QString, name);
    QFETCH(int, layout);
    QFETCH(bool, found);
    QFETCH(bool, application);
    const QByteArray player = fakePlayer(5000);
    const QString path = write(name, layout == 0   ? m_movie
                                     : layout == 1 ? nvktest::windowsProjector(player, m_movie)
                                                   : nvktest::macProjector(player, m_movie));
    QCOMPARE(ZBProjector::dataWithContentsOfSWF(path), found ? m_movie : QByteArray());
    QCOMPARE(ZBProjector::isApplicationFile(path), application);
}

void TestZBProjector::convertWritesThePlainMovieOrNothing()
{
    const auto contents = [](const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
    };
    // A longer older file is replaced whole.
    const QString destination = write("Game.swf", QByteArray(6000, '.'));
    QVERIFY(
        ZBProjector::convertEXE(write("Game.exe", nvktest::windowsProjector(fakePlayer(2000), m_movie)), destination));
    QCOMPARE(contents(destination), m_movie);
    QVERIFY(ZBProjector::convertEXE(write("Mac", nvktest::macProjector(fakePlayer(10), m_movie)),
                                    m_dir->filePath("fresh.swf")));
    QCOMPARE(contents(m_dir->filePath("fresh.swf")), m_movie);

    const QString kept = write("kept.swf", "keep me");
    QVERIFY(!ZBProjector::convertEXE(write("setup.exe", fakePlayer(500)), kept));
    QVERIFY(!ZBProjector::convertEXE(m_dir->filePath("missing.exe"), kept));
    QCOMPARE(contents(kept), QByteArray("keep me"));
    QVERIFY(!ZBProjector::convertEXE(m_dir->filePath("Game.exe"), m_dir->filePath("no/such/folder/out.swf")));
    // A magic without a usable length marks an application that holds no movie.
    const QString broken = write("Broken", fakePlayer(100) + trailer(0, Magic, true));
    QVERIFY(ZBProjector::isApplicationFile(broken));
    QVERIFY(ZBProjector::dataWithContentsOfSWF(broken).isEmpty());
    for (const QString &absent : {m_dir->filePath("missing"), m_dir->path()})
        QVERIFY(!ZBProjector::isApplicationFile(absent) && ZBProjector::dataWithContentsOfSWF(absent).isEmpty());
}

QTEST_GUILESS_MAIN(TestZBProjector)
#include "tst_zbprojector.moc"
