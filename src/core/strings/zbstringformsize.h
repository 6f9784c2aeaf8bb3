#pragma once

#include <QString>
#include <QtGlobal>

// Short display texts for byte counts, transfer rates and durations, as the
// download tree and the track information show them. No state.
//
// Sizes switch units at the decimal points 999 and 999999 in both the binary
// and the decimal variants, so a binary count of 1000 to 1023 bytes reads
// "0 KB" (or "0.98 KB"); there is no gigabyte unit, large counts stay in
// megabytes. Numbers are written with a point whatever the language, matching
// the unit names, which are not localised number formats either.
class ZBStringFormSize
{
public:
    ZBStringFormSize() = delete;

    // The number templates, trailing blank included: "%.0f " and "%.2f ".
    static QString intTemplate();
    static QString floatTemplate();

    // Unit names from the default string table ("byte", "kilobyte",
    // "megabyte"; "byte", "kilobyte-sec", "megabyte-sec" for rates), with
    // "B", "KB", "MB" and "B/s", "KB/s", "MB/s" when the table lacks them.
    // Rates share the key "byte" with sizes. Any other index gives "?".
    static QString sizeSpecifier(int index);
    static QString speedSpecifier(int index);

    static QString stringFromSizeBin(qint64 bytes, bool showDecimal);
    static QString stringFromSizeDec(qint64 bytes, bool showDecimal);
    static QString stringFromSpeedBin(qint64 bytesPerSecond, bool showDecimal);
    static QString stringFromSpeedDec(qint64 bytesPerSecond, bool showDecimal);

    // "hh:mm:ss", each part at least two digits; hours are not wrapped at 24,
    // so 360000 seconds read "100:00:00".
    static QString timeStringFromSeconds(quint32 seconds);
};
