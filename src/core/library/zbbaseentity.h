#pragma once

#include <QString>

#include "library/zbmanagedobject.h"

// A name/value pair; records which generated UUID belongs to each standard list.
class ZBBaseEntity final : public ZBManagedObject
{
public:
    QString Name() const { return m_Name; }
    void setName(const QString &value);
    QString Value() const { return m_Value; }
    void setValue(const QString &value);

private:
    friend class ZBObjectContext;

    QString m_Name;
    QString m_Value;
};
