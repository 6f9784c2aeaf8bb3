#pragma once

#include <QByteArray>
#include <QByteArrayView>

class ZBAvm1Assembler;

// The ActionScript 1/2 bytecode the host puts into Flash movies so it can ask
// for the current frame and move the playhead, which the Flash engine's own
// interface cannot do. The code registers these ExternalInterface callbacks,
// each name led by a prefix the host picks so it never clashes with names the
// movie uses:
//
//   currentFrame()       the frame shown, counted from 0
//   totalFrames()        the frames in the movie
//   gotoFrame(n, play)   go to frame n (from 0), then play or stay there
//   play(), stop()
//   isPlaying()          whether the frame changed between the last two
//                        frame ticks (a stopped or one-frame movie is not
//                        playing)
//   ticks()              how many frame ticks the movie has run; the engine
//                        draws only on a tick, so a goto is on screen once
//                        this has moved on
//
// and then calls the host's <prefix>ready(totalFrames). isPlaying is answered
// by a probe clip created at ProbeDepth whose onEnterFrame compares frames
// and counts ticks.
class ZBFrameControlScript
{
public:
    // High enough to stay clear of what authoring tools place, and still in
    // the range where createEmptyMovieClip accepts a depth.
    static constexpr qint32 ProbeDepth = 1048000;
    static constexpr qint32 ContentDepth = 1;

    // Letters, digits, '_' and '$' only: the names are ActionScript
    // identifiers and JavaScript method names at once.
    static bool isValidPrefix(QByteArrayView prefix);

    // DoAction code for a movie of its own: the callbacks steer _root, and
    // ready is called at once; when frame 1 runs again (a loop, a goto) the
    // code does nothing.
    static QByteArray forRoot(QByteArrayView prefix);
    // DoAction code for a host movie that loads `contentUrl` into a child clip
    // named contentClipName(prefix) with _lockroot set (so the content's own
    // _root means itself); the callbacks steer that clip, and ready is called
    // from the loader's onLoadInit.
    static QByteArray forLoader(QByteArrayView prefix, QByteArrayView contentUrl);

    static QByteArray contentClipName(QByteArrayView prefix);
    static QByteArray probeClipName(QByteArrayView prefix);

private:
    // Leaves the clip whose frames are steered on the stack: _root, or
    // _root[childClip] when a child clip is named.
    static void pushTarget(ZBAvm1Assembler &code, const QByteArray &childClip);
    static void pushExternalInterface(ZBAvm1Assembler &code);
    static void registerCallbacks(ZBAvm1Assembler &code, const QByteArray &prefix, const QByteArray &childClip);
    static void createProbe(ZBAvm1Assembler &code, const QByteArray &prefix, const QByteArray &childClip);
    static void callReady(ZBAvm1Assembler &code, const QByteArray &prefix, const QByteArray &childClip);
};
