#pragma once

#include <QPointer>

#include "engines/zbplaybackengine.h"

class ZBFlashView;

// The Flash engine behind the playback controller, in two roles sharing one
// Flash view: Flash movies and projectors (FlashMovie, positions in frames)
// and FLV streams in our FLV player movie (FlashVideo, positions in seconds).
// Only the engine that made the view's current load answers for it, so the
// two never report each other's movie.
class ZBFlashEngine : public ZBPlaybackEngine
{
    Q_OBJECT

public:
    ZBFlashEngine(int engineCode, ZBFlashView *view, QObject *parent = nullptr);

    // The movie inside a Flash file: the file itself, or the movie a
    // projector carries. Empty, with the reason, when there is none.
    static QByteArray movieData(const QString &path, QString *error = nullptr);

    ZBFlashView *flashView() const { return m_view; }

    int engineCode() const override { return m_engineCode; }
    bool usesFrames() const override { return m_engineCode == FlashMovie; }
    bool canInitWithFile(const QString &path) override;

    void load(const QString &path) override;
    void stop() override;
    void play() override;
    void pause() override;
    bool isLoaded() const override;
    bool isPlaying() const override;

    // Frames (from 0) for movies, seconds for FLV streams.
    double currentTime() const override;
    double totalTime() const override;
    void seek(double position) override;

    void setVolume(int volume) override;
    int volume() const override { return m_volume; }

    QSize naturalSize() const override;
    QWidget *view() override;
    QImage snapshot() override;

    bool canZoom() const override { return true; }
    void setZoomPercent(int percent) override;
    int zoomPercent() const override;
    void setFitSize() override;
    void setOriginalSize() override;
    void setCanDrag(bool canDrag) override;
    bool canDrag() const override;

private:
    bool isActive() const;
    void refuse(const QString &reason);

    int m_engineCode;
    QPointer<ZBFlashView> m_view;
    bool m_active = false;
    int m_volume = 100;
};
