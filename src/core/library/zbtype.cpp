#include "library/zbtype.h"

void ZBType::setName(const QString &value)
{
    m_Name = value;
    didChange();
}

void ZBType::setID(const QString &value)
{
    m_ID = value;
    didChange();
}

void ZBType::setURL(const QString &value)
{
    m_URL = value;
    didChange();
}

void ZBType::setIsSupported(std::optional<bool> value)
{
    m_IsSupported = value;
    didChange();
}
