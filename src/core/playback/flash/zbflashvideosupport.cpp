#include "playback/flash/zbflashvideosupport.h"

#include <QStringList>

bool ZBFlashVideoSupport::flashEngineDecodes(const ZBMediaProbe::Streams &streams)
{
    static const QStringList VideoCodecs = {QStringLiteral("flv1"), QStringLiteral("vp6"), QStringLiteral("vp6f"),
                                            QStringLiteral("vp6a"), QStringLiteral("flashsv")};
    static const QStringList AudioCodecs = {QStringLiteral("mp3"),        QStringLiteral("adpcm_swf"),
                                            QStringLiteral("pcm_s16le"),  QStringLiteral("pcm_u8"),
                                            QStringLiteral("nellymoser")};
    if (streams.container != u"flv")
        return false;
    if (streams.videoCodec.isEmpty() && streams.audioCodec.isEmpty())
        return false;
    if (!streams.videoCodec.isEmpty() && !VideoCodecs.contains(streams.videoCodec))
        return false;
    return streams.audioCodec.isEmpty() || AudioCodecs.contains(streams.audioCodec);
}

bool ZBFlashVideoSupport::flashEngineDecodes(const QString &path)
{
    const std::optional<ZBMediaProbe::Streams> streams = ZBMediaProbe::streamCodecs(path);
    return streams && flashEngineDecodes(*streams);
}
