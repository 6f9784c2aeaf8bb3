#pragma once

#include <QRect>
#include <QSize>
#include <QString>

// Which of the HUD's video tools can act on what plays now.
struct ZBHudButtons
{
    bool drag = false;
    bool fit = false;
    bool stretch = false;
    bool oneToOne = false;
    bool screenshot = false;
    bool series = false;
    bool zoomSlider = false;

    bool operator==(const ZBHudButtons &) const = default;
};

// The arithmetic and rules behind the picture's size: the window size that
// shows a movie at 1:1, the HUD's enabling per engine and window mode, and
// the zoom slider's range and label.
class ZBVideoSizing
{
public:
    static constexpr int ZoomMinimum = 10;
    static constexpr int ZoomMaximum = 500;
    static constexpr int ZoomInitial = 100;

    ZBVideoSizing() = delete;

    // The window size at which the player area is exactly `naturalSize`: what
    // the window has besides the player area (panes, tool bars) is kept and
    // added. Never below `minimumSize`, never beyond `availableScreenSize`
    // (an invalid screen size does not limit). An invalid natural size keeps
    // the window as it is.
    static QSize windowSizeForNaturalSize(QSize naturalSize, QSize windowSize, QSize playerAreaSize,
                                          QSize minimumSize, QSize availableScreenSize);
    // `window` resized to `size` keeping its top-left corner, moved back in
    // only as far as needed to stay inside `available` (when that is valid).
    static QRect placeWindow(const QRect &window, QSize size, const QRect &available);

    // displayMode: 0 normal, 1 detached, 2 fullscreen.
    static ZBHudButtons hudButtons(bool playbackStopped, int engineCode, int displayMode);

    // The zoom applies to Flash movies and FLV streams only; the video
    // engines size their picture to the view.
    static bool zoomAppliesTo(int engineCode);
    static int clampZoom(int percent);
    // What the label beside the slider shows: "250%".
    static QString zoomLabel(int percent);
};
