#include "settings/zbpreferencescales.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace
{
int clampedRound(double value, int minimum, int maximum)
{
    // Compared before rounding: a huge stored value does not fit an int.
    if (value <= minimum)
        return minimum;
    if (value >= maximum)
        return maximum;
    return static_cast<int>(std::lround(value));
}

// The same folder typed with and without a trailing slash, or with "./" in
// it, must not take two places in the list.
QString comparable(const QString &folder)
{
    return QDir::cleanPath(folder);
}
} // namespace

double ZBPreferenceScales::intervalForSliderValue(int value)
{
    value = std::clamp(value, IntervalSliderMinimum, IntervalSliderMaximum);
    return value <= 10 ? value / 10.0 : value - 9.0;
}

int ZBPreferenceScales::sliderValueForInterval(double seconds)
{
    if (!std::isfinite(seconds))
        seconds = 1.0;
    const double position = seconds > 1.0 ? seconds + 9.0 : seconds * 10.0;
    return clampedRound(position, IntervalSliderMinimum, IntervalSliderMaximum);
}

double ZBPreferenceScales::stayingTimeForSliderValue(int value)
{
    return std::clamp(value, StayingTimeSliderMinimum, StayingTimeSliderMaximum);
}

int ZBPreferenceScales::sliderValueForStayingTime(double seconds)
{
    if (!std::isfinite(seconds))
        seconds = 10.0;
    return clampedRound(seconds, StayingTimeSliderMinimum, StayingTimeSliderMaximum);
}

QStringList ZBPreferenceScales::recentFoldersAfterChoosing(const QStringList &recent, const QString &folder,
                                                           int maximum)
{
    if (folder.isEmpty())
        return recent;
    const QString chosen = comparable(folder);
    QStringList result{chosen};
    for (const QString &entry : recent)
    {
        if (!entry.isEmpty() && comparable(entry) != chosen)
            result.append(entry);
    }
    const int count = std::max(maximum, 1);
    if (result.size() > count)
        result.resize(count);
    return result;
}

QList<ZBPreferenceScales::ScreenshotFormat> ZBPreferenceScales::screenshotFormats()
{
    return {
        {QStringLiteral("TIFF"), "tiff"}, {QStringLiteral("BMP"), "bmp"},
        {QStringLiteral("GIF"), "gif"},   {QStringLiteral("JPEG"), "jpeg"},
        {QStringLiteral("PNG"), "png"},   {QStringLiteral("JPEG 2000"), "jp2"},
    };
}

QByteArray ZBPreferenceScales::fallbackScreenshotFormat()
{
    return "png";
}
