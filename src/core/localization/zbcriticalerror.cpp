#include "localization/zbcriticalerror.h"

ZBCriticalError::ZBCriticalError(const QString &name, const QString &reason)
    : m_name(name)
    , m_reason(reason)
    , m_what(QStringLiteral("%1: %2").arg(name, reason).toUtf8())
{
}

ZBCriticalError ZBCriticalError::missingStringTable(const QString &table)
{
    // The texts predate the Qt Linguist tables and are matched by people
    // reading crash logs, so they keep the old ".strings" wording.
    return ZBCriticalError(QStringLiteral("Critical error"), QStringLiteral("%1.strings not found").arg(table));
}

const char *ZBCriticalError::what() const noexcept
{
    return m_what.constData();
}
