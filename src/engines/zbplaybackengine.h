#pragma once

#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>

class QWidget;

// One way of playing a kind of file: the video engine (libmpv) for movies,
// FLV and RealMedia; the Flash engine for SWF movies and projectors; the
// refusing engine for Silverlight packages. The playback controller drives
// every engine through this interface and never asks which one it holds
// beyond engineCode().
//
// Positions are seconds for time-based engines and 0-based frame numbers for
// frame-based ones (usesFrames()). Every getter answers from a cache the
// engine keeps current from its own events: the 0.1 s playback tick reads
// them and must never wait on the engine.
class ZBPlaybackEngine : public QObject
{
    Q_OBJECT

public:
    // The codes the rest of the program knows the engines by.
    enum Code
    {
        FlashMovie = 0,
        VideoMovie = 1,
        FlashVideo = 2,
        RealMedia = 3,
        Silverlight = 4
    };

    using QObject::QObject;

    virtual int engineCode() const = 0;
    virtual bool usesFrames() const { return false; }

    // Whether this engine accepts the file at all: it exists, its container
    // opens and a decoder exists for what it holds. Cheap and synchronous.
    virtual bool canInitWithFile(const QString &path) = 0;

    // Starts loading; the answer comes as loaded() or loadFailed(). A load
    // replaces whatever was loaded before. Playback starts paused: the
    // controller calls play() once it has updated the library.
    virtual void load(const QString &path) = 0;
    // Drops the loaded file; getters return to their idle values.
    virtual void stop() = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual bool isLoaded() const = 0;
    virtual bool isPlaying() const = 0;

    // -1 when nothing is loaded.
    virtual double currentTime() const = 0;
    // 0 while unknown.
    virtual double totalTime() const = 0;
    // Exact: a seek lands where asked, not at the previous key frame.
    virtual void seek(double position) = 0;
    // True from seek() until the picture at the new position is decoded, for
    // engines that tell (seekFinished()); others land at once.
    virtual bool isSeeking() const { return false; }

    // 0..100; values outside are clamped.
    virtual void setVolume(int volume) = 0;
    virtual int volume() const = 0;

    virtual QSize naturalSize() const = 0;
    // The widget that shows the picture, or null for a headless engine.
    virtual QWidget *view() = 0;
    // The picture now shown, at its natural size; null when there is none.
    virtual QImage snapshot() = 0;
    // A one-line description of the streams for the information window.
    virtual QString formatSummary() const { return QString(); }

    // On: the picture fills the view with its proportions kept; off: it is
    // stretched over the whole view. Engines that only keep proportions
    // ignore it and always answer true.
    virtual void setPreservesAspectRatio(bool preserves) { Q_UNUSED(preserves) }
    virtual bool preservesAspectRatio() const { return true; }

    // Engines that scale their content themselves (Flash) zoom, fit, show it
    // at 100 % and let the user pan it; the others keep these defaults and
    // size the picture to their view.
    virtual bool canZoom() const { return false; }
    virtual void setZoomPercent(int percent) { Q_UNUSED(percent) }
    virtual int zoomPercent() const { return 100; }
    virtual void setFitSize() {}
    virtual void setOriginalSize() {}
    virtual void setCanDrag(bool canDrag) { Q_UNUSED(canDrag) }
    virtual bool canDrag() const { return false; }

Q_SIGNALS:
    void loaded();
    void loadFailed(const QString &reason);
    // When playback arrives at the end of the loaded file: once per arrival.
    // Staying at the end, or play() there, does not repeat it; a seek back
    // followed by playing to the end again does.
    void endReached();
    // A command the loaded content sends to its player (a Flash movie's
    // fscommand), with its arguments as one string.
    void fsCommand(const QString &command, const QString &arguments);
    // The zoom the content is shown at changed: set, fitted or refitted to
    // a resized view.
    void zoomChanged(int percent);
    // The last requested seek has landed and its frame is decoded.
    void seekFinished();
};
