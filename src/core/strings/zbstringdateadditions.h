#pragma once

#include <QDateTime>
#include <QString>

// Dates as the track table shows them: "Today, 14:05", "Yesterday, 09:30",
// "Tomorrow, 08:00", otherwise "Mar 5, 2024, 14:05" (the medium date of the
// user's language and the short time of its locale).
class ZBStringDateAdditions
{
public:
    ZBStringDateAdditions() = delete;

    // "" for an invalid date and for 2001-01-01 00:00:00 UTC itself, which
    // stored records use to mean "never".
    static QString naturalStringFromDate(const QDateTime &date);
    // The same, with "today" taken from now, so that callers and tests can
    // fix the moment of comparison.
    static QString naturalStringFromDate(const QDateTime &date, const QDateTime &now);
};
