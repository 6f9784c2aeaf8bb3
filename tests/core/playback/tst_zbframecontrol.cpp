#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <variant>

#include <QTest>
#include <QtEndian>

#include "playback/flash/zbavm1assembler.h"
#include "playback/flash/zbframecontrolinjector.h"
#include "playback/flash/zbframecontrolscript.h"
#include "playback/flash/zbframecontrolwrapper.h"
#include "playback/zbswfheader.h"
#include "support/swfwriter.h"

using nvktest::SwfWriter;
using Compression = SwfWriter::Compression;

Q_DECLARE_METATYPE(SwfWriter::Compression)

namespace
{
constexpr QByteArrayView Prefix = "__nvk_";
const QByteArray Url = "nvk-movie://movie/42.swf";

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray sprite(int frames)
{
    QByteArray body = hex("0700") + char(frames) + '\0';
    for (int i = 0; i < frames; ++i)
        body += SwfWriter::tag(SwfWriter::ShowFrameTag, {});
    return body + SwfWriter::tag(0, {});
}

// A shape in long form, a sprite whose own frames come before any of the main
// timeline's, a frame script of the movie's own, then four frames. `injected`
// stands where the injector puts its code: just before the first frame ends.
SwfWriter content(int version, const QByteArray &injected = {})
{
    SwfWriter writer;
    writer.setVersion(version).setStageSize(640, 480).setFrameRate(29.97).setBackgroundColor(0x12, 0x34, 0x56);
    writer.addTag(2, QByteArray(100, 'x')).addTag(39, sprite(70)).addTag(SwfWriter::DoActionTag, hex("0700"));
    if (!injected.isEmpty())
        writer.addTag(SwfWriter::DoActionTag, injected);
    return writer.showFrame().addTag(26, QByteArray("\x06\x01\x00", 3)).addFrames(3);
}

// The Flash runtime around the frame-control code, as far as that code uses
// it: the actions ZBFrameControlScript writes and no others, objects whose
// methods not defined in code are logged, ExternalInterface keeping the
// callbacks. Anything else, a stack that runs dry or a value of the wrong
// type throws.
struct Object;
using Ptr = std::shared_ptr<Object>;
using Value = std::variant<std::monostate, bool, double, QByteArray, Ptr>; // monostate: undefined and null
using std::get;
struct Object
{
    QByteArray name;
    QMap<QByteArray, Value> members;
    QList<QByteArray> parameters;
    QByteArray body;
};

Ptr make(const QByteArray &name, const QMap<QByteArray, Value> &members = {})
{
    return std::make_shared<Object>(Object{name, members, {}, {}});
}

bool truthy(const Value &value)
{
    return std::holds_alternative<Ptr>(value) || value == Value(true);
}

QByteArray text(const Value &value)
{
    if (const auto *d = std::get_if<double>(&value))
        return QByteArray::number(*d, 'g', 10);
    if (const auto *s = std::get_if<QByteArray>(&value))
        return *s;
    if (const auto *o = std::get_if<Ptr>(&value))
        return (*o)->name;
    return value == Value(true) ? "true" : value == Value(false) ? "false" : "undefined";
}

quint32 le(const QByteArray &code, qsizetype at, int bytes)
{
    if (at < 0 || at + bytes > code.size())
        throw std::runtime_error("AVM1: read past the code");
    return qFromLittleEndian<quint32>(QByteArray(code.mid(at, bytes) + QByteArray(4, '\0')).constData());
}

QByteArray cString(const QByteArray &code, qsizetype &at)
{
    const QByteArray string = code.mid(at).split('\0').value(0);
    at += string.size() + 1;
    return string;
}

// The top `count` values, the top one first.
QList<Value> take(QList<Value> &stack, int count)
{
    if (count < 0 || count > stack.size())
        throw std::runtime_error("AVM1: stack underflow");
    QList<Value> values;
    for (int i = 0; i < count; ++i)
        values << stack.takeLast();
    return values;
}

QList<Value> arguments(QList<Value> &stack)
{
    return take(stack, int(get<double>(take(stack, 1)[0])));
}

void push(const QByteArray &code, qsizetype at, qsizetype end, QList<Value> &stack)
{
    while (at < end)
    {
        const quint32 type = le(code, at++, 1);
        if (type == 0)
            stack << cString(code, at);
        else if (type == 2 || type == 3)
            stack << Value();
        else if (type == 5)
            stack << (le(code, at++, 1) != 0);
        else if (type == 7)
            stack << double(qint32(le(code, std::exchange(at, at + 4), 4)));
        else
            throw std::runtime_error("AVM1: push type " + std::to_string(type));
    }
}

// The record at `at`; the body follows it, from `next` on, which moves past it.
Ptr defineFunction(const QByteArray &code, qsizetype at, qsizetype &next)
{
    cString(code, at); // the name; ours are all anonymous
    const Ptr function = make("function");
    for (quint32 count = le(code, std::exchange(at, at + 2), 2); count > 0; --count)
        function->parameters << cString(code, at);
    function->body = code.mid(next, le(code, at, 2));
    next += le(code, at, 2);
    return function;
}

class Flash
{
public:
    Ptr root = make("_root");
    QMap<QByteArray, Ptr> callbacks;
    QList<Ptr> listeners;
    QByteArrayList log;

    Value run(const QByteArray &code, QMap<QByteArray, Value> locals = {})
    {
        // What each action takes off the stack before it does its work.
        static const QMap<quint32, int> Operands{{0x0B, 2}, {0x47, 2}, {0x49, 2}, {0x12, 1}, {0x17, 1}, {0x1C, 1},
                                                 {0x4E, 2}, {0x4F, 3}, {0x52, 2}, {0x40, 1}, {0x3E, 1}, {0x9D, 1}};
        QList<Value> stack;
        for (qsizetype pc = 0; pc < code.size();)
        {
            const quint32 action = le(code, pc, 1);
            qsizetype next = action < 0x80 ? pc + 1 : pc + 3 + le(code, pc + 1, 2);
            const QList<Value> in = take(stack, Operands.value(action));
            if (action == 0x00 || action == 0x3E) // End, Return
                return in.value(0);
            else if (action == 0x0B || action == 0x47) // Subtract, Add2
                stack << get<double>(in[1]) + (action == 0x0B ? -1 : 1) * get<double>(in[0]);
            else if (action == 0x49) // Equals2
                stack << (in[0] == in[1]);
            else if (action == 0x12) // Not
                stack << !truthy(in[0]);
            else if (action == 0x1C) // GetVariable
                stack << (locals.contains(get<QByteArray>(in[0])) ? locals : m_globals).value(get<QByteArray>(in[0]));
            else if (action == 0x4E) // GetMember
                stack << get<Ptr>(in[1])->members.value(get<QByteArray>(in[0]));
            else if (action == 0x4F) // SetMember
                get<Ptr>(in[2])->members[get<QByteArray>(in[1])] = in[0];
            else if (action == 0x52) // CallMethod
                stack << callMethod(get<Ptr>(in[1]), get<QByteArray>(in[0]), arguments(stack));
            else if (action == 0x40 && arguments(stack).isEmpty()) // NewObject, of a class without arguments
                stack << make(get<QByteArray>(in[0]));
            else if (action == 0x43) // InitObject: value, name, value, name...
            {
                const QList<Value> pairs = take(stack, 2 * int(get<double>(take(stack, 1)[0])));
                stack << make("object");
                for (qsizetype i = 0; i < pairs.size(); i += 2)
                    get<Ptr>(stack.last())->members[get<QByteArray>(pairs[i + 1])] = pairs[i];
            }
            else if (action == 0x96) // Push
                push(code, pc + 3, next, stack);
            else if (action == 0x99 || action == 0x9D) // Jump, If
                next += action == 0x99 || truthy(in[0]) ? qint16(le(code, pc + 3, 2)) : 0;
            else if (action == 0x9B) // DefineFunction
                stack << defineFunction(code, pc + 3, next);
            else if (action != 0x17) // Pop
                throw std::runtime_error("AVM1: action " + std::to_string(action) + " is not one of ours");
            pc = next;
        }
        return {};
    }

    Value invoke(const Ptr &function, const QList<Value> &arguments = {})
    {
        QMap<QByteArray, Value> locals;
        for (qsizetype i = 0; i < function->parameters.size(); ++i)
            locals[function->parameters[i]] = arguments.value(i);
        return run(function->body, locals);
    }

    // Calls a registered callback; what it answers, when anything, goes to
    // the log.
    void callback(const QByteArray &name, const QList<Value> &arguments = {})
    {
        const Ptr function = callbacks.value(Prefix.toByteArray() + name);
        if (!function)
            throw std::runtime_error("no callback " + name.toStdString());
        const Value result = invoke(function, arguments);
        if (!std::holds_alternative<std::monostate>(result))
            log << name + " = " + text(result);
    }

    // One frame tick with `clip` on `frame`: the probe clip's onEnterFrame.
    void tick(const Ptr &clip, double frame)
    {
        clip->members["_currentframe"] = frame;
        invoke(get<Ptr>(get<Ptr>(root->members.value("__nvk_probe"))->members.value("onEnterFrame")));
    }

private:
    Value callMethod(const Ptr &self, const QByteArray &name, const QList<Value> &arguments)
    {
        if (std::holds_alternative<Ptr>(self->members.value(name)))
            return invoke(get<Ptr>(self->members.value(name)), arguments);
        if (name == "addCallback" && arguments.size() == 3 && arguments[1] == Value())
            return callbacks[get<QByteArray>(arguments[0])] = get<Ptr>(arguments[2]);
        QByteArrayList shown;
        for (const Value &argument : arguments)
            shown << text(argument);
        log << self->name + "." + name + "(" + shown.join(", ") + ")";
        if (name == "addListener")
            listeners << get<Ptr>(arguments.value(0));
        if (name != "createEmptyMovieClip")
            return {};
        return self->members[get<QByteArray>(arguments.value(0))] = make(get<QByteArray>(arguments.value(0)));
    }

    QMap<QByteArray, Value> m_globals{
        {"_root", root},
        {"flash", make("flash", {{"external", make("external", {{"ExternalInterface", make("ExternalInterface")}})}})}};
};

const QByteArrayList CallbackNames{"__nvk_currentFrame", "__nvk_gotoFrame", "__nvk_isPlaying",  "__nvk_play",
                                   "__nvk_stop",         "__nvk_ticks",     "__nvk_totalFrames"};
} // namespace

// Flash frame control below the engine: the AVM1 assembler, the injector that
// adds the callbacks to version 8+ movies, the wrapper that loads older ones,
// and what the code they carry does when a Flash runtime runs it.
class TestZBFrameControl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void assembled_data();
    void assembled();
    void invalidInputMarksTheAssembler();
    void injectionKeepsTheMovie_data();
    void injectionKeepsTheMovie();
    void wrapperMatchesTheContentStage_data();
    void wrapperMatchesTheContentStage();
    void refusals_data();
    void refusals();
    void injectedCodeSteersTheRoot();
    void wrapperCodeLoadsAndSteersTheContent();
};

void TestZBFrameControl::assembled_data()
{
    QTest::addColumn<QByteArray>("code");
    QTest::addColumn<QByteArray>("expected");
    using A = ZBAvm1Assembler;
    using V = A::Value;
    const auto row = [](const char *name, const A &code, const char *expected)
    {
        QVERIFY(code.isValid());
        QTest::newRow(name) << code.bytes() << hex(expected);
    };
    A simple;
    simple.end().play().stop().subtract().logicalNot().pop().getVariable().setVariable().callFunction();
    simple.returnValue().newObject().initObject().add2().less2().equals2().getMember().setMember().callMethod();
    row("one-byte actions", simple, "0006070b12171c1d3d3e40434748494e4f52");
    // A string, UTF-8, an integer, booleans, null, undefined, a register,
    // constants in their 8- and 16-bit forms: one record.
    row("push of every type",
        A().push({V::string("ab"), V::string("\xc3\xa9"), V::integer(-2), V::boolean(true), V::boolean(false),
                  V::null(), V::undefined(), V::registerNumber(3), V::constant(255), V::constant(300)}),
        "961a00 00616200 00c3a900 07feffffff 0501 0500 02 03 0403 08ff 092c01");
    row("push shorthands", A().pushString("x").pushInteger(0x12345678), "9603000078009605000778563412");
    // Count 2, then "a\0" and "bc\0".
    row("constant pool", A().constantPool({"a", "bc"}), "88070002006100626300");
    row("branches and gotos", A().ifTrue(21).jump(-5).gotoFrame2(true).gotoFrame2(false),
        "9d02001500990200fbff9f0100019f010000");
    // "f\0", 2 parameters, "a\0", "bc\0", code size 2, the body; then one
    // without a name, parameters or body.
    row("functions", A().defineFunction("f", {"a", "bc"}, A().play().stop()).defineFunction({}, {}, A()),
        "9b0b00 6600 0200 6100 626300 0200 0607 9b0500 00 0000 0000");
}

void TestZBFrameControl::assembled()
{
    QFETCH(QByteArray, code);
    QFETCH(QByteArray, expected);
    QCOMPARE(code.toHex(), expected.toHex());
}

void TestZBFrameControl::invalidInputMarksTheAssembler()
{
    QVERIFY(!ZBAvm1Assembler().pushString(QByteArrayView("a\0b", 3)).isValid());
    QVERIFY(!ZBAvm1Assembler().defineFunction("f", {QByteArray("a\0", 2)}, ZBAvm1Assembler()).isValid());
    // A payload past the UI16 length is not written at all: a wrapped length
    // would make the rest of the code read as other actions.
    ZBAvm1Assembler tooLong;
    tooLong.play().pushString(QByteArray(70000, 'a'));
    QVERIFY(!tooLong.isValid());
    QCOMPARE(tooLong.bytes().toHex(), QByteArray("06"));
    ZBAvm1Assembler invalid;
    invalid.pushString(QByteArrayView("\0", 1));
    QVERIFY(!ZBAvm1Assembler().defineFunction({}, {}, invalid).isValid());
    QVERIFY(!ZBAvm1Assembler().append(invalid).isValid());
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
    // Bytes after the End tag are no part of the movie and are dropped.
    const QByteArray input = content(version).build(compression) + (compression == Compression::None ? "trailing" : "");
    QString error;
    const std::optional<QByteArray> output = ZBFrameControlInjector::inject(input, Prefix, &error);
    QVERIFY2(output, qPrintable(error));
    // The signature and version stay; every tag stays byte for byte and the
    // code goes in before the first frame of the main timeline ends, with
    // the file length counting it.
    QCOMPARE(output->left(4), input.left(4));
    const QByteArray expected = content(version, ZBFrameControlScript::forRoot(Prefix)).build();
    QCOMPARE((compression == Compression::None ? *output : ZBSwfHeader::uncompressedMovie(*output)).toHex(),
             expected.toHex());
    // The stored LZMA length counts the data after the 5 property bytes.
    if (compression == Compression::Lzma)
        QCOMPARE(qsizetype(le(*output, 8, 4)), output->size() - 17);
}

void TestZBFrameControl::wrapperMatchesTheContentStage_data()
{
    QTest::addColumn<SwfWriter::Compression>("compression");
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("background");
    QTest::newRow("FWS 5, no background: white") << Compression::None << 5 << false;
    QTest::newRow("CWS 7") << Compression::Zlib << 7 << true;
}

void TestZBFrameControl::wrapperMatchesTheContentStage()
{
    QFETCH(SwfWriter::Compression, compression);
    QFETCH(int, version);
    QFETCH(bool, background);
    SwfWriter writer = content(version);
    writer.setFrameRect(-200, 6200, 40, 4840).setFrameRate(12.5).setBackgroundColorTag(background);
    QString error;
    const auto output = ZBFrameControlWrapper::wrap(writer.build(compression), Url, Prefix, &error);
    QVERIFY2(output, qPrintable(error));

    // One uncompressed version 8 frame of the content's stage, rate and
    // colour (white when it names none) that carries the loader code.
    SwfWriter expected;
    expected.setVersion(8).setFrameRect(-200, 6200, 40, 4840).setFrameRate(12.5);
    if (background)
        expected.setBackgroundColor(0x12, 0x34, 0x56);
    expected.addTag(SwfWriter::DoActionTag, ZBFrameControlScript::forLoader(Prefix, Url)).showFrame();
    QCOMPARE(output->toHex(), expected.build().toHex());
}

void TestZBFrameControl::refusals_data()
{
    QTest::addColumn<bool>("wrap");
    QTest::addColumn<QByteArray>("movie");
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArray>("prefix");
    const QByteArray v8 = content(8).build();
    const QByteArray v6 = content(6).build();
    const QByteArray prefix = Prefix.toByteArray();
    const auto row =
        [&](const char *name, bool wrap, const QByteArray &movie, const QByteArray &url = Url, const QByteArray &p = {})
    {
        QTest::newRow(name) << wrap << movie << url << (p.isEmpty() ? prefix : p);
    };

    row("AS3", false, SwfWriter().setVersion(10).setFileAttributes(true, true).addFrames(2).build());
    // The AS3 flag on a FileAttributes tag that is not the first one.
    row("AS3, late attributes", false,
        SwfWriter().setFileAttributes(false).addTag(SwfWriter::FileAttributesTag, hex("08000000")).showFrame().build());
    row("DoABC code", false, content(9).addTag(82, hex("0100000000")).build());
    row("version 7", false, content(7).build(Compression::Zlib));
    row("no frame", false, SwfWriter().setVersion(8).addTag(2, "abc").build());
    row("only sprite frames", false, SwfWriter().setVersion(8).addTag(39, sprite(2)).build());
    row("not a movie", false, "GIF89a and then some more bytes");
    row("prefix with a zero", false, v8, Url, QByteArray("a\0b", 3));
    // A tag that claims more bytes than the movie holds.
    QByteArray overlong = SwfWriter().setVersion(8).showFrame().build();
    overlong.replace(overlong.size() - 4, 2, hex("7f00ffffff7f"));
    row("tag past the end", false, overlong);
    const QByteArray deflated = content(8).build(Compression::Zlib);
    row("deflated body cut short", false, deflated.first(deflated.size() / 2));
    // Every cut of an uncompressed movie loses the End tag or more; none may
    // read past the bytes either (the sanitizer builds check that).
    for (qsizetype length = 0; length < v8.size(); ++length)
        row(QByteArray("cut to " + QByteArray::number(length)).constData(), false, v8.first(length));

    row("wrapped: version 8", true, v8);
    row("wrapped: empty URL", true, v6, QByteArray());
    row("wrapped: URL with a zero", true, v6, QByteArray("a\0b", 3));
    row("wrapped: bad prefix", true, v6, Url, "x y");
    row("wrapped: truncated", true, v6.chopped(3));
    row("wrapped: not a movie", true, "FWX\x06....");
}

void TestZBFrameControl::refusals()
{
    QFETCH(bool, wrap);
    QFETCH(QByteArray, movie);
    QFETCH(QByteArray, url);
    QFETCH(QByteArray, prefix);
    QString error;
    QVERIFY(!(wrap ? ZBFrameControlWrapper::wrap(movie, url, prefix, &error)
                   : ZBFrameControlInjector::inject(movie, prefix, &error)));
    QVERIFY(!error.isEmpty());
}

void TestZBFrameControl::injectedCodeSteersTheRoot()
{
    Flash flash;
    const QByteArray code = ZBFrameControlScript::forRoot(Prefix);
    const auto steps = [&]()
    {
        flash.root->members["_totalframes"] = 10.0;
        flash.root->members["_currentframe"] = 3.0;
        flash.run(code);
        for (const char *name : {"currentFrame", "totalFrames", "isPlaying"})
            flash.callback(name);
        flash.callback("gotoFrame", {4.0, true});
        flash.callback("gotoFrame", {0.0, false});
        flash.callback("play");
        flash.callback("stop");
        // Frame 1 after the last is a loop; a tick on the same frame is
        // still a tick, which the host waits for after a goto.
        for (const double frame : {4.0, 4.0, 1.0})
        {
            flash.tick(flash.root, frame);
            flash.callback("isPlaying");
        }
        flash.callback("ticks");
        // Looping runs frame 1's actions again: the probe and what it
        // knows stay, and ready is not announced twice.
        flash.run(code);
        flash.callback("isPlaying");
        flash.callback("ticks");
    };
    QVERIFY_THROWS_NO_EXCEPTION(steps());
    QCOMPARE(
        flash.log,
        (QByteArrayList{"_root.createEmptyMovieClip(__nvk_probe, 1048000)", "ExternalInterface.call(__nvk_ready, 10)",
                        "currentFrame = 2", "totalFrames = 10", "isPlaying = false", "_root.gotoAndPlay(5)",
                        "_root.gotoAndStop(1)", "_root.play()", "_root.stop()", "isPlaying = true", "isPlaying = false",
                        "isPlaying = true", "ticks = 3", "isPlaying = true", "ticks = 3"}));
    QCOMPARE(flash.callbacks.keys(), CallbackNames);
}

void TestZBFrameControl::wrapperCodeLoadsAndSteersTheContent()
{
    Flash flash;
    const auto steps = [&]()
    {
        flash.run(ZBFrameControlScript::forLoader(Prefix, Url));
        const Ptr content = get<Ptr>(flash.root->members.value("__nvk_content"));
        flash.log << "_lockroot = " + text(content->members.value("_lockroot"));
        content->members["_totalframes"] = 20.0;
        for (const Ptr &listener : flash.listeners)
            flash.invoke(get<Ptr>(listener->members.value("onLoadInit")));
        flash.tick(content, 7.0);
        for (const char *name : {"currentFrame", "totalFrames", "isPlaying"})
            flash.callback(name);
        flash.callback("gotoFrame", {2.0, true});
        flash.callback("stop");
        // The host's own frame is not the content's.
        flash.tick(flash.root, 5.0);
        flash.callback("isPlaying");
        flash.callback("ticks");
    };
    QVERIFY_THROWS_NO_EXCEPTION(steps());
    // Nothing is ready before the content has loaded; the callbacks steer the
    // content clip, never the host's own root.
    QCOMPARE(flash.log,
             (QByteArrayList{"_root.createEmptyMovieClip(__nvk_content, 1)",
                             "_root.createEmptyMovieClip(__nvk_probe, 1048000)", "MovieClipLoader.addListener(object)",
                             "MovieClipLoader.loadClip(" + Url + ", __nvk_content)", "_lockroot = true",
                             "ExternalInterface.call(__nvk_ready, 20)", "currentFrame = 6", "totalFrames = 20",
                             "isPlaying = true", "__nvk_content.gotoAndPlay(3)", "__nvk_content.stop()",
                             "isPlaying = false", "ticks = 2"}));
    QCOMPARE(flash.callbacks.keys(), CallbackNames);
}

QTEST_GUILESS_MAIN(TestZBFrameControl)
#include "tst_zbframecontrol.moc"
