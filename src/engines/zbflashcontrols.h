#pragma once

class QColor;
class QWidget;

// What the window and the playback controller set on the Flash view, which
// lives in the media module: they know it only through this.
class ZBFlashControls
{
public:
    virtual ~ZBFlashControls() = default;

    virtual QWidget *widget() = 0;
    // Loads the page and compiles the engine ahead of the first movie.
    virtual void warmUp() = 0;

    // 0 low, 1 medium, anything else high; applies from the next movie on.
    virtual void setFlashQuality(int quality) = 0;
    // On: a movie may not reach the network nor read outside its folder.
    virtual void setEnabledSecurity(bool enabled) = 0;
    virtual void setFlashBackgroundColor(const QColor &colour) = 0;
    // FLV streams start over at their end while on.
    virtual void setRepeatStyle(bool repeat) = 0;
    virtual void setCanDrag(bool canDrag) = 0;
    virtual void setZoomPercent(int percent) = 0;
    virtual void setFitSize() = 0;
};
