#include "support/flashmovies.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include <QList>
#include <QRect>

namespace nvktest
{
namespace
{
// Seven levels per channel, 35 apart, give 343 colours. The levels keep clear
// of 0 and 255 so black, white and full-strength colours (the square, the
// background) are never taken for a frame.
constexpr int Levels = 7;
constexpr int LevelBase = 20;
constexpr int LevelStep = 35;

constexpr int SquareSize = 20;
constexpr int SquareMargin = 10;
constexpr int SquareStep = 4;

constexpr int Twips = 20;

constexpr quint16 RectangleDepth = 1;
constexpr quint16 SquareDepth = 2;
constexpr quint16 WhiteSquareId = 1;
constexpr quint16 BlackSquareId = 2;
// The rectangle of palette entry i is character FirstRectangleId + i.
constexpr quint16 FirstRectangleId = 3;

int checkedFrame(int frame)
{
    if (frame < 0)
        throw std::invalid_argument("counter movie frames count from 0");
    return frame;
}

int paletteIndex(int frame)
{
    return checkedFrame(frame) % CounterMoviePaletteSize;
}

int level(int digit)
{
    return LevelBase + LevelStep * digit;
}

int modLevels(int value)
{
    return ((value % Levels) + Levels) % Levels;
}

QColor counterMovieColour(int frame)
{
    const int index = paletteIndex(frame);
    const int d0 = index % Levels;
    const int d1 = index / Levels % Levels;
    const int d2 = index / (Levels * Levels);
    // Each channel adds up the digits below it as well, so going to the next
    // frame changes all three channels, carries included: a frame is never
    // one small step from its neighbours.
    return QColor(level(d0), level(modLevels(d0 + d1)), level(modLevels(d0 + d1 + d2)));
}

// The moving square of `frame`, in stage pixels.
QRect counterMovieSquare(int frame, const CounterMovieOptions &options)
{
    const int travel = std::max(1, options.width - 2 * SquareMargin - SquareSize);
    const int x = SquareMargin + int(qint64(SquareStep) * checkedFrame(frame) % travel);
    return QRect(x, SquareMargin, SquareSize, SquareSize);
}

// The stage colour the movie declares, which no frame uses; seeing it means
// the frame's rectangle was not drawn.
QColor counterMovieBackground()
{
    return QColor(255, 0, 255);
}

bool lightFrame(int frame)
{
    const QColor colour = counterMovieColour(frame);
    return 299 * colour.red() + 587 * colour.green() + 114 * colour.blue() >= 128 * 1000;
}

void check(bool condition, const char *what)
{
    if (!condition)
        throw std::invalid_argument(std::string("counter movie: ") + what);
}
} // namespace

int counterMovieFrameForColour(const QColor &colour, int tolerance)
{
    int digits[3];
    const int channels[3] = {colour.red(), colour.green(), colour.blue()};
    for (int i = 0; i < 3; ++i)
    {
        const int digit = std::clamp(int(std::lround(double(channels[i] - LevelBase) / LevelStep)), 0, Levels - 1);
        if (std::abs(channels[i] - level(digit)) > tolerance)
            return -1;
        digits[i] = digit;
    }
    const int d0 = digits[0];
    const int d1 = modLevels(digits[1] - digits[0]);
    const int d2 = modLevels(digits[2] - digits[1]);
    return d0 + Levels * d1 + Levels * Levels * d2;
}

QColor counterMovieSquareColour(int frame)
{
    return lightFrame(frame) ? QColor(0, 0, 0) : QColor(255, 255, 255);
}

QByteArray makeCounterMovie(const CounterMovieOptions &options)
{
    check(options.width >= 60 && options.width <= 4000 && options.height >= 80 && options.height <= 4000,
          "stage size out of range");
    check(options.frameCount >= 1 && options.frameCount <= 0xffff, "frame count out of range");
    check(options.frameRate > 0 && options.frameRate < 256, "frame rate out of range");
    // PlaceObject2 came with version 3.
    check(options.version >= 3 && options.version <= 255, "version out of range");

    const QColor background = counterMovieBackground();
    SwfWriter writer;
    writer.setVersion(options.version)
        .setStageSize(options.width, options.height)
        .setFrameRate(options.frameRate)
        .setBackgroundColor(quint8(background.red()), quint8(background.green()), quint8(background.blue()));
    if (options.actionScript3)
        writer.setFileAttributes(true, true);

    writer.addTag(SwfWriter::DefineShapeTag, SwfWriter::rectangleShape(WhiteSquareId, 0, SquareSize * Twips, 0,
                                                                       SquareSize * Twips, 255, 255, 255));
    writer.addTag(SwfWriter::DefineShapeTag,
                  SwfWriter::rectangleShape(BlackSquareId, 0, SquareSize * Twips, 0, SquareSize * Twips, 0, 0, 0));

    // Each colour's rectangle is defined in the first frame that shows it;
    // later frames and later loops place the same character again.
    QList<bool> defined(CounterMoviePaletteSize, false);
    quint16 previousSquare = 0;
    for (int frame = 0; frame < options.frameCount; ++frame)
    {
        const int index = paletteIndex(frame);
        const quint16 rectangle = quint16(FirstRectangleId + index);
        if (!defined[index])
        {
            const QColor colour = counterMovieColour(frame);
            writer.addTag(SwfWriter::DefineShapeTag,
                          SwfWriter::rectangleShape(rectangle, 0, options.width * Twips, 0, options.height * Twips,
                                                    quint8(colour.red()), quint8(colour.green()),
                                                    quint8(colour.blue())));
            defined[index] = true;
        }
        const quint16 square = lightFrame(frame) ? BlackSquareId : WhiteSquareId;
        const QPoint at = counterMovieSquare(frame, options).topLeft() * Twips;

        if (frame == 0)
        {
            writer.addTag(SwfWriter::PlaceObject2Tag, SwfWriter::placeObject2(RectangleDepth, rectangle));
            writer.addTag(SwfWriter::PlaceObject2Tag, SwfWriter::placeObject2(SquareDepth, square, at.x(), at.y()));
        }
        else
        {
            writer.addTag(SwfWriter::PlaceObject2Tag, SwfWriter::replaceObject2(RectangleDepth, rectangle));
            writer.addTag(SwfWriter::PlaceObject2Tag, square == previousSquare
                                                          ? SwfWriter::moveObject2(SquareDepth, at.x(), at.y())
                                                          : SwfWriter::replaceObject2(SquareDepth, square, at));
        }
        previousSquare = square;

        if (frame == options.frameCount - 1 && !options.actionScript3)
        {
            using Ending = CounterMovieOptions::Ending;
            QByteArray actions;
            if (options.ending == Ending::FsCommand || options.ending == Ending::FsCommandThenStop)
                actions += SwfWriter::actionFsCommand(options.fsCommand, options.fsCommandArguments);
            if (options.ending == Ending::Stop || options.ending == Ending::FsCommandThenStop)
                actions += SwfWriter::actionStop();
            if (!actions.isEmpty())
                writer.addTag(SwfWriter::DoActionTag, SwfWriter::doAction(actions));
        }
        writer.showFrame();
    }
    return writer.build(options.compression);
}
} // namespace nvktest
