#include "ui/app/zbmprisplayeradaptor.h"

#include <QCryptographicHash>
#include <QDBusMessage>
#include <QDir>
#include <QUrl>

#include <algorithm>
#include <cmath>

#include "playback/zbmediatypes.h"
#include "ui/app/zbmediakeytarget.h"
#include "ui/app/zbmprisrootadaptor.h"
#include "ui/app/zbmprisservice.h"

namespace
{
qlonglong microseconds(double seconds)
{
    return std::llround(seconds * 1e6);
}

// Object path elements allow letters, digits and "_" only; a track without
// an identifier is known by its location.
QDBusObjectPath trackPath(const ZBMediaKeyTarget::Track &track)
{
    QString key = track.identifier;
    if (key.isEmpty())
        key = QString::fromLatin1(QCryptographicHash::hash(track.location.toUtf8(), QCryptographicHash::Md5).toHex());
    for (QChar &c : key)
    {
        if (!(c.isLetterOrNumber() && c.unicode() < 0x80) && c != u'_')
            c = u'_';
    }
    return QDBusObjectPath(QStringLiteral("/org/norvikplayer/track/") + key);
}

QString locationUrl(const QString &location)
{
    if (location.contains(QLatin1String("://")))
        return location;
    return QUrl::fromLocalFile(location).toString(QUrl::FullyEncoded);
}
} // namespace

ZBMprisPlayerAdaptor::ZBMprisPlayerAdaptor(ZBMprisService *service)
    : QDBusAbstractAdaptor(service)
    , m_service(service)
{
}

QString ZBMprisPlayerAdaptor::playbackStatus() const
{
    switch (m_service->target()->playbackState())
    {
        case ZBMediaKeyTarget::PlaybackState::Playing:
            return QStringLiteral("Playing");
        case ZBMediaKeyTarget::PlaybackState::Paused:
            return QStringLiteral("Paused");
        case ZBMediaKeyTarget::PlaybackState::Stopped:
            break;
    }
    return QStringLiteral("Stopped");
}

QVariantMap ZBMprisPlayerAdaptor::metadata() const
{
    QVariantMap map;
    const std::optional<ZBMediaKeyTarget::Track> track = m_service->target()->currentTrack();
    if (!track)
    {
        map.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(noTrackPath()));
        return map;
    }
    map.insert(QStringLiteral("mpris:trackid"), QVariant::fromValue(trackPath(*track)));
    map.insert(QStringLiteral("xesam:title"),
               track->title.isEmpty() ? ZBMediaTypes::getFileNameFromPath(track->location) : track->title);
    if (!track->location.isEmpty())
        map.insert(QStringLiteral("xesam:url"), locationUrl(track->location));
    if (track->length > 0)
        map.insert(QStringLiteral("mpris:length"), microseconds(track->length));
    return map;
}

double ZBMprisPlayerAdaptor::volume() const
{
    return std::clamp(m_service->target()->volume(), 0, 100) / 100.0;
}

void ZBMprisPlayerAdaptor::setVolume(double volume)
{
    // MPRIS takes anything below zero for silence; the player has no gain
    // above its full volume.
    const double clamped = std::isnan(volume) ? 0.0 : std::clamp(volume, 0.0, 1.0);
    m_service->target()->volumeRequested(static_cast<int>(std::lround(clamped * 100)));
}

qlonglong ZBMprisPlayerAdaptor::position() const
{
    if (!m_service->target()->currentTrack())
        return 0;
    return microseconds(std::max(0.0, m_service->target()->position()));
}

QDBusObjectPath ZBMprisPlayerAdaptor::noTrackPath()
{
    return QDBusObjectPath(QStringLiteral("/org/mpris/MediaPlayer2/TrackList/NoTrack"));
}

void ZBMprisPlayerAdaptor::Next()
{
    m_service->target()->mediaKeyPressed(ZBMediaKeyTarget::FastForwardKey);
}

void ZBMprisPlayerAdaptor::Previous()
{
    m_service->target()->mediaKeyPressed(ZBMediaKeyTarget::RewindKey);
}

void ZBMprisPlayerAdaptor::Pause()
{
    // The play key toggles; pausing what is not playing would start it.
    if (m_service->target()->playbackState() == ZBMediaKeyTarget::PlaybackState::Playing)
        m_service->target()->mediaKeyPressed(ZBMediaKeyTarget::PlayPauseKey);
}

void ZBMprisPlayerAdaptor::PlayPause()
{
    m_service->target()->mediaKeyPressed(ZBMediaKeyTarget::PlayPauseKey);
}

void ZBMprisPlayerAdaptor::Stop()
{
    m_service->target()->stopRequested();
}

void ZBMprisPlayerAdaptor::Play()
{
    if (m_service->target()->playbackState() != ZBMediaKeyTarget::PlaybackState::Playing)
        m_service->target()->mediaKeyPressed(ZBMediaKeyTarget::PlayPauseKey);
}

void ZBMprisPlayerAdaptor::Seek(qlonglong) {}

void ZBMprisPlayerAdaptor::SetPosition(const QDBusObjectPath &, qlonglong) {}

void ZBMprisPlayerAdaptor::OpenUri(const QString &uri)
{
    const QUrl url(uri);
    const QString scheme = url.scheme().toLower();
    QString argument;
    if (url.isValid() && scheme == QLatin1String("file") && QDir::isAbsolutePath(url.toLocalFile()))
        argument = QDir::cleanPath(url.toLocalFile());
    else if (url.isValid() && scheme == QLatin1String("norvikplayer"))
        argument = uri;
    if (argument.isEmpty())
    {
        if (m_service->calledFromDBus())
            m_service->sendErrorReply(
                QDBusError::NotSupported,
                QStringLiteral("Norvik Player opens only %1 URIs: %2")
                    .arg(ZBMprisRootAdaptor::supportedUriSchemes().join(QLatin1String(", ")), uri));
        return;
    }
    m_service->target()->openRequested({argument});
}
