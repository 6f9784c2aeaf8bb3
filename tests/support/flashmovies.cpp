#include "support/flashmovies.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <stdexcept>

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
constexpr int DefineShapeTag = 2;
constexpr int PlaceObject2Tag = 26;
constexpr quint16 RectangleDepth = 1;
constexpr quint16 SquareDepth = 2;
// Characters 1 and 2 are the white and the black square; the rectangle of
// palette entry i is character 3 + i.
constexpr quint16 FirstRectangleId = 3;

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
    const int index = frame % CounterMoviePaletteSize;
    const int d0 = index % Levels;
    const int d1 = index / Levels % Levels;
    const int d2 = index / (Levels * Levels);
    // Each channel adds up the digits below it as well, so going to the next
    // frame changes all three channels, carries included: a frame is never
    // one small step from its neighbours.
    return QColor(level(d0), level(modLevels(d0 + d1)), level(modLevels(d0 + d1 + d2)));
}

bool lightFrame(int frame)
{
    const QColor colour = counterMovieColour(frame);
    return 299 * colour.red() + 587 * colour.green() + 114 * colour.blue() >= 128 * 1000;
}
} // namespace

int counterMovieFrameForColour(const QColor &colour, int tolerance)
{
    int digits[3];
    const int channels[3] = {colour.red(), colour.green(), colour.blue()};
    for (int i = 0; i < 3; ++i)
    {
        digits[i] = std::clamp(int(std::lround(double(channels[i] - LevelBase) / LevelStep)), 0, Levels - 1);
        if (std::abs(channels[i] - level(digits[i])) > tolerance)
            return -1;
    }
    return digits[0] + Levels * modLevels(digits[1] - digits[0]) + Levels * Levels * modLevels(digits[2] - digits[1]);
}

QColor counterMovieSquareColour(int frame)
{
    return lightFrame(frame) ? QColor(0, 0, 0) : QColor(255, 255, 255);
}

QByteArray makeCounterMovie(const CounterMovieOptions &options)
{
    if (options.width < 60 || options.width > 3000 || options.height < 80 || options.height > 3000 ||
        options.frameCount < 1 || options.frameRate <= 0 || options.version < 3)
        throw std::invalid_argument("counter movie: options out of range");

    // The stage colour, which no frame uses: seeing it means the frame's
    // rectangle was not drawn.
    SwfWriter writer;
    writer.setVersion(options.version).setStageSize(options.width, options.height).setFrameRate(options.frameRate);
    writer.setBackgroundColor(255, 0, 255);
    if (options.actionScript3)
        writer.setFileAttributes(true, true);
    writer.addTag(DefineShapeTag, SwfWriter::rectangleShape(1, SquareSize * Twips, SquareSize * Twips, 255, 255, 255));
    writer.addTag(DefineShapeTag, SwfWriter::rectangleShape(2, SquareSize * Twips, SquareSize * Twips, 0, 0, 0));

    // Each colour's rectangle is defined in the first frame that shows it;
    // later frames and later loops place the same character again.
    const int travel = std::max(1, options.width - 2 * SquareMargin - SquareSize);
    for (int frame = 0; frame < options.frameCount; ++frame)
    {
        const quint16 rectangle = quint16(FirstRectangleId + frame % CounterMoviePaletteSize);
        if (frame < CounterMoviePaletteSize)
        {
            const QColor colour = counterMovieColour(frame);
            writer.addTag(DefineShapeTag, SwfWriter::rectangleShape(rectangle, options.width * Twips,
                                                                    options.height * Twips, quint8(colour.red()),
                                                                    quint8(colour.green()), quint8(colour.blue())));
        }
        const quint16 square = lightFrame(frame) ? 2 : 1;
        const QPoint at = QPoint(SquareMargin + int(qint64(SquareStep) * frame % travel), SquareMargin) * Twips;
        const bool first = frame == 0;
        writer.addTag(PlaceObject2Tag, SwfWriter::placeObject2(RectangleDepth, rectangle, std::nullopt, !first));
        // The square moves; it is replaced only when its colour changes.
        const bool sameSquare = !first && square == (lightFrame(frame - 1) ? 2 : 1);
        writer.addTag(PlaceObject2Tag,
                      SwfWriter::placeObject2(SquareDepth, sameSquare ? std::nullopt : std::optional<quint16>(square),
                                              at, !first));
        if (frame == options.frameCount - 1 && !options.actionScript3 &&
            options.ending != CounterMovieOptions::Ending::Loop)
        {
            using Ending = CounterMovieOptions::Ending;
            const bool talks = options.ending == Ending::FsCommand || options.ending == Ending::FsCommandThenStop;
            writer.addTag(
                SwfWriter::DoActionTag,
                SwfWriter::doAction(talks ? options.fsCommand : QByteArray(), options.fsCommandArguments,
                                    options.ending == Ending::Stop || options.ending == Ending::FsCommandThenStop));
        }
        writer.showFrame();
    }
    return writer.build(options.compression);
}
} // namespace nvktest
