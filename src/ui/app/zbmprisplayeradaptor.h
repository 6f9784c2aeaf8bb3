#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusObjectPath>
#include <QVariantMap>

class ZBMprisService;

// org.mpris.MediaPlayer2.Player: the transport commands become the media keys
// the hub has always understood, so a desktop's controls and a keyboard's
// keys take the same path through the program.
class ZBMprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(bool CanGoNext READ canControl)
    Q_PROPERTY(bool CanGoPrevious READ canControl)
    Q_PROPERTY(bool CanPlay READ canControl)
    Q_PROPERTY(bool CanPause READ canControl)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)

public:
    explicit ZBMprisPlayerAdaptor(ZBMprisService *service);

    // "Playing", "Paused" or "Stopped".
    QString playbackStatus() const;
    // Tracks play at their own speed only.
    double rate() const { return 1.0; }
    void setRate(double) {}
    // mpris:trackid, xesam:title, xesam:url and, when known, mpris:length in
    // microseconds; only the "no track" id while nothing is loaded.
    QVariantMap metadata() const;
    double volume() const;
    void setVolume(double volume);
    // Microseconds.
    qlonglong position() const;
    bool canControl() const { return true; }
    // Seeking over the bus is not offered.
    bool canSeek() const { return false; }

    static QDBusObjectPath noTrackPath();

public Q_SLOTS:
    void Next();
    void Previous();
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    // Without CanSeek, MPRIS asks both to do nothing.
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath &trackId, qlonglong position);
    void OpenUri(const QString &uri);

private:
    ZBMprisService *m_service;
};
