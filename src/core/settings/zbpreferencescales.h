#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// The rules behind the controls of the preferences window that are not a
// plain one-to-one copy of a setting: the two sliders, the recent-folder list
// of the folder pop-ups and the screenshot formats. Kept apart from the window
// so they can be checked without one.
class ZBPreferenceScales
{
public:
    ZBPreferenceScales() = delete;

    // Screenshot interval, a two-part scale: tenths of a second up to one
    // second, then whole seconds. Slider 1 is 0.1 s (0 would fire the series
    // timer without pause), 10 is 1 s, 11 is 2 s, 69 is one minute: a series
    // slower than one shot a minute is better taken by hand.
    static constexpr int IntervalSliderMinimum = 1;
    static constexpr int IntervalSliderMaximum = 69;
    static double intervalForSliderValue(int value);
    // Where an interval puts the slider when the window opens: i > 1 at
    // i + 9, otherwise at i × 10, rounded to the nearest step and kept inside
    // the slider. A value that is not a number opens at the default 1 s.
    static int sliderValueForInterval(double seconds);

    // Staying time of an SWF frame: the slider's value is the time in seconds.
    // A movie that holds one frame for a whole minute has stopped for any
    // viewer, and under one second ordinary pauses in a movie would end it.
    static constexpr int StayingTimeSliderMinimum = 1;
    static constexpr int StayingTimeSliderMaximum = 60;
    static double stayingTimeForSliderValue(int value);
    static int sliderValueForStayingTime(double seconds);

    // How many folders the folder pop-ups remember. Desktops on Linux keep no
    // system-wide count of recent documents the way other systems do, so the
    // program keeps ten, the count such systems ship with.
    static constexpr int MaximumRecentFolders = 10;
    // The list after the user chose `folder`: it moves to the front (any
    // earlier mention of it, trailing slash or not, is removed) and the list
    // is cut to `maximum` entries, to one when `maximum` is 0 or less. An
    // empty folder leaves the list as it is.
    static QStringList recentFoldersAfterChoosing(const QStringList &recent, const QString &folder,
                                                  int maximum = MaximumRecentFolders);

    // "FormatOfScreenshot" by index: the name shown and the image format a
    // writer is asked for. Screenshots fall back to PNG where this system has
    // no writer for the format.
    struct ScreenshotFormat
    {
        QString title;
        QByteArray writerFormat;
    };
    static QList<ScreenshotFormat> screenshotFormats();
    static QByteArray fallbackScreenshotFormat(); // "png"
};
