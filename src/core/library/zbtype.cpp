#include "library/zbtype.h"

void ZBType::setName(const QString &value)
{
    willChange();
    m_Name = value;
    didChange();
}

void ZBType::setID(const QString &value)
{
    willChange();
    m_ID = value;
    didChange();
}

void ZBType::setURL(const QString &value)
{
    willChange();
    m_URL = value;
    didChange();
}

void ZBType::setIsSupported(std::optional<bool> value)
{
    willChange();
    m_IsSupported = value;
    didChange();
}
