#include "strings/zbstringformsize.h"

#include "localization/zblocalizer.h"

namespace
{
constexpr const char kIntTemplate[] = "%.0f ";
constexpr const char kFloatTemplate[] = "%.2f ";

using UnitName = QString (*)(int);

QString formatCount(qint64 count, bool showDecimal, bool binary, UnitName unit)
{
    if (count <= 999)
        return QString::asprintf(kIntTemplate, double(count)) + unit(0);

    if (count <= 999999)
    {
        if (binary)
        {
            return showDecimal ? QString::asprintf(kFloatTemplate, double(count) / 1024.0) + unit(1)
                               : QString::asprintf(kIntTemplate, double(count >> 10)) + unit(1);
        }
        return showDecimal ? QString::asprintf(kFloatTemplate, double(count) / 1000.0) + unit(1)
                           : QString::asprintf(kIntTemplate, double(count / 1000)) + unit(1);
    }

    if (binary)
    {
        return showDecimal ? QString::asprintf(kFloatTemplate, double(count) / 1048576.0) + unit(2)
                           : QString::asprintf(kIntTemplate, double(count / 1048576)) + unit(2);
    }
    return showDecimal ? QString::asprintf(kFloatTemplate, double(count) / 1000000.0) + unit(2)
                       : QString::asprintf(kIntTemplate, double(count / 1000000)) + unit(2);
}
} // namespace

QString ZBStringFormSize::intTemplate()
{
    return QString::fromLatin1(kIntTemplate);
}

QString ZBStringFormSize::floatTemplate()
{
    return QString::fromLatin1(kFloatTemplate);
}

QString ZBStringFormSize::sizeSpecifier(int index)
{
    switch (index)
    {
        case 0:
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("byte"), QStringLiteral("B"));
        case 1:
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("kilobyte"), QStringLiteral("KB"));
        case 2:
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("megabyte"), QStringLiteral("MB"));
        default:
            return QStringLiteral("?");
    }
}

QString ZBStringFormSize::speedSpecifier(int index)
{
    switch (index)
    {
        case 0:
            // The same key as the size unit: a table entry for "byte" names
            // both, and tables rely on that.
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("byte"), QStringLiteral("B/s"));
        case 1:
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("kilobyte-sec"),
                                                                 QStringLiteral("KB/s"));
        case 2:
            return ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("megabyte-sec"),
                                                                 QStringLiteral("MB/s"));
        default:
            return QStringLiteral("?");
    }
}

QString ZBStringFormSize::stringFromSizeBin(qint64 bytes, bool showDecimal)
{
    return formatCount(bytes, showDecimal, true, &ZBStringFormSize::sizeSpecifier);
}

QString ZBStringFormSize::stringFromSizeDec(qint64 bytes, bool showDecimal)
{
    return formatCount(bytes, showDecimal, false, &ZBStringFormSize::sizeSpecifier);
}

QString ZBStringFormSize::stringFromSpeedBin(qint64 bytesPerSecond, bool showDecimal)
{
    return formatCount(bytesPerSecond, showDecimal, true, &ZBStringFormSize::speedSpecifier);
}

QString ZBStringFormSize::stringFromSpeedDec(qint64 bytesPerSecond, bool showDecimal)
{
    return formatCount(bytesPerSecond, showDecimal, false, &ZBStringFormSize::speedSpecifier);
}

QString ZBStringFormSize::timeStringFromSeconds(quint32 seconds)
{
    const quint32 hours = seconds / 3600;
    const quint32 minutes = seconds / 60 - hours * 60;
    const quint32 rest = seconds - (seconds / 60) * 60;
    const auto pad = [](quint32 value)
    {
        return value < 10 ? "0" : "";
    };
    return QString::asprintf("%s%u:%s%u:%s%u", pad(hours), hours, pad(minutes), minutes, pad(rest), rest);
}
