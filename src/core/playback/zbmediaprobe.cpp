#include "playback/zbmediaprobe.h"

#include <limits>

#include "app/zbmediamodule.h"
#include "app/zbmediamoduleloader.h"
#include "playback/zbmediaprobebackend.h"
#include "playback/zbmediatypes.h"
#include "playback/zbswfheader.h"

namespace
{
// Without the media module nothing can be recognised: every answer is
// "unknown", and the loader has said why.
ZBMediaProbeBackend *backend()
{
    ZBMediaModule *module = ZBMediaModuleLoader::module();
    return module ? &module->probe() : nullptr;
}
} // namespace

std::optional<double> ZBMediaProbe::durationSeconds(const QString &path)
{
    ZBMediaProbeBackend *probe = backend();
    return probe ? probe->durationSeconds(path) : std::nullopt;
}

bool ZBMediaProbe::canDecode(const QString &path)
{
    ZBMediaProbeBackend *probe = backend();
    return probe && probe->canDecode(path);
}

QString ZBMediaProbe::formatSummary(const QString &path)
{
    ZBMediaProbeBackend *probe = backend();
    return probe ? probe->formatSummary(path) : QString();
}

std::optional<ZBMediaProbe::Streams> ZBMediaProbe::streamCodecs(const QString &path)
{
    ZBMediaProbeBackend *probe = backend();
    return probe ? probe->streamCodecs(path) : std::nullopt;
}

qint32 ZBMediaProbe::getMovieDurationAtPath(const QString &path)
{
    const QString extension = ZBMediaTypes::pathExtension(path);
    if (extension == u"xap" || extension == u"rv" || extension == u"rm" || extension == u"rmvb")
        return 0;
    if (extension == u"swf")
        return ZBSwfHeader::getSWFLength(path);
    const std::optional<double> seconds = durationSeconds(path);
    if (!seconds || *seconds >= double(std::numeric_limits<qint32>::max()))
        return 0;
    // Whole seconds, rounded down, as lengths have always been kept.
    return qint32(*seconds);
}
