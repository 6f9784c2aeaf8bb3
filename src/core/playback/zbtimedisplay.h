#pragma once

#include <QString>

// The texts of the time labels and the rules that decide a track has ended.
class ZBTimeDisplay
{
public:
    // "mm:ss", or "HH:mm:ss" from an hour on; each value decides for itself,
    // so 59:59 can stand against a total of 01:00:00. Hours wrap at a day, the
    // way a clock face shows them.
    static QString clockText(double seconds);
    // "current/total" for time-based engines.
    static QString timeText(double current, double total);
    // "frame/total", frames counted from 1 for the reader.
    static QString frameText(double currentFrame, int totalFrames);
};
