#include "playback/flash/zbframecontrolscript.h"

#include <utility>

#include "playback/flash/zbavm1assembler.h"

namespace
{
using Value = ZBAvm1Assembler::Value;

// Registers `function` under `name`: ExternalInterface.addCallback(name,
// null, function). Arguments go on the stack last first, then their count,
// the object and the method name.
void addCallback(ZBAvm1Assembler &code, const QByteArray &name, const QList<QByteArray> &parameters,
                 const ZBAvm1Assembler &function)
{
    code.defineFunction({}, parameters, function);
    code.push({Value::null(), Value::string(name), Value::integer(3)});
}
} // namespace

bool ZBFrameControlScript::isValidPrefix(QByteArrayView prefix)
{
    for (const char c : prefix)
    {
        const bool allowed =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$';
        if (!allowed)
            return false;
    }
    return true;
}

QByteArray ZBFrameControlScript::contentClipName(QByteArrayView prefix)
{
    return prefix.toByteArray() + "content";
}

QByteArray ZBFrameControlScript::probeClipName(QByteArrayView prefix)
{
    return prefix.toByteArray() + "probe";
}

void ZBFrameControlScript::pushTarget(ZBAvm1Assembler &code, const QByteArray &childClip)
{
    code.pushString("_root").getVariable();
    if (!childClip.isEmpty())
        code.pushString(childClip).getMember();
}

void ZBFrameControlScript::pushExternalInterface(ZBAvm1Assembler &code)
{
    code.pushString("flash").getVariable();
    code.pushString("external").getMember();
    code.pushString("ExternalInterface").getMember();
}

void ZBFrameControlScript::registerCallbacks(ZBAvm1Assembler &code, const QByteArray &prefix,
                                             const QByteArray &childClip)
{
    const auto finishAddCallback = [&code]()
    {
        pushExternalInterface(code);
        code.pushString("addCallback").callMethod().pop();
    };

    // The movie counts frames from 1, the host from 0.
    ZBAvm1Assembler currentFrame;
    pushTarget(currentFrame, childClip);
    currentFrame.pushString("_currentframe").getMember().pushInteger(1).subtract().returnValue();
    addCallback(code, prefix + "currentFrame", {}, currentFrame);
    finishAddCallback();

    ZBAvm1Assembler totalFrames;
    pushTarget(totalFrames, childClip);
    totalFrames.pushString("_totalframes").getMember().returnValue();
    addCallback(code, prefix + "totalFrames", {}, totalFrames);
    finishAddCallback();

    // target[play ? "gotoAndPlay" : "gotoAndStop"](n + 1): the argument, its
    // count and the clip go on the stack first, the branch picks the method.
    ZBAvm1Assembler playName;
    playName.pushString("gotoAndPlay");
    ZBAvm1Assembler stopName;
    stopName.pushString("gotoAndStop");
    ZBAvm1Assembler gotoFrame;
    gotoFrame.pushString("n").getVariable().pushInteger(1).add2().pushInteger(1);
    pushTarget(gotoFrame, childClip);
    gotoFrame.pushString("p").getVariable().logicalNot();
    ZBAvm1Assembler jumpOverStop;
    jumpOverStop.jump(qint16(stopName.size()));
    gotoFrame.ifTrue(qint16(playName.size() + jumpOverStop.size()));
    gotoFrame.append(playName).append(jumpOverStop).append(stopName);
    gotoFrame.callMethod().pop();
    addCallback(code, prefix + "gotoFrame", {"n", "p"}, gotoFrame);
    finishAddCallback();

    for (const char *method : {"play", "stop"})
    {
        ZBAvm1Assembler call;
        call.pushInteger(0);
        pushTarget(call, childClip);
        call.pushString(method).callMethod().pop();
        addCallback(code, prefix + method, {}, call);
        finishAddCallback();
    }

    for (const auto &[callback, field] : {std::pair{"isPlaying", "p"}, std::pair{"ticks", "t"}})
    {
        ZBAvm1Assembler read;
        pushTarget(read, {});
        read.pushString(probeClipName(prefix)).getMember().pushString(field).getMember().returnValue();
        addCallback(code, prefix + callback, {}, read);
        finishAddCallback();
    }
}

void ZBFrameControlScript::createProbe(ZBAvm1Assembler &code, const QByteArray &prefix, const QByteArray &childClip)
{
    const QByteArray probe = probeClipName(prefix);
    const auto pushProbe = [&probe](ZBAvm1Assembler &to)
    {
        pushTarget(to, {});
        to.pushString(probe).getMember();
    };
    const auto pushFrame = [&childClip](ZBAvm1Assembler &to)
    {
        pushTarget(to, childClip);
        to.pushString("_currentframe").getMember();
    };

    // _root.createEmptyMovieClip(probe, ProbeDepth); the probe lives on the
    // outermost _root so loading content never replaces it.
    code.push({Value::integer(ProbeDepth), Value::string(probe), Value::integer(2)});
    pushTarget(code, {});
    code.pushString("createEmptyMovieClip").callMethod().pop();

    // probe.l = frame; probe.p = false
    pushProbe(code);
    code.pushString("l");
    pushFrame(code);
    code.setMember();
    pushProbe(code);
    code.push({Value::string("p"), Value::boolean(false)}).setMember();
    pushProbe(code);
    code.push({Value::string("t"), Value::integer(0)}).setMember();

    // probe.onEnterFrame = function() { probe.p = frame != probe.l;
    // probe.l = frame; }
    ZBAvm1Assembler onEnterFrame;
    pushProbe(onEnterFrame);
    onEnterFrame.pushString("p");
    pushFrame(onEnterFrame);
    pushProbe(onEnterFrame);
    onEnterFrame.pushString("l").getMember().equals2().logicalNot().setMember();
    pushProbe(onEnterFrame);
    onEnterFrame.pushString("l");
    pushFrame(onEnterFrame);
    onEnterFrame.setMember();
    // probe.t = probe.t + 1: the engine draws only when a frame has run, so
    // the host counts frames to know a paused goto is on screen.
    pushProbe(onEnterFrame);
    onEnterFrame.pushString("t");
    pushProbe(onEnterFrame);
    onEnterFrame.pushString("t").getMember().pushInteger(1).add2().setMember();

    pushProbe(code);
    code.pushString("onEnterFrame");
    code.defineFunction({}, {}, onEnterFrame);
    code.setMember();
}

void ZBFrameControlScript::callReady(ZBAvm1Assembler &code, const QByteArray &prefix, const QByteArray &childClip)
{
    // ExternalInterface.call(prefix + "ready", target._totalframes)
    pushTarget(code, childClip);
    code.pushString("_totalframes").getMember();
    code.push({Value::string(QByteArray(prefix + "ready")), Value::integer(2)});
    pushExternalInterface(code);
    code.pushString("call").callMethod().pop();
}

QByteArray ZBFrameControlScript::forRoot(QByteArrayView prefix)
{
    const QByteArray name = prefix.toByteArray();
    ZBAvm1Assembler install;
    createProbe(install, name, {});
    registerCallbacks(install, name, {});
    callReady(install, name, {});

    // Frame 1's actions run again each time the movie loops or is sent back
    // there; the probe's presence says the callbacks are in place, and
    // replacing it would lose what it knows and announce ready once more.
    ZBAvm1Assembler code;
    pushTarget(code, {});
    code.pushString(probeClipName(prefix)).getMember();
    if (install.size() > 0x7fff)
        return QByteArray();
    code.ifTrue(qint16(install.size()));
    code.append(install);
    code.end();
    return code.isValid() ? code.bytes() : QByteArray();
}

QByteArray ZBFrameControlScript::forLoader(QByteArrayView prefix, QByteArrayView contentUrl)
{
    const QByteArray name = prefix.toByteArray();
    const QByteArray content = contentClipName(prefix);
    ZBAvm1Assembler code;

    // _root.createEmptyMovieClip(content, ContentDepth)._lockroot = true,
    // before anything loads, so the content's first frame already sees it.
    code.push({Value::integer(ContentDepth), Value::string(content), Value::integer(2)});
    pushTarget(code, {});
    code.pushString("createEmptyMovieClip").callMethod();
    code.push({Value::string("_lockroot"), Value::boolean(true)}).setMember();

    createProbe(code, name, content);
    registerCallbacks(code, name, content);

    // _root[prefix + "loader"] = new MovieClipLoader();
    const QByteArray loader = name + "loader";
    pushTarget(code, {});
    code.pushString(loader);
    code.push({Value::integer(0), Value::string("MovieClipLoader")}).newObject().setMember();

    // loader.addListener({onLoadInit: function() { ready }})
    ZBAvm1Assembler onLoadInit;
    callReady(onLoadInit, name, content);
    code.pushString("onLoadInit").defineFunction({}, {}, onLoadInit).pushInteger(1).initObject();
    code.pushInteger(1);
    pushTarget(code, {});
    code.pushString(loader).getMember().pushString("addListener").callMethod().pop();

    // loader.loadClip(url, _root[content])
    pushTarget(code, content);
    code.push({Value::string(contentUrl), Value::integer(2)});
    pushTarget(code, {});
    code.pushString(loader).getMember().pushString("loadClip").callMethod().pop();

    code.end();
    return code.isValid() ? code.bytes() : QByteArray();
}
