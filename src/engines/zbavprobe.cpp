#include "engines/zbavprobe.h"

#include <QFile>
#include <QFileInfo>
#include <QStringList>

extern "C"
{
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
#include <libavutil/dict.h>
#include <libavutil/log.h>
}

#include <chrono>
#include <cmath>
#include <mutex>

#include "playback/zbmediatypes.h"

namespace
{
// Enough to find the streams of every container the player takes; the
// default (5 MB and 5 s of packets) is what makes a folder import slow.
constexpr const char *ProbeSize = "262144";
constexpr const char *AnalyzeDuration = "500000";
// A file that takes this long is on a stalled mount or is no movie.
constexpr std::chrono::seconds ProbeDeadline{10};

void silenceLibraries()
{
    // A damaged file makes the demuxers talk on stderr; the answers say
    // everything the caller needs.
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

int interruptAfterDeadline(void *opaque)
{
    const auto *deadline = static_cast<const std::chrono::steady_clock::time_point *>(opaque);
    return std::chrono::steady_clock::now() > *deadline ? 1 : 0;
}

// One opened container. Closed on destruction.
class Demuxer
{
public:
    explicit Demuxer(const QString &path)
        : m_deadline(std::chrono::steady_clock::now() + ProbeDeadline)
    {
        silenceLibraries();
        // Only regular files: a FIFO or a device would block the open.
        if (!QFileInfo(path).isFile())
            return;
        m_context = avformat_alloc_context();
        if (!m_context)
            return;
        m_context->interrupt_callback.callback = interruptAfterDeadline;
        m_context->interrupt_callback.opaque = &m_deadline;

        AVDictionary *options = nullptr;
        av_dict_set(&options, "probesize", ProbeSize, 0);
        av_dict_set(&options, "analyzeduration", AnalyzeDuration, 0);
        // A movie that is really a playlist must not make us open URLs or
        // other files on its behalf.
        av_dict_set(&options, "protocol_whitelist", "file", 0);
        // The "file:" prefix keeps a name like "concat:x.mp4" or "http:a.flv"
        // from being taken for a protocol.
        const QByteArray url = "file:" + QFile::encodeName(path);
        if (avformat_open_input(&m_context, url.constData(), nullptr, &options) < 0)
            m_context = nullptr; // freed by the failed open
        av_dict_free(&options);
    }

    ~Demuxer()
    {
        if (m_context)
            avformat_close_input(&m_context);
    }

    Demuxer(const Demuxer &) = delete;
    Demuxer &operator=(const Demuxer &) = delete;

    bool isOpen() const { return m_context != nullptr; }
    AVFormatContext *context() const { return m_context; }

    bool findStreamInfo()
    {
        if (!m_context)
            return false;
        if (!m_streamInfoRead)
            m_streamInfoOk = avformat_find_stream_info(m_context, nullptr) >= 0;
        m_streamInfoRead = true;
        return m_streamInfoOk;
    }

    std::optional<double> statedDuration() const
    {
        if (m_context->duration != AV_NOPTS_VALUE && m_context->duration > 0)
            return double(m_context->duration) / AV_TIME_BASE;
        // AVI, FLV, RealMedia and ASF state their length per stream.
        double longest = 0.0;
        for (unsigned i = 0; i < m_context->nb_streams; ++i)
        {
            const AVStream *stream = m_context->streams[i];
            if (stream->duration == AV_NOPTS_VALUE || stream->duration <= 0 || stream->time_base.den <= 0)
                continue;
            longest = std::max(longest, double(stream->duration) * av_q2d(stream->time_base));
        }
        if (longest > 0.0 && std::isfinite(longest))
            return longest;
        return std::nullopt;
    }

    // The best stream of a kind, leaving out a cover picture passed off as
    // video.
    const AVStream *bestStream(AVMediaType type) const
    {
        const int index = av_find_best_stream(m_context, type, -1, -1, nullptr, 0);
        if (index < 0)
            return nullptr;
        const AVStream *stream = m_context->streams[index];
        if (type == AVMEDIA_TYPE_VIDEO && (stream->disposition & AV_DISPOSITION_ATTACHED_PIC))
            return nullptr;
        return stream;
    }

private:
    AVFormatContext *m_context = nullptr;
    std::chrono::steady_clock::time_point m_deadline;
    bool m_streamInfoRead = false;
    bool m_streamInfoOk = false;
};

bool hasDecoder(const AVStream *stream)
{
    return stream && stream->codecpar->codec_id != AV_CODEC_ID_NONE
           && avcodec_find_decoder(stream->codecpar->codec_id) != nullptr;
}

QString describeVideo(const AVStream *stream)
{
    const AVCodecParameters *codec = stream->codecpar;
    QString text = QString::fromUtf8(avcodec_get_name(codec->codec_id));
    if (codec->width > 0 && codec->height > 0)
        text += QStringLiteral(" %1 x %2").arg(codec->width).arg(codec->height);
    const AVRational rate = stream->avg_frame_rate.num > 0 ? stream->avg_frame_rate : stream->r_frame_rate;
    if (rate.num > 0 && rate.den > 0)
        text += QStringLiteral(", %1 fps").arg(av_q2d(rate), 0, 'g', 4);
    return text;
}

QString describeAudio(const AVStream *stream)
{
    const AVCodecParameters *codec = stream->codecpar;
    QString text = QString::fromUtf8(avcodec_get_name(codec->codec_id));
    if (codec->sample_rate > 0)
        text += QStringLiteral(" %1 Hz").arg(codec->sample_rate);
    const int channels = codec->ch_layout.nb_channels;
    if (channels > 0)
        text += channels == 1 ? QStringLiteral(", 1 channel") : QStringLiteral(", %1 channels").arg(channels);
    return text;
}
} // namespace

std::optional<double> ZBAVProbe::durationSeconds(const QString &path)
{
    Demuxer demuxer(path);
    if (!demuxer.isOpen())
        return std::nullopt;
    if (const std::optional<double> stated = demuxer.statedDuration())
        return stated;
    // MPEG program streams and the like state nothing: look at the packets,
    // within the bounds set at open.
    if (!demuxer.findStreamInfo())
        return std::nullopt;
    return demuxer.statedDuration();
}

bool ZBAVProbe::canDecode(const QString &path)
{
    Demuxer demuxer(path);
    if (!demuxer.findStreamInfo())
        return false;
    if (const AVStream *video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO))
        return hasDecoder(video);
    return hasDecoder(demuxer.bestStream(AVMEDIA_TYPE_AUDIO));
}

QString ZBAVProbe::formatSummary(const QString &path)
{
    Demuxer demuxer(path);
    if (!demuxer.isOpen())
        return QString();
    demuxer.findStreamInfo();
    QStringList parts;
    if (const AVStream *video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO))
        parts.append(describeVideo(video));
    if (const AVStream *audio = demuxer.bestStream(AVMEDIA_TYPE_AUDIO))
        parts.append(describeAudio(audio));
    // A demuxer may serve a family ("mov,mp4,m4a,3gp,3g2,mj2"): name the
    // member the file's extension picks, else the first.
    const QStringList family = QString::fromUtf8(demuxer.context()->iformat->name).split(u',');
    const QString extension = ZBMediaTypes::pathExtension(path).toLower();
    const QString container = family.contains(extension) ? extension : family.first();
    if (parts.isEmpty())
        return container + QStringLiteral(": no audio or video");
    return container + QStringLiteral(": ") + parts.join(QStringLiteral("; "));
}

std::optional<ZBMediaProbe::Streams> ZBAVProbe::streamCodecs(const QString &path)
{
    Demuxer demuxer(path);
    if (!demuxer.isOpen())
        return std::nullopt;
    demuxer.findStreamInfo();
    ZBMediaProbe::Streams streams;
    streams.container = QString::fromUtf8(demuxer.context()->iformat->name);
    if (const AVStream *video = demuxer.bestStream(AVMEDIA_TYPE_VIDEO))
        streams.videoCodec = QString::fromUtf8(avcodec_get_name(video->codecpar->codec_id));
    if (const AVStream *audio = demuxer.bestStream(AVMEDIA_TYPE_AUDIO))
        streams.audioCodec = QString::fromUtf8(avcodec_get_name(audio->codecpar->codec_id));
    return streams;
}
