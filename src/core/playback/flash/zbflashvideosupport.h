#pragma once

#include <QString>

#include "playback/zbmediaprobe.h"

// Which Flash videos the Flash engine's own FLV player can show. The engine
// decodes the codecs Flash Player 8 brought (Sorenson H.263, On2 VP6, Screen
// Video; MP3, ADPCM, PCM, Nellymoser) in an FLV container, but not H.264 or
// AAC, nor the MP4-based F4V. Those go to the video engine instead, which
// plays them all.
class ZBFlashVideoSupport
{
public:
    static bool flashEngineDecodes(const ZBMediaProbe::Streams &streams);
    static bool flashEngineDecodes(const QString &path);
};
