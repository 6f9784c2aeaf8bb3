#include "playback/zbmediatypes.h"

namespace
{
const QStringList &supportedTypes()
{
    static const QStringList types{
        QStringLiteral("avi"),  QStringLiteral("divx"), QStringLiteral("flv"),    QStringLiteral("iflv"),
        QStringLiteral("f4v"),  QStringLiteral("mkv"),  QStringLiteral("gvi"),    QStringLiteral("vp6"),
        QStringLiteral("vfw"),  QStringLiteral("mpg"),  QStringLiteral("mpeg"),   QStringLiteral("mp4"),
        QStringLiteral("3gp"),  QStringLiteral("m1v"),  QStringLiteral("mpv"),    QStringLiteral("dv"),
        QStringLiteral("m4v"),  QStringLiteral("wmv"),  QStringLiteral("rm"),     QStringLiteral("rv"),
        QStringLiteral("rmvb"), QStringLiteral("swf"),  QStringLiteral("exe"),    QStringLiteral("'APPL'"),
        QStringLiteral("xap"),  QStringLiteral("qt"),   QStringLiteral("mov")};
    return types;
}
} // namespace

QStringList ZBMediaTypes::getSupportedFileTypes()
{
    return supportedTypes();
}

bool ZBMediaTypes::isRegisteredType(const QString &extension)
{
    // 3GPP2 files play like 3GPP ones, but open panels never listed them.
    if (extension.compare(QLatin1String("3g2"), Qt::CaseInsensitive) == 0)
        return true;
    return supportedTypes().contains(extension, Qt::CaseInsensitive);
}

QString ZBMediaTypes::getFileType(const QString &path)
{
    if (path.isEmpty())
        return QString();
    const qsizetype dot = path.lastIndexOf(u'.');
    // A name without a dot is taken as if the dot were its first character.
    return path.mid(dot < 0 ? 1 : dot + 1);
}

QString ZBMediaTypes::getFileNameFromPath(const QString &path)
{
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    return name.isEmpty() ? QStringLiteral("unknown") : name;
}

QString ZBMediaTypes::getFileNameWithoutExtension(const QString &name)
{
    const qsizetype dot = name.lastIndexOf(u'.');
    if (dot < 0)
        return name;
    const QString stem = name.left(dot);
    return stem.isEmpty() ? QStringLiteral("unknown") : stem;
}

QString ZBMediaTypes::pathExtension(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(u'/');
    const qsizetype dot = path.lastIndexOf(u'.');
    if (dot <= slash)
        return QString();
    return path.mid(dot + 1);
}
