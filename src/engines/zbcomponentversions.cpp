#include "engines/zbcomponentversions.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtWebEngineCore/qtwebenginecoreglobal.h>

#include <mpv/client.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

#include <clocale>
#include <cstring>

#include "engines/flash/zbflashscheme.h"

namespace
{
QString threePart(unsigned version)
{
    return QStringLiteral("%1.%2.%3").arg(version >> 16).arg((version >> 8) & 0xff).arg(version & 0xff);
}

QString askPlayer()
{
    // mpv refuses to start under a locale with a decimal comma; the program
    // sets "C" at start, but this may run before that or in a tool.
    const char *numeric = std::setlocale(LC_NUMERIC, nullptr);
    const QByteArray previous = numeric ? QByteArray(numeric) : QByteArray("C");
    std::setlocale(LC_NUMERIC, "C");
    QString version;
    if (mpv_handle *handle = mpv_create())
    {
        // Nothing of the user's configuration, no output, no scripts: the
        // player exists only to answer one property.
        for (const auto &[name, value] : {std::pair{"config", "no"}, {"terminal", "no"}, {"vo", "null"},
                                          {"ao", "null"}, {"load-scripts", "no"}, {"ytdl", "no"}, {"idle", "yes"}})
            mpv_set_option_string(handle, name, value);
        if (mpv_initialize(handle) >= 0)
        {
            if (char *text = mpv_get_property_string(handle, "mpv-version"))
            {
                version = QString::fromUtf8(text);
                mpv_free(text);
            }
        }
        mpv_terminate_destroy(handle);
    }
    std::setlocale(LC_NUMERIC, previous.constData());
    if (version.startsWith(QLatin1String("mpv ")))
        version.remove(0, 4);
    return version.trimmed();
}
} // namespace

QString ZBComponentVersions::mpvClientApiVersion()
{
    const unsigned long version = mpv_client_api_version();
    return QStringLiteral("%1.%2").arg(version >> 16).arg(version & 0xffff);
}

QString ZBComponentVersions::mpvVersion()
{
    static const QString version = askPlayer();
    return version;
}

QString ZBComponentVersions::libavformatVersion()
{
    return threePart(avformat_version());
}

QString ZBComponentVersions::ffmpegVersion()
{
    const char *info = av_version_info();
    return info ? QString::fromUtf8(info) : QString();
}

QString ZBComponentVersions::ruffleVersion(const QString &assetDirectory)
{
    const QString root = assetDirectory.isEmpty() ? ZBFlashSchemeHandler::assetDirectory() : assetDirectory;
    QFile file(QDir(root).absoluteFilePath(QStringLiteral("ruffle/package.json")));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    const QJsonDocument document = QJsonDocument::fromJson(file.read(1024 * 1024));
    return document.object().value(QLatin1String("version")).toString().trimmed();
}

QString ZBComponentVersions::qtVersion()
{
    return QString::fromLatin1(qVersion());
}

QString ZBComponentVersions::webEngineVersion()
{
    return QString::fromLatin1(qWebEngineVersion());
}

QString ZBComponentVersions::chromiumVersion()
{
    return QString::fromLatin1(qWebEngineChromiumVersion());
}

QList<ZBComponentVersions::Component> ZBComponentVersions::components()
{
    // Version numbers and library names read the same in every language.
    const QString api = QStringLiteral("API %1").arg(mpvClientApiVersion());
    const QString mpv = mpvVersion();
    return {
        {QStringLiteral("libmpv"), mpv.isEmpty() ? api : mpv, mpv.isEmpty() ? QString() : api},
        {QStringLiteral("FFmpeg"), ffmpegVersion(), QStringLiteral("libavformat %1").arg(libavformatVersion())},
        {QStringLiteral("Ruffle"), ruffleVersion(), QString()},
        {QStringLiteral("Qt"), qtVersion(), QString()},
        {QStringLiteral("Qt WebEngine"), webEngineVersion(), QStringLiteral("Chromium %1").arg(chromiumVersion())},
    };
}
