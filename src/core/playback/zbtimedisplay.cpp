#include "playback/zbtimedisplay.h"

#include <algorithm>
#include <cmath>

QString ZBTimeDisplay::clockText(double seconds)
{
    const double clamped = std::clamp(std::floor(seconds), 0.0, 4294967295.0);
    const auto whole = quint64(clamped);
    const quint64 secondsOfDay = whole % 86400;
    const auto pad = [](quint64 value) { return QString::number(value).rightJustified(2, QLatin1Char('0')); };
    const QString minutesSeconds = pad(secondsOfDay / 60 % 60) + QLatin1Char(':') + pad(secondsOfDay % 60);
    if (whole >= 3600)
        return pad(secondsOfDay / 3600) + QLatin1Char(':') + minutesSeconds;
    return minutesSeconds;
}

QString ZBTimeDisplay::timeText(double current, double total)
{
    return clockText(current) + QLatin1Char('/') + clockText(total);
}

QString ZBTimeDisplay::frameText(double currentFrame, int totalFrames)
{
    return QString::asprintf("%1.0f/%d", currentFrame + 1, totalFrames);
}
