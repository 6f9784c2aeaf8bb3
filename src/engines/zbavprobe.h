#pragma once

#include "playback/zbmediaprobebackend.h"

// ZBMediaProbe's answers from FFmpeg's demuxers, in process, reading a
// bounded amount of each file. Stateless, so any thread may call it.
class ZBAVProbe final : public ZBMediaProbeBackend
{
public:
    std::optional<double> durationSeconds(const QString &path) override;
    bool canDecode(const QString &path) override;
    QString formatSummary(const QString &path) override;
    std::optional<ZBMediaProbe::Streams> streamCodecs(const QString &path) override;
};
