#include "library/zbtrackcell.h"

#include <QDateTime>

#include "library/zbitem.h"
#include "localization/zblocalizer.h"
#include "playback/zbprojector.h"

QString ZBTrackCell::timeText(const ZBItem &item)
{
    const QString type = item.Type().toLower();
    const qint32 length = item.Length().value_or(0);
    // Reading a file per cell would stall the table; a projector imported from
    // a Mac is typed "exe" anyway, so only untyped tracks are looked at.
    if (type == u"swf" || type == u"exe" || (type.isEmpty() && ZBProjector::isApplicationFile(item.Path())))
        return QString::number(length);
    if (type == u"xap")
        return ZBLocalizer::localizedStringForKey(QStringLiteral("NA"));
    return clockText(length);
}

QString ZBTrackCell::clockText(qint32 seconds)
{
    // A time of day on a fixed local date, as a clock would show it: negative
    // lengths fall on the day before.
    const QTime time = QDateTime(QDate(2000, 1, 1), QTime(0, 0)).addSecs(seconds).time();
    const auto pad = [](int value) { return QString::number(value).rightJustified(2, QLatin1Char('0')); };
    const QString minutesSeconds = pad(time.minute()) + QLatin1Char(':') + pad(time.second());
    if (seconds <= 3599)
        return minutesSeconds;
    const int hour = time.hour() % 12;
    return pad(hour == 0 ? 12 : hour) + QLatin1Char(':') + minutesSeconds;
}
