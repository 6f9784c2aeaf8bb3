#pragma once

#include <QDateTime>
#include <QString>

// Small helpers shared across the program.
class ZBAdditionalMethods
{
public:
    // A fresh random UUID in the canonical 36-character form with upper-case
    // hexadecimal digits: XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX.
    static QString generateUUID();

    // The moment every stored date and CAST(..., 'NSDate') counts from:
    // 2001-01-01 00:00:00 UTC.
    static QDateTime referenceDate();
    static double secondsSinceReferenceDate(const QDateTime &date);
    static QDateTime dateFromSecondsSinceReferenceDate(double seconds);
};
