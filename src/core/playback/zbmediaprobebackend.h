#pragma once

#include <QString>

#include <optional>

#include "playback/zbmediaprobe.h"

// What ZBMediaProbe asks of the demuxers. The implementation lives with the
// media libraries, which the player loads only when it first needs them, so
// that the window does not wait for them to be mapped; see
// ZBMediaModuleLoader. Every function must be callable from any thread.
class ZBMediaProbeBackend
{
public:
    virtual ~ZBMediaProbeBackend() = default;

    virtual std::optional<double> durationSeconds(const QString &path) = 0;
    virtual bool canDecode(const QString &path) = 0;
    virtual QString formatSummary(const QString &path) = 0;
    virtual std::optional<ZBMediaProbe::Streams> streamCodecs(const QString &path) = 0;
};
