#include <QTest>

#include "playback/flash/zbflashmovieplan.h"
#include "playback/flash/zbflashvideosupport.h"
#include "playback/flash/zbswftagreader.h"
#include "playback/zbswfheader.h"
#include "support/flashmovies.h"
#include "support/swfwriter.h"

using nvktest::CounterMovieOptions;
using nvktest::SwfWriter;
using Kind = ZBFlashMoviePlan::Kind;

namespace
{
// A stand-in for the ActionScript 3 host: a one-frame AS3 movie of another
// stage, rate and background, as the build makes it.
QByteArray hostMovie()
{
    SwfWriter writer;
    writer.setFileAttributes(true, true).setStageSize(550, 400).setFrameRate(24).setBackgroundColor(0, 0, 0);
    return writer
        .addTag(82, QByteArray("\x01\x00\x00\x00"
                               "abc-code",
                               12))
        .showFrame()
        .build(SwfWriter::Compression::Zlib);
}

QByteArray counterMovie(int version, bool as3 = false)
{
    return nvktest::makeCounterMovie({.width = 320,
                                      .height = 180,
                                      .frameRate = 12.5,
                                      .version = version,
                                      .actionScript3 = as3,
                                      .fsCommandArguments = {}});
}

QList<int> tagCodes(const QByteArray &movie)
{
    QList<int> codes;
    const auto tags = ZBSwfTagReader::read(ZBSwfHeader::uncompressedMovie(movie));
    for (const ZBSwfTagReader::Tag &tag : tags.value().tags)
        codes << tag.code;
    return codes;
}
} // namespace

class TestZBFlashMoviePlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindFollowsTheHeader_data();
    void kindFollowsTheHeader();
    void restagePutsTheColourAfterFileAttributes();
    void flashVideoCodecs();
};

void TestZBFlashMoviePlan::kindFollowsTheHeader_data()
{
    QTest::addColumn<QByteArray>("movie");
    QTest::addColumn<QByteArray>("host");
    // -1: refused.
    QTest::addColumn<int>("kind");
    const QByteArray as3 = counterMovie(10, true);
    QTest::newRow("v8") << counterMovie(8) << hostMovie() << int(Kind::Injected);
    QTest::newRow("v7") << counterMovie(7) << hostMovie() << int(Kind::Wrapped);
    QTest::newRow("AS3") << as3 << hostMovie() << int(Kind::Hosted);
    QTest::newRow("not a movie") << QByteArray("PK\x03\x04 a zip") << hostMovie() << -1;
    QTest::newRow("cut short") << counterMovie(8).chopped(5) << hostMovie() << -1;
    QTest::newRow("frame count zero") << SwfWriter().addFrames(2).overrideFrameCount(0).build() << hostMovie() << -1;
    QTest::newRow("AS3 with a damaged host") << as3 << hostMovie().left(30) << -1;
}

void TestZBFlashMoviePlan::kindFollowsTheHeader()
{
    QFETCH(QByteArray, movie);
    QFETCH(QByteArray, host);
    QFETCH(int, kind);
    QString error;
    const auto plan = ZBFlashMoviePlan::make(movie, "nvk_", "movie.swf", host, &error);
    QCOMPARE(plan ? int(plan->kind) : -1, kind);
    QCOMPARE(error.isEmpty(), bool(plan));
    if (!plan)
        return;
    QCOMPARE(plan->servesContentSeparately(), kind != int(Kind::Injected));
    QCOMPARE(plan->header.frameRate, 12.5);
    // What the engine loads first is always a whole, readable movie with the
    // content's stage and colour; the AS3 host starts fast and slows to the
    // content's rate itself, and keeps its own code.
    QVERIFY(ZBSwfTagReader::read(ZBSwfHeader::uncompressedMovie(plan->rootMovie)));
    const auto root = ZBSwfHeader::readHeader(plan->rootMovie);
    QCOMPARE(QSizeF(root.value().width(), root->height()), QSizeF(320, 180));
    QCOMPARE(root->frameRate, kind == int(Kind::Hosted) ? ZBFlashMoviePlan::HostStartRate : 12.5);
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(plan->rootMovie), QByteArray("\xff\x00\xff", 3));
    QCOMPARE(ZBSwfHeader::uncompressedMovie(plan->rootMovie).contains("abc-code"), kind == int(Kind::Hosted));
    // The host is told where the content is and how to name its callbacks.
    const QVariantMap flashvars{{"nvkContent", "movie.swf"}, {"nvkPrefix", "nvk_"}};
    QCOMPARE(plan->flashvars, kind == int(Kind::Hosted) ? flashvars : QVariantMap());
}

void TestZBFlashMoviePlan::restagePutsTheColourAfterFileAttributes()
{
    // A host without a colour gets one, after FileAttributes (which must
    // stay first) and before everything else; one with a colour has it
    // replaced, not doubled.
    SwfWriter writer;
    writer.setFileAttributes(true, true).setBackgroundColorTag(false).setStageSize(100, 100);
    ZBSwfHeader::Info stage;
    stage.xMax = 640 * 20;
    stage.yMax = 480 * 20;
    stage.frameRate = 30;
    const QByteArray restaged =
        ZBFlashMoviePlan::restage(writer.addTag(82, "code").showFrame().build(), stage, "\x10\x20\x30").value();
    const QByteArray again = ZBFlashMoviePlan::restage(restaged, stage, "\x40\x50\x60").value();
    QCOMPARE(ZBSwfHeader::readHeader(restaged).value().width(), 640.0);
    QCOMPARE(ZBSwfHeader::readHeader(restaged).value().frameRate, 30.0);
    QCOMPARE(tagCodes(restaged), (QList<int>{69, 9, 82, 1, 0}));
    QCOMPARE(tagCodes(again), (QList<int>{69, 9, 82, 1, 0}));
    QCOMPARE(ZBFlashMoviePlan::backgroundColor(again), QByteArray("\x40\x50\x60", 3));
    QVERIFY(!ZBFlashMoviePlan::restage(restaged, stage, QByteArray("\x01", 1)));
}

void TestZBFlashMoviePlan::flashVideoCodecs()
{
    // Container, video and audio codec as the probe names them, and whether
    // the Flash engine takes the stream.
    const std::tuple<const char *, const char *, const char *, bool> streams[] = {
        {"flv", "flv1", "mp3", true},  {"flv", "vp6a", "", true},     {"flv", "", "nellymoser", true},
        {"flv", "h264", "mp3", false}, {"flv", "flv1", "aac", false}, {"mov,mp4,m4a,3gp,3g2,mj2", "vp6f", "mp3", false},
        {"flv", "", "", false}};
    for (const auto &[container, video, audio, flash] : streams)
        QVERIFY2(ZBFlashVideoSupport::flashEngineDecodes({container, video, audio}) == flash, video);
}

QTEST_GUILESS_MAIN(TestZBFlashMoviePlan)
#include "tst_zbflashmovieplan.moc"
