#include "library/zbbaseentity.h"

void ZBBaseEntity::setName(const QString &value)
{
    m_Name = value;
    didChange();
}

void ZBBaseEntity::setValue(const QString &value)
{
    m_Value = value;
    didChange();
}
