#include "engines/mpv/zbmpvengine.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <mpv/client.h>

#include <algorithm>
#include <clocale>
#include <cmath>

#include "engines/mpv/zbmpvvideoview.h"
#include "playback/zbmediaprobe.h"

Q_LOGGING_CATEGORY(lcMpv, "norvik.engine.mpv")

namespace
{
std::atomic_bool s_headlessByDefault{false};

// The properties whose changes the core reports; the slot number is the
// observer's userdata.
enum ObservedSlot : quint64
{
    TimePosSlot = 1,
    DurationSlot,
    PauseSlot,
    EofReachedSlot,
    DisplayWidthSlot,
    DisplayHeightSlot,
    VolumeSlot,
    SeekableSlot,
    KeepAspectSlot,
};

const struct
{
    ObservedSlot slot;
    const char *name;
} ObservedProperties[] = {
    {TimePosSlot, "time-pos"},         {DurationSlot, "duration"},        {PauseSlot, "pause"},
    {EofReachedSlot, "eof-reached"},   {DisplayWidthSlot, "dwidth"},      {DisplayHeightSlot, "dheight"},
    {VolumeSlot, "volume"},            {SeekableSlot, "seekable"},        {KeepAspectSlot, "keepaspect"},
};

// Asked once the first frame of a file is decoded: what the information
// window and the getters need, read in one consistent moment.
const char *const DescribedProperties[] = {
    "duration",  "dwidth",           "dheight",      "time-pos",    "seekable",    "video-format",
    "video-params", "container-fps", "audio-codec-name", "audio-params", "file-format",
};

// Replies carry what they answer in the top byte of their userdata and the
// serial of the load or seek they belong to below it.
enum ReplyKind : quint64
{
    PlainReply = 0,
    LoadReply = 1,
    SeekReply = 2,
    DescribeReply = 3,
    TimeRefreshReply = 4,
};
constexpr int KindShift = 56;
constexpr quint64 SerialMask = (quint64(1) << KindShift) - 1;

constexpr quint64 replyTag(ReplyKind kind, quint64 serial)
{
    return (quint64(kind) << KindShift) | (serial & SerialMask);
}

// A file that has neither opened nor failed by then is on a stalled mount or
// trips the demuxer; the controller must get an answer either way.
constexpr int LoadTimeoutMs = 20000;
// A seek whose frame never arrives (some broken files) must not freeze the
// position shown.
constexpr int SeekTimeoutMs = 5000;

QVariant toVariant(const mpv_node &node)
{
    switch (node.format)
    {
        case MPV_FORMAT_STRING:
        case MPV_FORMAT_OSD_STRING:
            return QString::fromUtf8(node.u.string);
        case MPV_FORMAT_FLAG:
            return node.u.flag != 0;
        case MPV_FORMAT_INT64:
            return qint64(node.u.int64);
        case MPV_FORMAT_DOUBLE:
            return node.u.double_;
        case MPV_FORMAT_NODE_ARRAY:
        {
            QVariantList list;
            for (int i = 0; i < node.u.list->num; ++i)
                list.append(toVariant(node.u.list->values[i]));
            return list;
        }
        case MPV_FORMAT_NODE_MAP:
        {
            QVariantMap map;
            for (int i = 0; i < node.u.list->num; ++i)
                map.insert(QString::fromUtf8(node.u.list->keys[i]), toVariant(node.u.list->values[i]));
            return map;
        }
        case MPV_FORMAT_BYTE_ARRAY:
            return QByteArray(static_cast<const char *>(node.u.ba->data), qsizetype(node.u.ba->size));
        default:
            return QVariant();
    }
}

QVariant propertyValue(const mpv_event_property *property)
{
    if (!property || property->format != MPV_FORMAT_NODE || !property->data)
        return QVariant();
    return toVariant(*static_cast<const mpv_node *>(property->data));
}

bool platformHasGlWindows()
{
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return false;
    const QString platform = QGuiApplication::platformName();
    return platform != u"offscreen" && platform != u"minimal";
}

QByteArray number(double value)
{
    // QByteArray::number ignores the locale: mpv parses a C-locale number.
    return QByteArray::number(value, 'f', 3);
}
} // namespace

ZBMpvEngine::ZBMpvEngine(int engineCode, QObject *parent)
    : ZBMpvEngine(engineCode, Output::Automatic, parent)
{
}

ZBMpvEngine::ZBMpvEngine(int engineCode, Output output, QObject *parent)
    : ZBPlaybackEngine(parent)
    , m_engineCode(engineCode)
    , m_headless(output == Output::Headless || s_headlessByDefault.load()
                 || qEnvironmentVariable("NVK_HEADLESS_MEDIA") == u"1" || !platformHasGlWindows())
{
    m_loadWatchdog.setSingleShot(true);
    m_loadWatchdog.setInterval(LoadTimeoutMs);
    connect(&m_loadWatchdog, &QTimer::timeout, this, [this]() {
        if (m_state == State::Loading || m_state == State::Describing)
            failLoad(QStringLiteral("Cannot play \"%1\": the file did not open within %2 seconds")
                         .arg(QDir::toNativeSeparators(m_path))
                         .arg(LoadTimeoutMs / 1000));
    });
    m_seekWatchdog.setSingleShot(true);
    m_seekWatchdog.setInterval(SeekTimeoutMs);
    connect(&m_seekWatchdog, &QTimer::timeout, this, [this]() {
        if (m_seeking)
            finishSeek();
    });
    start();
}

ZBMpvEngine::~ZBMpvEngine()
{
    // The render context must go first, with its GL context current, while
    // the core still exists; then no callback may reach this object.
    if (m_view)
    {
        disconnect(m_view, nullptr, this, nullptr);
        delete m_view;
    }
    if (m_mpv)
    {
        mpv_set_wakeup_callback(m_mpv, nullptr, nullptr);
        mpv_terminate_destroy(m_mpv);
        m_mpv = nullptr;
    }
}

void ZBMpvEngine::setHeadlessByDefault(bool headless)
{
    s_headlessByDefault = headless;
}

void ZBMpvEngine::start()
{
    // mpv refuses to start when numbers are not written the C way, and
    // QCoreApplication has just set the user's locale.
    std::setlocale(LC_NUMERIC, "C");
    m_mpv = mpv_create();
    if (!m_mpv)
    {
        m_startError = QStringLiteral("the video engine (libmpv) could not be created");
        qCWarning(lcMpv).noquote() << m_startError;
        return;
    }

    const std::pair<const char *, const char *> options[] = {
        {"config", "no"},
        {"terminal", "no"},
        {"idle", "yes"},
        // At the end the last frame stays and eof-reached says so; the
        // controller decides what comes next.
        {"keep-open", "yes"},
        {"pause", "yes"},
        {"hwdec", "no"},
        {"ytdl", "no"},
        {"load-scripts", "no"},
        {"osc", "no"},
        {"input-default-bindings", "no"},
        {"input-vo-keyboard", "no"},
        {"hr-seek", "yes"},
        // MPEG program streams only land exactly with a head start.
        {"hr-seek-demuxer-offset", "1.5"},
        {"audio-fallback-to-null", "yes"},
        {"vo", m_headless ? "null" : "libmpv"},
    };
    for (const auto &[name, value] : options)
    {
        const int result = mpv_set_option_string(m_mpv, name, value);
        if (result < 0)
            qCDebug(lcMpv) << "option" << name << "not taken:" << mpv_error_string(result);
    }
    if (m_headless)
        mpv_set_option_string(m_mpv, "ao", "null");
    else
        mpv_set_option_string(m_mpv, "gpu-hwdec-interop", "no");

    const int initialized = mpv_initialize(m_mpv);
    if (initialized < 0)
    {
        m_startError = QStringLiteral("the video engine (libmpv) could not start: %1")
                           .arg(QString::fromUtf8(mpv_error_string(initialized)));
        qCWarning(lcMpv).noquote() << m_startError;
        mpv_terminate_destroy(m_mpv);
        m_mpv = nullptr;
        return;
    }
    for (const auto &property : ObservedProperties)
        mpv_observe_property(m_mpv, property.slot, property.name, MPV_FORMAT_NODE);
    mpv_set_wakeup_callback(m_mpv, &ZBMpvEngine::onWakeup, this);

    if (!m_headless)
    {
        m_view = new ZBMpvVideoView(m_mpv);
        connect(m_view, &ZBMpvVideoView::renderReady, this, &ZBMpvEngine::onRenderReady);
        connect(m_view, &ZBMpvVideoView::renderLost, this, &ZBMpvEngine::onRenderLost);
        connect(m_view, &ZBMpvVideoView::renderFailed, this, [this](const QString &reason) {
            m_renderError = reason;
            if (m_state == State::WaitingForView)
                failLoad(QStringLiteral("Cannot play \"%1\": %2").arg(QDir::toNativeSeparators(m_path), reason));
        });
    }
}

bool ZBMpvEngine::checkFile(const QString &path, QString *reason)
{
    const auto refuse = [reason, &path](const QString &why) {
        if (reason)
            *reason = QStringLiteral("\"%1\" %2").arg(QDir::toNativeSeparators(path), why);
        return false;
    };
    if (path.isEmpty())
    {
        if (reason)
            *reason = QStringLiteral("no file was given");
        return false;
    }
    const QFileInfo info(path);
    if (!info.exists())
        return refuse(QStringLiteral("does not exist"));
    if (info.isDir())
        return refuse(QStringLiteral("is a folder, not a movie"));
    if (!info.isFile())
        return refuse(QStringLiteral("is not a regular file"));
    if (!info.isReadable())
        return refuse(QStringLiteral("cannot be read (permission denied)"));
    if (!ZBMediaProbe::canDecode(path))
        return refuse(QStringLiteral("cannot be decoded: its format is unknown or the file is damaged"));
    return true;
}

bool ZBMpvEngine::canInitWithFile(const QString &path)
{
    return m_mpv && checkFile(path, nullptr);
}

void ZBMpvEngine::resetCache()
{
    m_fileStarted = false;
    m_fileOpened = false;
    m_describePending = 0;
    m_description.clear();
    m_timePos = -1.0;
    m_duration = 0.0;
    m_paused = true;
    m_eof = false;
    m_endReported = false;
    m_width = 0;
    m_height = 0;
    m_seekable = false;
    m_summary.clear();
    m_seeking = false;
    m_seekAcknowledged = false;
    m_seekWatchdog.stop();
    m_loadWatchdog.stop();
}

void ZBMpvEngine::load(const QString &path)
{
    ++m_loadSerial;
    resetCache();
    m_entryId = -1;
    m_path = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
    if (!m_mpv || path.isEmpty() || !m_renderError.isEmpty())
    {
        // Answer later, as a real load would: the caller may not be ready
        // for a signal from inside load().
        m_state = State::Loading;
        const quint64 serial = m_loadSerial;
        QString reason = QStringLiteral("no file was given");
        if (!m_mpv)
            reason = m_startError;
        else if (!path.isEmpty())
            reason = QStringLiteral("Cannot play \"%1\": %2").arg(QDir::toNativeSeparators(m_path), m_renderError);
        QTimer::singleShot(0, this, [this, serial, reason]() {
            if (serial == m_loadSerial && m_state == State::Loading)
                failLoad(reason);
        });
        return;
    }
    if (!m_headless && !m_renderReady)
    {
        m_state = State::WaitingForView;
        // Stop what played before, so that it does not go on behind a load
        // that waits.
        command({"stop"});
        return;
    }
    sendLoad();
}

void ZBMpvEngine::sendLoad()
{
    m_state = State::Loading;
    // Commands run in order: the file opens paused.
    setProperty("pause", "yes");
    // An absolute path never reads as a protocol ("http:...", "concat:...").
    command({"loadfile", QFile::encodeName(m_path), "replace"}, replyTag(LoadReply, m_loadSerial));
    m_loadWatchdog.start();
}

void ZBMpvEngine::stop()
{
    ++m_loadSerial;
    resetCache();
    m_entryId = -1;
    m_path.clear();
    m_state = State::Idle;
    if (m_mpv)
        command({"stop"});
}

void ZBMpvEngine::play()
{
    if (m_state != State::Loaded)
        return;
    m_paused = false;
    setProperty("pause", "no");
}

void ZBMpvEngine::pause()
{
    if (m_state != State::Loaded)
        return;
    m_paused = true;
    setProperty("pause", "yes");
}

bool ZBMpvEngine::isLoaded() const
{
    return m_state == State::Loaded;
}

bool ZBMpvEngine::isPlaying() const
{
    return m_state == State::Loaded && !m_paused && !m_eof;
}

double ZBMpvEngine::currentTime() const
{
    if (m_state != State::Loaded)
        return -1.0;
    return std::max(0.0, m_timePos);
}

double ZBMpvEngine::totalTime() const
{
    return m_state == State::Loaded ? m_duration : 0.0;
}

void ZBMpvEngine::seek(double position)
{
    if (m_state != State::Loaded || !std::isfinite(position))
        return;
    if (!m_seekable)
    {
        qCDebug(lcMpv) << "not seekable:" << m_path;
        return;
    }
    position = std::max(0.0, position);
    if (m_duration > 0.0)
        position = std::min(position, m_duration);
    ++m_seekSerial;
    m_seeking = true;
    m_seekAcknowledged = false;
    // Until the frame there is decoded the core still reports the old
    // position; the tick shows where the user asked to go.
    m_timePos = position;
    command({"seek", number(position), "absolute+exact"}, replyTag(SeekReply, m_seekSerial));
    m_seekWatchdog.start();
}

void ZBMpvEngine::finishSeek()
{
    m_seekWatchdog.stop();
    m_seekAcknowledged = false;
    // Read where the core actually is before declaring the seek done.
    if (m_mpv)
        mpv_get_property_async(m_mpv, replyTag(TimeRefreshReply, m_seekSerial), "time-pos", MPV_FORMAT_NODE);
    else
        m_seeking = false;
}

void ZBMpvEngine::setVolume(int volume)
{
    m_volume = std::clamp(volume, 0, 100);
    if (m_mpv)
        setProperty("volume", QByteArray::number(m_volume));
}

QSize ZBMpvEngine::naturalSize() const
{
    if (m_state != State::Loaded || m_width <= 0 || m_height <= 0)
        return QSize();
    return QSize(m_width, m_height);
}

void ZBMpvEngine::setPreservesAspectRatio(bool preserves)
{
    setProperty("keepaspect", preserves ? "yes" : "no");
}

QWidget *ZBMpvEngine::view()
{
    return m_view;
}

QImage ZBMpvEngine::snapshot()
{
    if (!m_mpv || m_state != State::Loaded)
        return QImage();
    const char *arguments[] = {"screenshot-raw", "video", nullptr};
    mpv_node result{};
    const int status = mpv_command_ret(m_mpv, arguments, &result);
    if (status < 0)
    {
        qCDebug(lcMpv) << "no snapshot:" << mpv_error_string(status);
        return QImage();
    }
    const QVariantMap shot = toVariant(result).toMap();
    mpv_free_node_contents(&result);

    const int width = shot.value(QStringLiteral("w")).toInt();
    const int height = shot.value(QStringLiteral("h")).toInt();
    const qsizetype stride = shot.value(QStringLiteral("stride")).toLongLong();
    const QString format = shot.value(QStringLiteral("format")).toString();
    const QByteArray data = shot.value(QStringLiteral("data")).toByteArray();
    if (width <= 0 || height <= 0 || stride < qsizetype(width) * 4 || data.size() < stride * height)
    {
        qCWarning(lcMpv) << "unusable snapshot" << width << height << stride << data.size();
        return QImage();
    }
    QImage::Format imageFormat = QImage::Format_Invalid;
    // bgr0 and bgra are B, G, R, X bytes: one little-endian 0xXXRRGGBB word.
    if (format == u"bgr0")
        imageFormat = QImage::Format_RGB32;
    else if (format == u"bgra")
        imageFormat = QImage::Format_ARGB32;
    if (imageFormat == QImage::Format_Invalid)
    {
        qCWarning(lcMpv) << "snapshot in an unexpected pixel format" << format;
        return QImage();
    }
    QImage image = QImage(reinterpret_cast<const uchar *>(data.constData()), width, height, stride, imageFormat)
                       .copy();
    const QSize natural = naturalSize();
    if (natural.isValid() && image.size() != natural)
        image = image.scaled(natural, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return image;
}

QString ZBMpvEngine::formatSummary() const
{
    return m_state == State::Loaded ? m_summary : QString();
}

void ZBMpvEngine::command(const QList<QByteArray> &arguments, quint64 userdata)
{
    if (!m_mpv)
        return;
    QList<const char *> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const QByteArray &argument : arguments)
        pointers.append(argument.constData());
    pointers.append(nullptr);
    // The core copies the arguments before this returns.
    const int result = mpv_command_async(m_mpv, userdata, pointers.data());
    if (result < 0)
        qCWarning(lcMpv) << "command" << arguments.value(0) << "refused:" << mpv_error_string(result);
}

void ZBMpvEngine::setProperty(const char *name, const QByteArray &value)
{
    if (!m_mpv)
        return;
    const char *text = value.constData();
    mpv_set_property_async(m_mpv, PlainReply, name, MPV_FORMAT_STRING, &text);
}

void ZBMpvEngine::onWakeup(void *context)
{
    // Runs on one of libmpv's threads: only hand over to the GUI thread.
    auto *engine = static_cast<ZBMpvEngine *>(context);
    if (!engine->m_drainQueued.exchange(true))
        QMetaObject::invokeMethod(engine, &ZBMpvEngine::drainEvents, Qt::QueuedConnection);
}

void ZBMpvEngine::drainEvents()
{
    m_drainQueued = false;
    while (m_mpv)
    {
        const mpv_event *event = mpv_wait_event(m_mpv, 0);
        if (!event || event->event_id == MPV_EVENT_NONE)
            break;
        handleEvent(*event);
    }
}

void ZBMpvEngine::handleEvent(const mpv_event &event)
{
    switch (event.event_id)
    {
        case MPV_EVENT_PROPERTY_CHANGE:
            handlePropertyChange(event.reply_userdata, propertyValue(static_cast<mpv_event_property *>(event.data)));
            break;
        case MPV_EVENT_GET_PROPERTY_REPLY:
        {
            const auto *property = static_cast<const mpv_event_property *>(event.data);
            handleReply(event.reply_userdata, event.error, propertyValue(property),
                        property ? QString::fromUtf8(property->name) : QString());
            break;
        }
        case MPV_EVENT_COMMAND_REPLY:
        {
            const auto *reply = static_cast<const mpv_event_command *>(event.data);
            handleReply(event.reply_userdata, event.error, reply ? toVariant(reply->result) : QVariant(), QString());
            break;
        }
        case MPV_EVENT_SET_PROPERTY_REPLY:
            if (event.error < 0)
                qCDebug(lcMpv) << "property not set:" << mpv_error_string(event.error);
            break;
        case MPV_EVENT_START_FILE:
        {
            const auto *started = static_cast<const mpv_event_start_file *>(event.data);
            if (started && m_entryId >= 0 && started->playlist_entry_id == m_entryId)
                m_fileStarted = true;
            break;
        }
        case MPV_EVENT_FILE_LOADED:
            if (m_fileStarted && m_state == State::Loading)
                m_fileOpened = true;
            break;
        case MPV_EVENT_PLAYBACK_RESTART:
            if (m_state == State::Loading && m_fileOpened)
                describeLoadedFile();
            else if (m_seeking && m_seekAcknowledged)
                finishSeek();
            break;
        case MPV_EVENT_END_FILE:
        {
            const auto *ended = static_cast<const mpv_event_end_file *>(event.data);
            if (!ended || m_entryId < 0 || ended->playlist_entry_id != m_entryId)
                break;
            m_fileStarted = false;
            if (ended->reason == MPV_END_FILE_REASON_ERROR)
            {
                const QString reason = QStringLiteral("Cannot play \"%1\": %2")
                                           .arg(QDir::toNativeSeparators(m_path),
                                                QString::fromUtf8(mpv_error_string(ended->error)));
                if (m_state == State::Loading || m_state == State::Describing)
                {
                    failLoad(reason);
                    break;
                }
                qCWarning(lcMpv).noquote() << reason;
            }
            // The file is gone from the core (an error while playing, or the
            // core stopped it): for the controller that is the end.
            if (m_state == State::Loaded)
            {
                m_eof = true;
                m_paused = true;
                if (!m_endReported)
                {
                    m_endReported = true;
                    Q_EMIT endReached();
                }
            }
            break;
        }
        case MPV_EVENT_SHUTDOWN:
            qCWarning(lcMpv) << "the video engine's core shut down";
            if (m_state == State::Loading || m_state == State::Describing)
                failLoad(QStringLiteral("Cannot play \"%1\": the video engine stopped")
                             .arg(QDir::toNativeSeparators(m_path)));
            break;
        default:
            break;
    }
}

void ZBMpvEngine::handlePropertyChange(quint64 slot, const QVariant &value)
{
    if (slot == VolumeSlot)
    {
        if (value.isValid())
            m_volume = std::clamp(int(std::lround(value.toDouble())), 0, 100);
        return;
    }
    if (slot == KeepAspectSlot)
    {
        if (value.isValid())
            m_keepAspect = value.toBool();
        return;
    }
    // Until the newest file has started, what arrives describes the one
    // before it.
    if (!m_fileStarted || m_state == State::Idle || m_state == State::WaitingForView)
        return;
    switch (slot)
    {
        case TimePosSlot:
            if (value.isValid() && !m_seeking)
                m_timePos = value.toDouble();
            break;
        case DurationSlot:
            if (value.isValid() && value.toDouble() > 0.0)
                m_duration = value.toDouble();
            break;
        case PauseSlot:
            if (value.isValid())
                m_paused = value.toBool();
            break;
        case EofReachedSlot:
        {
            const bool eof = value.toBool();
            if (eof == m_eof)
                break;
            m_eof = eof;
            if (!eof)
            {
                // Moved away from the end (a seek back): the next arrival
                // there is reported again.
                m_endReported = false;
            }
            else if (m_state == State::Loaded && !m_endReported)
            {
                m_endReported = true;
                Q_EMIT endReached();
            }
            break;
        }
        case DisplayWidthSlot:
            if (value.isValid())
                m_width = int(value.toLongLong());
            break;
        case DisplayHeightSlot:
            if (value.isValid())
                m_height = int(value.toLongLong());
            break;
        case SeekableSlot:
            m_seekable = value.toBool();
            break;
        default:
            break;
    }
}

void ZBMpvEngine::handleReply(quint64 userdata, int error, const QVariant &value, const QString &name)
{
    const auto kind = ReplyKind(userdata >> KindShift);
    const quint64 serial = userdata & SerialMask;
    switch (kind)
    {
        case LoadReply:
            if (serial != (m_loadSerial & SerialMask) || m_state != State::Loading)
                break;
            if (error < 0)
            {
                failLoad(QStringLiteral("Cannot play \"%1\": %2")
                             .arg(QDir::toNativeSeparators(m_path), QString::fromUtf8(mpv_error_string(error))));
                break;
            }
            m_entryId = value.toMap().value(QStringLiteral("playlist_entry_id"), -1).toLongLong();
            if (m_entryId < 0)
                failLoad(QStringLiteral("Cannot play \"%1\": the video engine did not take the file")
                             .arg(QDir::toNativeSeparators(m_path)));
            break;
        case DescribeReply:
            if (serial != (m_loadSerial & SerialMask) || m_state != State::Describing)
                break;
            if (error >= 0 && value.isValid())
                m_description.insert(name, value);
            if (--m_describePending == 0)
                finishLoad();
            break;
        case SeekReply:
            if (serial != (m_seekSerial & SerialMask) || !m_seeking)
                break;
            if (error < 0)
            {
                qCDebug(lcMpv) << "seek refused:" << mpv_error_string(error);
                finishSeek();
            }
            else
            {
                m_seekAcknowledged = true;
            }
            break;
        case TimeRefreshReply:
            if (serial != (m_seekSerial & SerialMask) || !m_seeking)
                break;
            m_seeking = false;
            if (error >= 0 && value.isValid() && m_state == State::Loaded)
                m_timePos = value.toDouble();
            Q_EMIT seekFinished();
            break;
        case PlainReply:
            if (error < 0)
                qCDebug(lcMpv) << "command failed:" << mpv_error_string(error);
            break;
    }
}

void ZBMpvEngine::describeLoadedFile()
{
    m_state = State::Describing;
    m_describePending = 0;
    m_description.clear();
    // Asked together and answered in order, after the first frame: the
    // answers describe one moment, and the last of them completes the load.
    for (const char *name : DescribedProperties)
    {
        if (mpv_get_property_async(m_mpv, replyTag(DescribeReply, m_loadSerial), name, MPV_FORMAT_NODE) >= 0)
            ++m_describePending;
    }
    if (m_describePending == 0)
        finishLoad();
}

void ZBMpvEngine::finishLoad()
{
    m_loadWatchdog.stop();
    const auto number = [this](const char *name) { return m_description.value(QLatin1String(name)).toDouble(); };
    if (number("duration") > 0.0)
        m_duration = number("duration");
    if (number("dwidth") > 0 && number("dheight") > 0)
    {
        m_width = int(number("dwidth"));
        m_height = int(number("dheight"));
    }
    if (m_description.contains(QStringLiteral("time-pos")))
        m_timePos = number("time-pos");
    else if (m_timePos < 0.0)
        m_timePos = 0.0;
    if (m_description.contains(QStringLiteral("seekable")))
        m_seekable = m_description.value(QStringLiteral("seekable")).toBool();
    m_summary = describeStreams();
    m_state = State::Loaded;

    const quint64 serial = m_loadSerial;
    Q_EMIT loaded();
    // A file so short that it ended before it was described.
    if (serial == m_loadSerial && m_state == State::Loaded && m_eof && !m_endReported)
    {
        m_endReported = true;
        Q_EMIT endReached();
    }
}

void ZBMpvEngine::failLoad(const QString &reason)
{
    qCDebug(lcMpv).noquote() << reason;
    ++m_loadSerial;
    resetCache();
    m_entryId = -1;
    m_state = State::Idle;
    if (m_mpv)
        command({"stop"});
    Q_EMIT loadFailed(reason);
}

QString ZBMpvEngine::describeStreams() const
{
    QStringList parts;
    const QString videoFormat = m_description.value(QStringLiteral("video-format")).toString();
    if (!videoFormat.isEmpty())
    {
        QString video = videoFormat;
        const QVariantMap params = m_description.value(QStringLiteral("video-params")).toMap();
        const int width = params.value(QStringLiteral("w"), m_width).toInt();
        const int height = params.value(QStringLiteral("h"), m_height).toInt();
        if (width > 0 && height > 0)
            video += QStringLiteral(" %1 x %2").arg(width).arg(height);
        const double fps = m_description.value(QStringLiteral("container-fps")).toDouble();
        if (fps > 0.0)
            video += QStringLiteral(", %1 fps").arg(fps, 0, 'g', 4);
        parts.append(video);
    }
    const QString audioCodec = m_description.value(QStringLiteral("audio-codec-name")).toString();
    if (!audioCodec.isEmpty())
    {
        QString audio = audioCodec;
        const QVariantMap params = m_description.value(QStringLiteral("audio-params")).toMap();
        const int rate = params.value(QStringLiteral("samplerate")).toInt();
        if (rate > 0)
            audio += QStringLiteral(" %1 Hz").arg(rate);
        const int channels = params.value(QStringLiteral("channel-count")).toInt();
        if (channels > 0)
            audio += channels == 1 ? QStringLiteral(", 1 channel") : QStringLiteral(", %1 channels").arg(channels);
        parts.append(audio);
    }
    // "mov,mp4,m4a,3gp,3g2,mj2" names a family; its first member will do.
    const QString container =
        m_description.value(QStringLiteral("file-format")).toString().section(u',', 0, 0);
    const QString streams = parts.isEmpty() ? QStringLiteral("no audio or video") : parts.join(QStringLiteral("; "));
    return container.isEmpty() ? streams : container + QStringLiteral(": ") + streams;
}

void ZBMpvEngine::onRenderReady()
{
    m_renderReady = true;
    m_renderError.clear();
    if (m_state == State::WaitingForView)
    {
        sendLoad();
    }
    else if (m_videoLost && (m_state == State::Loaded || m_state == State::Describing))
    {
        // The old render context took the video output with it; selecting
        // the track again makes the core open a new one on this context.
        setProperty("vid", "no");
        setProperty("vid", "auto");
    }
    m_videoLost = false;
}

void ZBMpvEngine::onRenderLost()
{
    m_renderReady = false;
    m_videoLost = m_state == State::Loaded || m_state == State::Describing;
}
