#include <QTest>

#include "playback/flash/zbflashmovieplan.h"
#include "playback/flash/zbflashvideosupport.h"
#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"
#include "support/flashmovies.h"
#include "support/swfwriter.h"

using nvktest::CounterMovieOptions;
using nvktest::SwfWriter;

namespace
{
// A stand-in for the ActionScript 3 host: a one-frame AS3 movie of another
// stage, rate and background, as the build makes it.
QByteArray hostMovie(SwfWriter::Compression compression = SwfWriter::Compression::Zlib)
{
    SwfWriter writer;
    writer.setVersion(10).setFileAttributes(true, true).setStageSize(550, 400).setFrameRate(24);
    writer.setBackgroundColor(0, 0, 0).addTag(82, QByteArray("\x01\x00\x00\x00" "abc-code", 12)).showFrame();
    return writer.build(compression);
}

QList<int> tagCodes(const QByteArray &movie)
{
    QList<int> codes;
    const QByteArray plain = ZBSwfHeader::uncompressedMovie(movie);
    if (const auto tags = ZBSwfTagReader::read(plain))
    {
        for (const ZBSwfTagReader::Tag &tag : tags->tags)
            codes << tag.code;
    }
    return codes;
}
} // namespace

class TestZBFlashMoviePlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindFollowsTheHeader_data();
    void kindFollowsTheHeader();
    void hostTakesOnTheContentStage();
    void restagePutsTheColourAfterFileAttributes();
    void refusals_data();
    void refusals();
    void flashVideoCodecs_data();
    void flashVideoCodecs();
};

void TestZBFlashMoviePlan::kindFollowsTheHeader_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("as3");
    QTest::addColumn<int>("kind");
    QTest::newRow("v10") << 10 << false << int(ZBFlashMoviePlan::Kind::Injected);
    QTest::newRow("v8") << 8 << false << int(ZBFlashMoviePlan::Kind::Injected);
    QTest::newRow("v7") << 7 << false << int(ZBFlashMoviePlan::Kind::Wrapped);
    QTest::newRow("v3") << 3 << false << int(ZBFlashMoviePlan::Kind::Wrapped);
    QTest::newRow("AS3") << 10 << true << int(ZBFlashMoviePlan::Kind::Hosted);
}

void TestZBFlashMoviePlan::kindFollowsTheHeader()
{
    QFETCH(int, version);
    QFETCH(bool, as3);
    QFETCH(int, kind);
    CounterMovieOptions options;
    options.version = version;
    options.actionScript3 = as3;
    const QByteArray movie = nvktest::makeCounterMovie(options);
    QString error;
    const auto plan = ZBFlashMoviePlan::make(movie, "nvk_", "movie.swf", hostMovie(), &error);
    QVERIFY2(plan, qPrintable(error));
    QCOMPARE(int(plan->kind), kind);
    QCOMPARE(plan->header.version, version);
    QCOMPARE(plan->servesContentSeparately(), kind != int(ZBFlashMoviePlan::Kind::Injected));
    // What the engine loads first is always a whole, readable movie.
    QVERIFY(ZBSwfTagReader::read(ZBSwfHeader::uncompressedMovie(plan->rootMovie)));
    if (kind == int(ZBFlashMoviePlan::Kind::Hosted))
    {
        QCOMPARE(plan->flashvars.value("nvkContent").toString(), QStringLiteral("movie.swf"));
        QCOMPARE(plan->flashvars.value("nvkPrefix").toString(), QStringLiteral("nvk_"));
    }
    else
    {
        QVERIFY(plan->flashvars.isEmpty());
    }
}

void TestZBFlashMoviePlan::hostTakesOnTheContentStage()
{
    CounterMovieOptions options;
    options.actionScript3 = true;
    options.width = 320;
    options.height = 180;
    options.frameRate = 12.5;
    const QByteArray movie = nvktest::makeCounterMovie(options);
    const auto plan = ZBFlashMoviePlan::make(movie, "nvk_", "m.swf", hostMovie());
    QVERIFY(plan);
    const auto root = ZBSwfHeader::readHeader(plan->rootMovie);
    QVERIFY(root);
    QCOMPARE(root->width(), 320.0);
    QCOMPARE(root->height(), 180.0);
    // The host starts fast and slows to the content's rate itself.
    QCOMPARE(root->frameRate, ZBFlashMoviePlan::HostStartRate);
    QCOMPARE(plan->header.frameRate, 12.5);
    QVERIFY(root->isAS3);
    QCOMPARE(root->frameCount, 1);
    // The content's colour, in the host.
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(plan->rootMovie), ZBFlashMoviePlan::backgroundColor(movie));
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(movie), QByteArray("\xff\x00\xff", 3));
    // Its code survives byte for byte.
    QVERIFY(ZBSwfHeader::uncompressedMovie(plan->rootMovie).contains("abc-code"));
}

void TestZBFlashMoviePlan::restagePutsTheColourAfterFileAttributes()
{
    // A host without a colour gets one, after FileAttributes (which must
    // stay first) and before everything else.
    SwfWriter writer;
    writer.setVersion(10).setFileAttributes(true, true).setBackgroundColorTag(false).setStageSize(100, 100);
    writer.addTag(82, QByteArray("code")).showFrame();
    ZBSwfHeader::Info stage;
    stage.xMax = 640 * 20;
    stage.yMax = 480 * 20;
    stage.frameRate = 30;
    const auto restaged = ZBFlashMoviePlan::restage(writer.build(), stage, QByteArray("\x10\x20\x30", 3));
    QVERIFY(restaged);
    QCOMPARE(tagCodes(*restaged), (QList<int>{69, 9, 82, 1, 0}));
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(*restaged), QByteArray("\x10\x20\x30", 3));
    const auto header = ZBSwfHeader::readHeader(*restaged);
    QVERIFY(header);
    QCOMPARE(header->width(), 640.0);
    QCOMPARE(header->frameRate, 30.0);
    // A host with a colour has it replaced, not doubled.
    const auto again = ZBFlashMoviePlan::restage(*restaged, stage, QByteArray("\x40\x50\x60", 3));
    QVERIFY(again);
    QCOMPARE(tagCodes(*again), (QList<int>{69, 9, 82, 1, 0}));
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(*again), QByteArray("\x40\x50\x60", 3));
    QVERIFY(!ZBFlashMoviePlan::restage(*restaged, stage, QByteArray("\x01", 1)));
}

void TestZBFlashMoviePlan::refusals_data()
{
    QTest::addColumn<QByteArray>("movie");
    QTest::addColumn<QByteArray>("host");
    CounterMovieOptions options;
    const QByteArray whole = nvktest::makeCounterMovie(options);
    options.actionScript3 = true;
    const QByteArray as3 = nvktest::makeCounterMovie(options);
    QTest::newRow("not a movie") << QByteArray("PK\x03\x04 a zip") << hostMovie();
    QTest::newRow("cut short") << whole.left(whole.size() - 5) << hostMovie();
    QTest::newRow("no frames") << SwfWriter().build() << hostMovie();
    QTest::newRow("frame count zero") << SwfWriter().addFrames(2).overrideFrameCount(0).build() << hostMovie();
    QTest::newRow("AS3 without a host") << as3 << QByteArray();
    QTest::newRow("AS3 with a damaged host") << as3 << hostMovie().left(30);
}

void TestZBFlashMoviePlan::refusals()
{
    QFETCH(QByteArray, movie);
    QFETCH(QByteArray, host);
    QString error;
    QVERIFY(!ZBFlashMoviePlan::make(movie, "nvk_", "m.swf", host, &error));
    QVERIFY(!error.isEmpty());
}

void TestZBFlashMoviePlan::flashVideoCodecs_data()
{
    QTest::addColumn<QString>("container");
    QTest::addColumn<QString>("video");
    QTest::addColumn<QString>("audio");
    QTest::addColumn<bool>("flash");
    QTest::newRow("Sorenson + MP3") << "flv" << "flv1" << "mp3" << true;
    QTest::newRow("VP6 + ADPCM") << "flv" << "vp6f" << "adpcm_swf" << true;
    QTest::newRow("VP6 alpha, silent") << "flv" << "vp6a" << "" << true;
    QTest::newRow("screen video") << "flv" << "flashsv" << "nellymoser" << true;
    QTest::newRow("sound only") << "flv" << "" << "mp3" << true;
    QTest::newRow("H.264") << "flv" << "h264" << "mp3" << false;
    QTest::newRow("AAC") << "flv" << "flv1" << "aac" << false;
    QTest::newRow("F4V") << "mov,mp4,m4a,3gp,3g2,mj2" << "h264" << "aac" << false;
    QTest::newRow("empty") << "flv" << "" << "" << false;
}

void TestZBFlashMoviePlan::flashVideoCodecs()
{
    QFETCH(QString, container);
    QFETCH(QString, video);
    QFETCH(QString, audio);
    QFETCH(bool, flash);
    QCOMPARE(ZBFlashVideoSupport::flashEngineDecodes(ZBMediaProbe::Streams{container, video, audio}), flash);
}

QTEST_GUILESS_MAIN(TestZBFlashMoviePlan)
#include "tst_zbflashmovieplan.moc"
