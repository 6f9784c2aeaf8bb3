#include "playback/zbvideosizing.h"

#include <algorithm>

namespace
{
// Engine codes, as the playback engines name them.
constexpr int FlashMovie = 0;
constexpr int VideoMovie = 1;
constexpr int FlashVideo = 2;
constexpr int DetachedMode = 1;
} // namespace

QSize ZBVideoSizing::windowSizeForNaturalSize(QSize naturalSize, QSize windowSize, QSize playerAreaSize,
                                              QSize minimumSize, QSize availableScreenSize)
{
    if (naturalSize.isEmpty())
        return windowSize;
    // A player area larger than its window is a layout in flux: count no
    // chrome rather than a negative one.
    const QSize chrome = (windowSize - playerAreaSize).expandedTo(QSize(0, 0));
    QSize size = (naturalSize + chrome).expandedTo(minimumSize.expandedTo(QSize(0, 0)));
    if (availableScreenSize.isValid())
        size = size.boundedTo(availableScreenSize);
    return size;
}

QRect ZBVideoSizing::placeWindow(const QRect &window, QSize size, const QRect &available)
{
    QRect placed(window.topLeft(), size);
    if (!available.isValid())
        return placed;
    if (placed.right() > available.right())
        placed.moveRight(available.right());
    if (placed.bottom() > available.bottom())
        placed.moveBottom(available.bottom());
    // The title bar must stay reachable: the top-left corner wins over the
    // bottom-right one.
    if (placed.left() < available.left())
        placed.moveLeft(available.left());
    if (placed.top() < available.top())
        placed.moveTop(available.top());
    return placed;
}

ZBHudButtons ZBVideoSizing::hudButtons(bool playbackStopped, int engineCode, int displayMode)
{
    ZBHudButtons buttons;
    if (playbackStopped)
        return buttons;
    buttons.screenshot = true;
    buttons.series = true;
    switch (engineCode)
    {
        case FlashMovie:
            buttons.drag = true;
            buttons.fit = true;
            buttons.oneToOne = true;
            buttons.zoomSlider = true;
            break;
        case VideoMovie:
            buttons.fit = true;
            buttons.stretch = true;
            buttons.oneToOne = displayMode == DetachedMode;
            break;
        case FlashVideo:
            buttons.oneToOne = displayMode == DetachedMode;
            break;
        default:
            break;
    }
    return buttons;
}

bool ZBVideoSizing::zoomAppliesTo(int engineCode)
{
    return engineCode == FlashMovie || engineCode == FlashVideo;
}

int ZBVideoSizing::clampZoom(int percent)
{
    return std::clamp(percent, ZoomMinimum, ZoomMaximum);
}

QString ZBVideoSizing::zoomLabel(int percent)
{
    return QStringLiteral("%1%").arg(percent);
}
