#include "util/zbadditionalmethods.h"

#include <QUuid>

QString ZBAdditionalMethods::generateUUID()
{
    // QUuid renders lower case between braces; the library's identifiers are
    // the bare upper-case form, compared as strings everywhere.
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}
