#include "strings/zbstringdateadditions.h"

#include <QLocale>

#include "localization/zblocalizer.h"
#include "predicate/zbpredicate.h"

namespace
{
QString capitalised(const QString &word, const QLocale &locale)
{
    if (word.isEmpty())
        return word;
    return locale.toUpper(word.left(1)) + word.mid(1);
}
} // namespace

QString ZBStringDateAdditions::naturalStringFromDate(const QDateTime &date)
{
    return naturalStringFromDate(date, QDateTime::currentDateTime());
}

QString ZBStringDateAdditions::naturalStringFromDate(const QDateTime &date, const QDateTime &now)
{
    if (!date.isValid() || date == ZBPredicate::referenceDate())
        return QString();

    const QLocale locale = ZBLocalizer::locale();
    const QDateTime local = date.toLocalTime();
    const QString time = locale.toString(local.time(), QLocale::ShortFormat);
    // Calendar days of the local time zone, so that 23:59 and 00:01 are on
    // different days however close they are.
    const qint64 days = now.toLocalTime().date().daysTo(local.date());

    QString dayKey;
    if (days == 0)
        dayKey = QStringLiteral("dateToday");
    else if (days == -1)
        dayKey = QStringLiteral("dateYesterday");
    else if (days == 1)
        dayKey = QStringLiteral("dateTomorrow");

    QString day;
    if (!dayKey.isEmpty())
    {
        day = capitalised(ZBLocalizer::localizedStringForKey(dayKey), locale);
    }
    else
    {
        // QLocale knows only short and long dates; the pattern of the medium
        // one belongs to the language and so lives in its string table.
        const QString pattern = ZBLocalizer::localizedStringForKeyWithDefault(QStringLiteral("dateMediumFormat"),
                                                                              QStringLiteral("MMM d, yyyy"));
        day = locale.toString(local.date(), pattern);
    }
    return QStringLiteral("%1, %2").arg(day, time);
}
