#include <algorithm>
#include <functional>
#include <stdexcept>

#include <QTest>

#include "playback/flash/zbavm1assembler.h"
#include "playback/flash/zbframecontrolinjector.h"
#include "playback/flash/zbframecontrolwrapper.h"
#include "playback/zbswfheader.h"
#include "support/avm1machine.h"
#include "support/swfwriter.h"

using nvktest::SwfWriter;
using Compression = SwfWriter::Compression;
using Value = ZBAvm1Assembler::Value;
using nvktest::Avm1Machine;
using ObjectPtr = Avm1Machine::ObjectPtr;

Q_DECLARE_METATYPE(SwfWriter::Compression)

namespace
{
constexpr QByteArrayView Prefix = "__nvk_";
const QByteArray ContentUrl = "nvk-movie://movie/42.swf";

const QList<QByteArray> CallbackNames = {"currentFrame", "totalFrames", "gotoFrame", "play", "stop", "isPlaying",
                                         "ticks"};

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

quint32 le32(QByteArrayView bytes, qsizetype offset)
{
    quint32 value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | quint8(bytes[offset + i]);
    return value;
}

// A tag walker of the test's own, so the injector's reader is not checked
// against itself. Takes an uncompressed movie; fails the test on a bad stream.
struct TagRecord
{
    int code = 0;
    QByteArray record;
    QByteArray body;
};

QList<TagRecord> walkTags(const QByteArray &movie)
{
    QList<TagRecord> tags;
    if (movie.size() < 9 || !movie.startsWith("FWS"))
        return tags;
    const int nbits = quint8(movie[8]) >> 3;
    qsizetype position = 8 + (5 + 4 * nbits + 7) / 8 + 4;
    while (position + 2 <= movie.size())
    {
        const int header = quint8(movie[position]) | quint8(movie[position + 1]) << 8;
        qsizetype length = header & 0x3f;
        qsizetype bodyAt = position + 2;
        if (length == 0x3f)
        {
            if (bodyAt + 4 > movie.size())
                break;
            length = le32(movie, bodyAt);
            bodyAt += 4;
        }
        if (bodyAt + length > movie.size())
            break;
        tags.append({header >> 6, movie.mid(position, bodyAt + length - position), movie.mid(bodyAt, length)});
        position = bodyAt + length;
        if ((header >> 6) == 0)
            break;
    }
    return tags;
}

SwfWriter contentWriter(int version)
{
    SwfWriter writer;
    writer.setVersion(version).setStageSize(640, 480).setFrameRate(29.97).setBackgroundColor(0x12, 0x34, 0x56);
    // A shape-like tag in long form, a frame script of the movie's own, then
    // frames.
    writer.addTag(2, QByteArray(100, 'x'));
    writer.addTag(SwfWriter::DoActionTag, hex("0700"));
    writer.showFrame();
    writer.addTag(26, QByteArray("\x06\x01\x00", 3));
    writer.addFrames(3);
    return writer;
}

QByteArray spriteBody(int frames)
{
    // Sprite id, frame count, then the sprite's own timeline.
    QByteArray body = hex("0700");
    body.append(char(frames));
    body.append('\0');
    for (int i = 0; i < frames; ++i)
        body.append(SwfWriter::tag(SwfWriter::ShowFrameTag, {}));
    body.append(SwfWriter::tag(0, {}));
    return body;
}

// Stands in for the Flash runtime around the frame-control code: clips that
// log the methods called on them, ExternalInterface that keeps the callbacks
// and logs calls out, and MovieClipLoader.
class FlashWorld
{
public:
    FlashWorld()
    {
        m_root = clip("_root");
        m_machine.globals()["_root"] = m_root;

        ObjectPtr externalInterface = Avm1Machine::newObject();
        externalInterface->members["addCallback"] = Avm1Machine::nativeFunction(
            [this](const ObjectPtr &, const QList<Avm1Machine::Value> &arguments) -> Avm1Machine::Value
            {
                const auto *name = arguments.size() == 3 ? std::get_if<QByteArray>(&arguments[0]) : nullptr;
                const auto *function = arguments.size() == 3 ? std::get_if<ObjectPtr>(&arguments[2]) : nullptr;
                if (!name || !function || !std::holds_alternative<std::nullptr_t>(arguments[1]))
                    throw std::runtime_error("addCallback(name, null, function) expected");
                m_callbacks[*name] = *function;
                return true;
            });
        externalInterface->members["call"] = logger("ExternalInterface.call");
        ObjectPtr external = Avm1Machine::newObject();
        external->members["ExternalInterface"] = externalInterface;
        ObjectPtr flash = Avm1Machine::newObject();
        flash->members["external"] = external;
        m_machine.globals()["flash"] = flash;

        m_machine.globals()["MovieClipLoader"] = Avm1Machine::nativeFunction(
            [this](const ObjectPtr &, const QList<Avm1Machine::Value> &) -> Avm1Machine::Value
            {
                ObjectPtr loader = Avm1Machine::newObject();
                loader->members["addListener"] = Avm1Machine::nativeFunction(
                    [this](const ObjectPtr &, const QList<Avm1Machine::Value> &arguments) -> Avm1Machine::Value
                    {
                        if (arguments.size() != 1 || !std::holds_alternative<ObjectPtr>(arguments[0]))
                            throw std::runtime_error("addListener(object) expected");
                        m_listeners.append(std::get<ObjectPtr>(arguments[0]));
                        return true;
                    });
                loader->members["loadClip"] = logger("loader.loadClip");
                return loader;
            });
    }

    Avm1Machine &machine() { return m_machine; }
    ObjectPtr root() const { return m_root; }
    QList<ObjectPtr> listeners() const { return m_listeners; }
    QList<std::pair<QByteArray, QList<Avm1Machine::Value>>> &log() { return m_log; }

    // Calls a registered callback; nothing when it was never registered.
    std::optional<Avm1Machine::Value> callback(const QByteArray &name, const QList<Avm1Machine::Value> &arguments = {})
    {
        if (!m_callbacks.contains(name))
            return std::nullopt;
        return m_machine.call(m_callbacks.value(name), nullptr, arguments);
    }
    QList<QByteArray> callbackNames() const { return m_callbacks.keys(); }

    // What was logged since the last take.
    QList<std::pair<QByteArray, QList<Avm1Machine::Value>>> take() { return std::exchange(m_log, {}); }

private:
    ObjectPtr logger(const QByteArray &what)
    {
        return Avm1Machine::nativeFunction(
            [this, what](const ObjectPtr &, const QList<Avm1Machine::Value> &arguments) -> Avm1Machine::Value
            {
                m_log.append({what, arguments});
                return Avm1Machine::Undefined{};
            });
    }

    ObjectPtr clip(const QByteArray &name)
    {
        ObjectPtr c = Avm1Machine::newObject();
        c->members["_currentframe"] = 1.0;
        c->members["_totalframes"] = 1.0;
        for (const char *method : {"gotoAndPlay", "gotoAndStop", "play", "stop"})
            c->members[method] = logger(name + "." + method);
        std::weak_ptr<Avm1Machine::Object> weak = c;
        c->members["createEmptyMovieClip"] = Avm1Machine::nativeFunction(
            [this, name, weak](const ObjectPtr &, const QList<Avm1Machine::Value> &arguments) -> Avm1Machine::Value
            {
                m_log.append({name + ".createEmptyMovieClip", arguments});
                const auto *childName = arguments.size() == 2 ? std::get_if<QByteArray>(&arguments[0]) : nullptr;
                if (!childName || !std::holds_alternative<double>(arguments[1]))
                    throw std::runtime_error("createEmptyMovieClip(name, depth) expected");
                ObjectPtr child = clip(*childName);
                weak.lock()->members[*childName] = child;
                return child;
            });
        return c;
    }

    Avm1Machine m_machine;
    ObjectPtr m_root;
    QMap<QByteArray, ObjectPtr> m_callbacks;
    QList<ObjectPtr> m_listeners;
    QList<std::pair<QByteArray, QList<Avm1Machine::Value>>> m_log;
};

using Call = std::pair<QByteArray, QList<Avm1Machine::Value>>;

Call logged(const char *what, const QList<Avm1Machine::Value> &arguments)
{
    return {QByteArray(what), arguments};
}

// The DoAction the injector added: the one that differs from the movie's own.
QByteArray addedDoAction(const QByteArray &movie, const QByteArray &ownCode)
{
    for (const TagRecord &tag : walkTags(ZBSwfHeader::uncompressedMovie(movie)))
    {
        if (tag.code == SwfWriter::DoActionTag && tag.body != ownCode)
            return tag.body;
    }
    return {};
}
} // namespace

// The byte-level half of Flash frame control: the AVM1 assembler, the
// injector that adds the callbacks to version 8+ movies and the host movie
// that wraps older ones.
class TestZBFrameControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void assembled_data();
    void assembled();
    void invalidInputMarksTheAssembler();

    // The injector.
    void injectionKeepsTheMovie_data();
    void injectionKeepsTheMovie();
    void spriteFramesAreNotTopLevelFrames();
    void bytesAfterEndAreDropped();
    void injectionRefusals_data();
    void injectionRefusals();
    void truncatedMoviesAreRefusedAtEveryLength();
    void injectedCodeSteersTheRoot();

    // The wrapper.
    void wrapperMatchesTheContentStage_data();
    void wrapperMatchesTheContentStage();
    void wrapperCodeLoadsAndSteersTheContent();
    void wrapperRefusals_data();
    void wrapperRefusals();
};

void TestZBFrameControl::assembled_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QByteArray>("expected");
    using A = ZBAvm1Assembler;
    const auto row = [](const char *name, const A &code, const char *expected)
    {
        QVERIFY(code.isValid());
        QTest::newRow(name) << code.bytes() << hex(expected);
    };

    row("End", A().end(), "00");
    row("Play", A().play(), "06");
    row("Stop", A().stop(), "07");
    row("Subtract", A().subtract(), "0b");
    row("Not", A().logicalNot(), "12");
    row("Pop", A().pop(), "17");
    row("GetVariable", A().getVariable(), "1c");
    row("SetVariable", A().setVariable(), "1d");
    row("CallFunction", A().callFunction(), "3d");
    row("Return", A().returnValue(), "3e");
    row("NewObject", A().newObject(), "40");
    row("InitObject", A().initObject(), "43");
    row("Add2", A().add2(), "47");
    row("Less2", A().less2(), "48");
    row("Equals2", A().equals2(), "49");
    row("GetMember", A().getMember(), "4e");
    row("SetMember", A().setMember(), "4f");
    row("CallMethod", A().callMethod(), "52");

    row("push string", A().push({Value::string("ab")}), "96040000616200");
    row("push empty string", A().push({Value::string("")}), "9602000000");
    row("push UTF-8 string", A().push({Value::string("\xc3\xa9")}), "96040000c3a900");
    row("push integer", A().push({Value::integer(0x12345678)}), "9605000778563412");
    row("push negative integer", A().push({Value::integer(-2)}), "96050007feffffff");
    row("push true", A().push({Value::boolean(true)}), "9602000501");
    row("push false", A().push({Value::boolean(false)}), "9602000500");
    row("push null", A().push({Value::null()}), "96010002");
    row("push undefined", A().push({Value::undefined()}), "96010003");
    row("push register", A().push({Value::registerNumber(3)}), "9602000403");
    row("push constant 8", A().push({Value::constant(255)}), "96020008ff");
    row("push constant 16", A().push({Value::constant(300)}), "960300092c01");
    row("push several in one record", A().push({Value::null(), Value::string("f"), Value::integer(3)}),
        "960900020066000703000000");
    row("push shorthands", A().pushString("x").pushInteger(1), "9603000078009605000701000000");

    // Count 2, then "a\0" and "bc\0".
    row("constant pool", A().constantPool({"a", "bc"}), "88070002006100626300");
    row("branches", A().ifTrue(21).jump(-5), "9d02001500990200fbff");
    row("gotos", A().gotoFrame2(true).gotoFrame2(false), "9f0100019f010000");
    row("joined", A().play().append(A().gotoFrame2(true)).stop(), "069f01000107");
    // "f\0", 2 parameters, "a\0", "bc\0", code size 2, then the body.
    row("named function", A().defineFunction("f", {"a", "bc"}, A().play().stop()), "9b0b0066000200610062630002000607");
    row("anonymous function", A().defineFunction({}, {}, A()), "9b05000000000000");
}

void TestZBFrameControl::assembled()
{
    QFETCH(QByteArray, code);
    QFETCH(QByteArray, expected);
    QCOMPARE(code.toHex(), expected.toHex());
}

void TestZBFrameControl::invalidInputMarksTheAssembler()
{
    ZBAvm1Assembler zeroInString;
    zeroInString.pushString(QByteArrayView("a\0b", 3));
    QVERIFY(!zeroInString.isValid());

    ZBAvm1Assembler zeroInParameter;
    zeroInParameter.defineFunction("f", {QByteArray("a\0", 2)}, ZBAvm1Assembler());
    QVERIFY(!zeroInParameter.isValid());

    // A payload past the UI16 length is not written at all: a wrapped length
    // would make the rest of the code read as other actions.
    ZBAvm1Assembler tooLong;
    tooLong.play().pushString(QByteArray(70000, 'a'));
    QVERIFY(!tooLong.isValid());
    QCOMPARE(tooLong.bytes().toHex(), QByteArray("06"));

    ZBAvm1Assembler invalidBody;
    invalidBody.pushString(QByteArrayView("\0", 1));
    ZBAvm1Assembler outer;
    outer.defineFunction({}, {}, invalidBody);
    QVERIFY(!outer.isValid());
    ZBAvm1Assembler appended;
    appended.append(invalidBody);
    QVERIFY(!appended.isValid());
}

void TestZBFrameControl::injectionKeepsTheMovie_data()
{
    QTest::addColumn<SwfWriter::Compression>("compression");
    QTest::addColumn<int>("version");
    QTest::newRow("FWS 8") << Compression::None << 8;
    QTest::newRow("CWS 10") << Compression::Zlib << 10;
    QTest::newRow("ZWS 13") << Compression::Lzma << 13;
}

void TestZBFrameControl::injectionKeepsTheMovie()
{
    QFETCH(SwfWriter::Compression, compression);
    QFETCH(int, version);

    const SwfWriter writer = contentWriter(version);
    const QByteArray input = writer.build(compression);
    QString error;
    const std::optional<QByteArray> output = ZBFrameControlInjector::inject(input, Prefix, &error);
    QVERIFY2(output, qPrintable(error));

    const auto before = ZBSwfHeader::readHeader(input);
    const auto after = ZBSwfHeader::readHeader(*output);
    QVERIFY(before && after);
    QCOMPARE(after->signature, before->signature);
    QCOMPARE(after->version, version);
    QCOMPARE(after->xMin, before->xMin);
    QCOMPARE(after->xMax, before->xMax);
    QCOMPARE(after->yMin, before->yMin);
    QCOMPARE(after->yMax, before->yMax);
    QCOMPARE(after->frameRate, before->frameRate);
    QCOMPARE(after->frameCount, quint16(4));
    QVERIFY(after->hasFileAttributes && !after->isAS3);

    const QByteArray plain = ZBSwfHeader::uncompressedMovie(*output);
    QCOMPARE(after->fileLength, quint32(plain.size()));
    if (compression == Compression::Lzma)
    {
        // The stored length counts the LZMA data after the 5 property bytes.
        QCOMPARE(qsizetype(le32(*output, 8)), output->size() - 17);
    }

    // The same tags in the same order, one DoAction more just before the
    // first top-level ShowFrame.
    const QList<TagRecord> original = walkTags(writer.build());
    QList<TagRecord> injected = walkTags(plain);
    QCOMPARE(injected.size(), original.size() + 1);
    QCOMPARE(injected.back().code, 0);
    qsizetype firstShowFrame = -1;
    for (qsizetype i = 0; i < original.size() && firstShowFrame < 0; ++i)
        firstShowFrame = original[i].code == SwfWriter::ShowFrameTag ? i : -1;
    QVERIFY(firstShowFrame > 0);
    QCOMPARE(injected[firstShowFrame].code, SwfWriter::DoActionTag);
    QCOMPARE(injected[firstShowFrame + 1].code, SwfWriter::ShowFrameTag);
    injected.removeAt(firstShowFrame);
    for (qsizetype i = 0; i < original.size(); ++i)
        QCOMPARE(injected[i].record.toHex(), original[i].record.toHex());
}

void TestZBFrameControl::spriteFramesAreNotTopLevelFrames()
{
    SwfWriter writer;
    writer.setVersion(8);
    // The sprite's own ShowFrame tags come before any top-level one.
    writer.addTag(39, spriteBody(3));
    writer.addTag(39, spriteBody(70)); // long enough for a long-form record
    writer.addFrames(2);
    const auto output = ZBFrameControlInjector::inject(writer.build(Compression::Zlib), Prefix);
    QVERIFY(output);

    const QList<TagRecord> tags = walkTags(ZBSwfHeader::uncompressedMovie(*output));
    QList<int> codes;
    for (const TagRecord &tag : tags)
        codes.append(tag.code);
    QCOMPARE(codes, (QList<int>{SwfWriter::FileAttributesTag, SwfWriter::SetBackgroundColorTag, 39, 39,
                                SwfWriter::DoActionTag, SwfWriter::ShowFrameTag, SwfWriter::ShowFrameTag, 0}));
    QCOMPARE(tags[2].body, spriteBody(3));
    QCOMPARE(tags[3].body, spriteBody(70));
}

void TestZBFrameControl::bytesAfterEndAreDropped()
{
    const QByteArray input = contentWriter(8).build() + QByteArray("trailing");
    const auto output = ZBFrameControlInjector::inject(input, Prefix);
    QVERIFY(output);
    QVERIFY(!output->endsWith("trailing"));
    QCOMPARE(qsizetype(le32(*output, 4)), output->size());
    QCOMPARE(walkTags(*output).back().code, 0);
    QVERIFY(output->endsWith(SwfWriter::tag(0, {})));
}

void TestZBFrameControl::injectionRefusals_data()
{
    QTest::addColumn<QByteArray>("movie");
    QTest::addColumn<QByteArray>("prefix");

    QTest::newRow("ActionScript 3") << SwfWriter().setVersion(10).setFileAttributes(true, true).addFrames(2).build()
                                    << Prefix.toByteArray();
    // The AS3 flag on a FileAttributes tag that is not the first one.
    QTest::newRow("ActionScript 3, late attributes") << SwfWriter()
                                                            .setVersion(9)
                                                            .setFileAttributes(false)
                                                            .addTag(SwfWriter::FileAttributesTag, hex("08000000"))
                                                            .showFrame()
                                                            .build()
                                                     << Prefix.toByteArray();
    QTest::newRow("DoABC code") << contentWriter(9).addTag(82, hex("0100000000")).build() << Prefix.toByteArray();
    QTest::newRow("version 7") << contentWriter(7).build() << Prefix.toByteArray();
    QTest::newRow("version 7, compressed") << contentWriter(7).build(Compression::Zlib) << Prefix.toByteArray();
    QTest::newRow("no frame") << SwfWriter().setVersion(8).addTag(2, "abc").build() << Prefix.toByteArray();
    QTest::newRow("only sprite frames") << SwfWriter().setVersion(8).addTag(39, spriteBody(2)).build()
                                        << Prefix.toByteArray();
    QTest::newRow("not a movie") << QByteArray("GIF89a and then some more bytes") << Prefix.toByteArray();
    QTest::newRow("prefix with a quote") << contentWriter(8).build() << QByteArray("a'b");
    QTest::newRow("prefix with a zero") << contentWriter(8).build() << QByteArray("a\0b", 3);
    QTest::newRow("prefix with a dot") << contentWriter(8).build() << QByteArray("a.b");

    // A tag that claims more bytes than the movie holds.
    QByteArray overlong = SwfWriter().setVersion(8).showFrame().build();
    const qsizetype at = overlong.size() - 4; // the ShowFrame record
    overlong.replace(at, 2, hex("7f00"));
    overlong.insert(at + 2, hex("ffffff7f"));
    QTest::newRow("tag past the end") << overlong << Prefix.toByteArray();

    // No End tag: the bytes run out between tags.
    QByteArray endless = SwfWriter().setVersion(8).showFrame().build();
    endless.chop(2);
    QTest::newRow("no End") << endless << Prefix.toByteArray();

    QByteArray compressedCut = contentWriter(8).build(Compression::Zlib);
    compressedCut.truncate(compressedCut.size() / 2);
    QTest::newRow("deflated body cut short") << compressedCut << Prefix.toByteArray();
}

void TestZBFrameControl::injectionRefusals()
{
    QFETCH(QByteArray, movie);
    QFETCH(QByteArray, prefix);

    QString error;
    QVERIFY(!ZBFrameControlInjector::inject(movie, prefix, &error));
    QVERIFY(!error.isEmpty());
}

void TestZBFrameControl::truncatedMoviesAreRefusedAtEveryLength()
{
    // Every cut of an uncompressed movie loses the End tag or more, so none
    // may be accepted; none may read past the bytes either (the sanitizer
    // builds check that).
    const QByteArray movie = contentWriter(8).build();
    for (qsizetype length = 0; length < movie.size(); ++length)
    {
        const QByteArray cut = movie.first(length);
        QString error;
        QVERIFY2(!ZBFrameControlInjector::inject(cut, Prefix, &error), qPrintable(QString::number(length)));
        QVERIFY(!error.isEmpty());
    }
    QVERIFY(ZBFrameControlInjector::inject(movie, Prefix));
}

void TestZBFrameControl::injectedCodeSteersTheRoot()
{
    const auto output = ZBFrameControlInjector::inject(contentWriter(8).build(Compression::Lzma), Prefix);
    QVERIFY(output);
    const QByteArray code = addedDoAction(*output, hex("0700"));
    QVERIFY(!code.isEmpty());

    using V = Avm1Machine::Value;
    FlashWorld world;
    ObjectPtr root = world.root();
    root->members["_currentframe"] = 3.0;
    root->members["_totalframes"] = 10.0;
    try
    {
        world.machine().run(code);
        QCOMPARE(world.take(),
                 (QList<Call>{logged("_root.createEmptyMovieClip", {V(QByteArray("__nvk_probe")), V(1048000.0)}),
                              logged("ExternalInterface.call", {V(QByteArray("__nvk_ready")), V(10.0)})}));
        QList<QByteArray> names;
        for (const QByteArray &name : CallbackNames)
            names.append(Prefix.toByteArray() + name);
        std::sort(names.begin(), names.end());
        QCOMPARE(world.callbackNames(), names);

        // Frames counted from 0 for the host, from 1 by the movie.
        QCOMPARE(world.callback("__nvk_currentFrame"), std::optional<V>(2.0));
        QCOMPARE(world.callback("__nvk_totalFrames"), std::optional<V>(10.0));
        world.callback("__nvk_gotoFrame", {V(4.0), V(true)});
        world.callback("__nvk_gotoFrame", {V(0.0), V(false)});
        world.callback("__nvk_play");
        world.callback("__nvk_stop");
        QCOMPARE(world.take(),
                 (QList<Call>{logged("_root.gotoAndPlay", {V(5.0)}), logged("_root.gotoAndStop", {V(1.0)}),
                              logged("_root.play", {}), logged("_root.stop", {})}));

        // The probe says playing only when the frame moved between ticks.
        const ObjectPtr probe = std::get<ObjectPtr>(Avm1Machine::member(root, "__nvk_probe"));
        const ObjectPtr onEnterFrame = std::get<ObjectPtr>(Avm1Machine::member(probe, "onEnterFrame"));
        QCOMPARE(world.callback("__nvk_isPlaying"), std::optional<V>(false));
        root->members["_currentframe"] = 4.0;
        world.machine().call(onEnterFrame, probe, {});
        QCOMPARE(world.callback("__nvk_isPlaying"), std::optional<V>(true));
        world.machine().call(onEnterFrame, probe, {});
        QCOMPARE(world.callback("__nvk_isPlaying"), std::optional<V>(false));
        root->members["_currentframe"] = 1.0; // looped
        world.machine().call(onEnterFrame, probe, {});
        QCOMPARE(world.callback("__nvk_isPlaying"), std::optional<V>(true));
        // Every tick counts, moved or not: the host waits for one after a goto.
        QCOMPARE(world.callback("__nvk_ticks"), std::optional<V>(3.0));

        // Looping runs frame 1's actions again: the probe and what it knows
        // stay, and ready is not announced twice.
        world.machine().run(code);
        QVERIFY(world.take().isEmpty());
        QCOMPARE(Avm1Machine::member(root, "__nvk_probe"), V(probe));
        QCOMPARE(world.callback("__nvk_isPlaying"), std::optional<V>(true));
    }
    catch (const std::exception &e)
    {
        QFAIL(e.what());
    }
}

void TestZBFrameControl::wrapperMatchesTheContentStage_data()
{
    QTest::addColumn<SwfWriter::Compression>("compression");
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("xMin");
    QTest::addColumn<int>("yMin");
    QTest::addColumn<bool>("background");
    QTest::newRow("FWS 4") << Compression::None << 4 << 0 << 0 << true;
    QTest::newRow("FWS 5, no background: white") << Compression::None << 5 << 0 << 0 << false;
    QTest::newRow("CWS 6, offset stage") << Compression::Zlib << 6 << -200 << 40 << true;
    QTest::newRow("CWS 7") << Compression::Zlib << 7 << 0 << 0 << true;
}

void TestZBFrameControl::wrapperMatchesTheContentStage()
{
    QFETCH(SwfWriter::Compression, compression);
    QFETCH(int, version);
    QFETCH(int, xMin);
    QFETCH(int, yMin);
    QFETCH(bool, background);

    SwfWriter writer = contentWriter(version);
    writer.setFrameRect(xMin, xMin + 320 * 20, yMin, yMin + 240 * 20).setFrameRate(12.5);
    writer.setBackgroundColor(0x10, 0x20, 0x30).setBackgroundColorTag(background);
    QString error;
    const auto output = ZBFrameControlWrapper::wrap(writer.build(compression), ContentUrl, Prefix, &error);
    QVERIFY2(output, qPrintable(error));

    const auto header = ZBSwfHeader::readHeader(*output);
    QVERIFY(header);
    QCOMPARE(header->signature, QByteArray("FWS"));
    QCOMPARE(header->version, 8);
    QCOMPARE(header->frameCount, quint16(1));
    QCOMPARE(header->xMin, xMin);
    QCOMPARE(header->xMax, xMin + 6400);
    QCOMPARE(header->yMin, yMin);
    QCOMPARE(header->yMax, yMin + 4800);
    QCOMPARE(header->frameRate, 12.5);
    QVERIFY(header->hasFileAttributes && !header->isAS3);
    QCOMPARE(header->fileLength, quint32(output->size()));

    const QList<TagRecord> tags = walkTags(*output);
    QList<int> codes;
    for (const TagRecord &tag : tags)
        codes.append(tag.code);
    QCOMPARE(codes, (QList<int>{SwfWriter::FileAttributesTag, SwfWriter::SetBackgroundColorTag, SwfWriter::DoActionTag,
                                SwfWriter::ShowFrameTag, 0}));
    QCOMPARE(tags[1].body.toHex(), QByteArray(background ? "102030" : "ffffff"));
}

void TestZBFrameControl::wrapperCodeLoadsAndSteersTheContent()
{
    const auto output = ZBFrameControlWrapper::wrap(contentWriter(6).build(), ContentUrl, "nv_");
    QVERIFY(output);
    const QList<TagRecord> tags = walkTags(*output);
    QVERIFY(tags.size() == 5 && tags[2].code == SwfWriter::DoActionTag);

    using V = Avm1Machine::Value;
    FlashWorld world;
    ObjectPtr root = world.root();
    try
    {
        world.machine().run(tags[2].body);
        const Avm1Machine::Value contentValue = Avm1Machine::member(root, "nv_content");
        QVERIFY(std::holds_alternative<ObjectPtr>(contentValue));
        const ObjectPtr content = std::get<ObjectPtr>(contentValue);
        QCOMPARE(Avm1Machine::member(content, "_lockroot"), V(true));

        const QList<Call> started = world.take();
        QCOMPARE(started.size(), 3);
        QCOMPARE(started[0], logged("_root.createEmptyMovieClip", {V(QByteArray("nv_content")), V(1.0)}));
        QCOMPARE(started[1], logged("_root.createEmptyMovieClip", {V(QByteArray("nv_probe")), V(1048000.0)}));
        // Nothing is ready before the content has loaded.
        QCOMPARE(started[2], logged("loader.loadClip", {V(ContentUrl), V(content)}));
        QCOMPARE(world.callbackNames().size(), CallbackNames.size());

        content->members["_currentframe"] = 7.0;
        content->members["_totalframes"] = 20.0;
        QCOMPARE(world.listeners().size(), 1);
        const Avm1Machine::Value onLoadInit = Avm1Machine::member(world.listeners().front(), "onLoadInit");
        QVERIFY(std::holds_alternative<ObjectPtr>(onLoadInit));
        world.machine().call(std::get<ObjectPtr>(onLoadInit), world.listeners().front(), {});
        QCOMPARE(world.take(), (QList<Call>{logged("ExternalInterface.call", {V(QByteArray("nv_ready")), V(20.0)})}));

        // The callbacks steer the content clip, never the host's own root.
        QCOMPARE(world.callback("nv_currentFrame"), std::optional<V>(6.0));
        QCOMPARE(world.callback("nv_totalFrames"), std::optional<V>(20.0));
        world.callback("nv_gotoFrame", {V(2.0), V(true)});
        world.callback("nv_stop");
        QCOMPARE(world.take(),
                 (QList<Call>{logged("nv_content.gotoAndPlay", {V(3.0)}), logged("nv_content.stop", {})}));

        const ObjectPtr probe = std::get<ObjectPtr>(Avm1Machine::member(root, "nv_probe"));
        const ObjectPtr onEnterFrame = std::get<ObjectPtr>(Avm1Machine::member(probe, "onEnterFrame"));
        world.machine().call(onEnterFrame, probe, {});
        QCOMPARE(world.callback("nv_isPlaying"), std::optional<V>(true));
        root->members["_currentframe"] = 5.0; // the host's frame is not the content's
        world.machine().call(onEnterFrame, probe, {});
        QCOMPARE(world.callback("nv_isPlaying"), std::optional<V>(false));
    }
    catch (const std::exception &e)
    {
        QFAIL(e.what());
    }
}

void TestZBFrameControl::wrapperRefusals_data()
{
    QTest::addColumn<QByteArray>("movie");
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArray>("prefix");

    const QByteArray url = ContentUrl;
    const QByteArray prefix = Prefix.toByteArray();
    QTest::newRow("version 8") << contentWriter(8).build() << url << prefix;
    QTest::newRow("empty URL") << contentWriter(6).build() << QByteArray() << prefix;
    QTest::newRow("URL with a zero") << contentWriter(6).build() << QByteArray("a\0b", 3) << prefix;
    QTest::newRow("bad prefix") << contentWriter(6).build() << url << QByteArray("x y");
    QByteArray cut = contentWriter(6).build();
    cut.chop(3);
    QTest::newRow("truncated") << cut << url << prefix;
    QTest::newRow("not a movie") << QByteArray("FWX\x06....") << url << prefix;
}

void TestZBFrameControl::wrapperRefusals()
{
    QFETCH(QByteArray, movie);
    QFETCH(QByteArray, url);
    QFETCH(QByteArray, prefix);

    QString error;
    QVERIFY(!ZBFrameControlWrapper::wrap(movie, url, prefix, &error));
    QVERIFY(!error.isEmpty());
}

QTEST_GUILESS_MAIN(TestZBFrameControl)
#include "tst_zbframecontrol.moc"
