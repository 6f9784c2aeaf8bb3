#pragma once

#include <QString>

class ZBItem;

// Texts of the track table's cells that are more than the stored value.
class ZBTrackCell
{
public:
    ZBTrackCell() = delete;

    // The "Time" column: frames for Flash movies and projectors, "NA" for
    // Silverlight, otherwise the length in seconds as a clock.
    static QString timeText(const ZBItem &item);
    // "mm:ss", or "hh:mm:ss" from an hour on, with a 12-hour clock's hours: the
    // table has always shown 13 hours as "01:00:00", and users know it so.
    static QString clockText(qint32 seconds);
};
