#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What the media keys and the desktop's player controls may ask of the
// program and read from it. ZBMprisService knows the program only through
// this, so it runs the same against the main window's controller and a test's
// fake.
class ZBMediaKeyTarget
{
public:
    // The key codes the media keys arrive with: the data word of a key-down
    // system event (the key's type in bits 16 to 23, 0x0A for "down"), as the
    // hub's mediaKeyPressed() has always received them.
    static constexpr int PlayPauseKey = 0x100A00;
    static constexpr int FastForwardKey = 0x130A00;
    static constexpr int RewindKey = 0x140A00;

    enum class PlaybackState
    {
        Stopped,
        Paused,
        Playing
    };

    struct Track
    {
        // Stable for as long as the track exists (the library's UUID).
        QString identifier;
        QString title;
        // A file's path, or a URL for a track that is not a local file.
        QString location;
        // In seconds; zero or less when not known.
        double length = 0;
    };

    virtual ~ZBMediaKeyTarget() = default;

    // One of the three key codes above.
    virtual void mediaKeyPressed(int keyCode) = 0;
    // The stop command: no media key has it, the desktop's controls do.
    virtual void stopRequested() = 0;
    virtual void raiseRequested() = 0;
    // Quits as the Quit command does (asking first when downloads run).
    virtual void quitRequested() = 0;
    // In the form ZBSingleInstance hands over: absolute paths and
    // "norvikplayer://" URLs.
    virtual void openRequested(const QStringList &arguments) = 0;
    // 0 to 100.
    virtual void volumeRequested(int percent) = 0;

    virtual PlaybackState playbackState() const = 0;
    // The track that plays or is paused; none when stopped with nothing loaded.
    virtual std::optional<Track> currentTrack() const = 0;
    // Seconds into the current track.
    virtual double position() const = 0;
    // 0 to 100; 0 while muted.
    virtual int volume() const = 0;
    // Whether the picture fills the screen, and the desktop's wish to change
    // that.
    virtual bool isFullscreen() const { return false; }
    virtual void fullscreenRequested(bool fullscreen) { Q_UNUSED(fullscreen); }
};
