#pragma once

#include <QObject>
#include <QString>

// What the host page calls in the program, over the page's web channel. Each
// movie message carries the load's generation so that word from a movie that
// has since been replaced is recognised and dropped.
class ZBFlashBridge : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

public Q_SLOTS:
    void hostReady(bool engineScriptLoaded) { Q_EMIT hostReadyReceived(engineScriptLoaded); }
    void warmed(bool ok) { Q_EMIT warmedReceived(ok); }
    void loaded(int generation, double width, double height, double frameRate, int totalFrames, bool as3)
    {
        Q_EMIT loadedReceived(generation, width, height, frameRate, totalFrames, as3);
    }
    void firstFrameShown(int generation) { Q_EMIT firstFrameShownReceived(generation); }
    void loadFailed(int generation, const QString &reason) { Q_EMIT loadFailedReceived(generation, reason); }
    void frameState(int generation, int frame, int totalFrames, bool playing)
    {
        Q_EMIT frameStateReceived(generation, frame, totalFrames, playing);
    }
    // The engine has drawn frame `shown` after goto number `sequence`;
    // `drawn` is false when it ran no frame tick in time.
    void frameShown(int generation, int sequence, int shown, bool drawn)
    {
        Q_EMIT frameShownReceived(generation, sequence, shown, drawn);
    }
    void timeState(int generation, double time, double duration, double width, double height, bool playing)
    {
        Q_EMIT timeStateReceived(generation, time, duration, width, height, playing);
    }
    void fsCommand(int generation, const QString &command, const QString &arguments)
    {
        Q_EMIT fsCommandReceived(generation, command, arguments);
    }
    void zoomChanged(double percent) { Q_EMIT zoomChangedReceived(percent); }

Q_SIGNALS:
    void hostReadyReceived(bool engineScriptLoaded);
    void warmedReceived(bool ok);
    void loadedReceived(int generation, double width, double height, double frameRate, int totalFrames, bool as3);
    void firstFrameShownReceived(int generation);
    void loadFailedReceived(int generation, const QString &reason);
    void frameStateReceived(int generation, int frame, int totalFrames, bool playing);
    void frameShownReceived(int generation, int sequence, int shown, bool drawn);
    void timeStateReceived(int generation, double time, double duration, double width, double height, bool playing);
    void fsCommandReceived(int generation, const QString &command, const QString &arguments);
    void zoomChangedReceived(double percent);
};
