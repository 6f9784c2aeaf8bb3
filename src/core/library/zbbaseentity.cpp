#include "library/zbbaseentity.h"

void ZBBaseEntity::setName(const QString &value)
{
    willChange();
    m_Name = value;
    didChange();
}

void ZBBaseEntity::setValue(const QString &value)
{
    willChange();
    m_Value = value;
    didChange();
}
