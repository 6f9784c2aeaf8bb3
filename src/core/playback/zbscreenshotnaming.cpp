#include "playback/zbscreenshotnaming.h"

#include <QDir>
#include <QFileInfo>

#include "localization/zblocalizer.h"

namespace
{
// File names are limited to 255 bytes; the folder's name adds the localised
// word "screenshots" and a shot's name its number and extension.
constexpr qsizetype MaximumNameBytes = 200;

bool isRefused(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7f || QStringView(u"/\\:*?\"<>|").contains(c);
}
} // namespace

QString ZBScreenshotNaming::fileExtension()
{
    return QStringLiteral("tiff");
}

QString ZBScreenshotNaming::addSuffixForFileName(const QString &name, const QString &extension, const QString &folder)
{
    QString candidate = QStringLiteral("%1/%2.%3").arg(folder, name, extension);
    for (int number = 2; QFileInfo::exists(candidate) || QFileInfo(candidate).isSymLink(); ++number)
        candidate = QStringLiteral("%1/%2%3.%4").arg(folder, name, QString::number(number), extension);
    return candidate;
}

QString ZBScreenshotNaming::safeFileName(const QString &name)
{
    QString safe;
    safe.reserve(name.size());
    for (const QChar c : name)
        safe += isRefused(c) ? QChar(u'_') : c;
    safe = safe.trimmed();
    // Cut whole characters (a surrogate pair stays together) until the UTF-8
    // form fits.
    while (safe.toUtf8().size() > MaximumNameBytes)
    {
        safe.chop(safe.size() >= 2 && safe.back().isLowSurrogate() ? 2 : 1);
        safe = safe.trimmed();
    }
    if (safe.isEmpty() || safe == u"." || safe == u"..")
        return ZBLocalizer::localizedStringForKey(QStringLiteral("screenshot"));
    return safe;
}

QString ZBScreenshotNaming::trackFolder(const QString &screenshotFolder, const QString &trackName)
{
    return QStringLiteral("%1/%2 %3")
        .arg(QDir::cleanPath(screenshotFolder), safeFileName(trackName),
             ZBLocalizer::localizedStringForKey(QStringLiteral("screenshots")));
}

QString ZBScreenshotNaming::nextShotPath(const QString &screenshotFolder, const QString &trackName)
{
    return addSuffixForFileName(ZBLocalizer::localizedStringForKey(QStringLiteral("screenshot")), fileExtension(),
                                trackFolder(screenshotFolder, trackName));
}
