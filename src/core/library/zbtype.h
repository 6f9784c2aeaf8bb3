#pragma once

#include <QList>
#include <QString>

#include <optional>

#include "library/zbmanagedobject.h"

class ZBItem;

// A media type record. The store can hold them, but a track's effective type
// is its Type string; nothing in the program creates these today.
class ZBType final : public ZBManagedObject
{
public:
    QString Name() const { return m_Name; }
    void setName(const QString &value);
    QString ID() const { return m_ID; }
    void setID(const QString &value);
    QString URL() const { return m_URL; }
    void setURL(const QString &value);
    std::optional<bool> IsSupported() const { return m_IsSupported; }
    void setIsSupported(std::optional<bool> value);
    const QList<ZBItem *> &Items() const { return m_items; }

private:
    friend class ZBObjectContext;

    QString m_Name;
    QString m_ID;
    QString m_URL;
    std::optional<bool> m_IsSupported;
    QList<ZBItem *> m_items;
};
