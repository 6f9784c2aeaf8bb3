#pragma once

#include <QByteArray>
#include <QColor>

#include "support/swfwriter.h"

namespace nvktest
{
// A "counter movie": a small Flash movie whose frame can be read off a single
// pixel. Every frame fills the whole stage with its own solid colour,
// counterMovieColour(frame), and shows a small square that moves right from
// frame to frame along the top edge, so a player that renders but never
// advances is told apart from one that does. The square never comes near the
// centre of the stage, which is where a test reads the colour.
//
// Frames count from 0 here, as in the movie's tags; ActionScript's
// _currentframe is one more.
struct CounterMovieOptions
{
    // What the last frame does.
    enum class Ending
    {
        Loop,
        Stop,
        // fscommand(fsCommand, fsCommandArguments), after which the movie loops
        FsCommand,
        FsCommandThenStop
    };

    // The stage in pixels; at least 60 x 80 so the square stays clear of the
    // centre, at most 3000 x 3000.
    int width = 200;
    int height = 150;
    int frameCount = 24;
    double frameRate = 24.0;
    int version = 10;
    SwfWriter::Compression compression = SwfWriter::Compression::None;
    // FileAttributes says ActionScript 3 but the movie has no DoABC tag: a
    // timeline-only AS3 movie. Players run no DoAction in such a movie, so
    // none is written and the movie always loops whatever `ending` says.
    bool actionScript3 = false;
    Ending ending = Ending::Loop;
    QByteArray fsCommand = "completePlay";
    QByteArray fsCommandArguments;
};

// Frames beyond this many reuse the colours from frame 0 on.
inline constexpr int CounterMoviePaletteSize = 343;
// How far, in any one channel, a rendered colour may stray from its frame's
// colour and still be recognised. Half the distance between neighbouring
// colours is 17, so a blend of two frames is not taken for either.
inline constexpr int CounterMovieColourTolerance = 12;

// Throws std::invalid_argument for options it cannot honour.
QByteArray makeCounterMovie(const CounterMovieOptions &options = {});

// The frame, modulo CounterMoviePaletteSize, whose colour `colour` is within
// `tolerance` of in every channel; -1 when there is none.
int counterMovieFrameForColour(const QColor &colour, int tolerance = CounterMovieColourTolerance);

// The colour of the moving square of `frame`: black or white, whichever
// stands out from the frame's colour.
QColor counterMovieSquareColour(int frame);
} // namespace nvktest
