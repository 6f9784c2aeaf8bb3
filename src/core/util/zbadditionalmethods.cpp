#include "util/zbadditionalmethods.h"

#include <QTimeZone>
#include <QUuid>

#include <cmath>

QString ZBAdditionalMethods::generateUUID()
{
    // QUuid renders lower case between braces; the library's identifiers are
    // the bare upper-case form, compared as strings everywhere.
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

QDateTime ZBAdditionalMethods::referenceDate()
{
    static const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    return reference;
}

double ZBAdditionalMethods::secondsSinceReferenceDate(const QDateTime &date)
{
    return double(date.toMSecsSinceEpoch() - referenceDate().toMSecsSinceEpoch()) / 1000.0;
}

QDateTime ZBAdditionalMethods::dateFromSecondsSinceReferenceDate(double seconds)
{
    const double msecs = double(referenceDate().toMSecsSinceEpoch()) + seconds * 1000.0;
    return QDateTime::fromMSecsSinceEpoch(qint64(std::llround(msecs)), Qt::UTC);
}
