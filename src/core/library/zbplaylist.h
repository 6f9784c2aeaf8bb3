#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QVariant>

#include <optional>

#include "library/zbmanagedobject.h"
#include "predicate/zbpredicatesubject.h"

class ZBItem;

// A plain playlist, a smart list or one of the standard lists.
class ZBPlaylist final : public ZBManagedObject, public ZBPredicateSubject
{
public:
    QString PlaylistUUID() const { return m_PlaylistUUID; }
    void setPlaylistUUID(const QString &value);
    QString Name() const { return m_Name; }
    void setName(const QString &value);
    // A list never made smart reads as plain, and one created without a group
    // belongs to the user: the record defaults say so, not the callers.
    bool isSmart() const { return m_isSmart; }
    void setIsSmart(bool value);
    QString Request() const { return m_Request; }
    void setRequest(const QString &value);
    QString Group() const { return m_Group; }
    void setGroup(const QString &value);
    QString SortField() const { return m_SortField; }
    void setSortField(const QString &value);
    std::optional<bool> Ascend() const { return m_Ascend; }
    void setAscend(std::optional<bool> value);
    std::optional<qint32> SortOrder() const { return m_SortOrder; }
    void setSortOrder(std::optional<qint32> value);
    QByteArray InternalItemsOrder() const { return m_InternalItemsOrder; }
    void setInternalItemsOrder(const QByteArray &value);

    // Members of a plain playlist, in the order they joined.
    const QList<ZBItem *> &Item() const { return m_items; }

    QVariant valueForKeyPath(const QString &keyPath) const override;

private:
    friend class ZBObjectContext;

    QString m_PlaylistUUID;
    QString m_Name;
    bool m_isSmart = false;
    QString m_Request;
    QString m_Group = QStringLiteral("User");
    QString m_SortField;
    std::optional<bool> m_Ascend;
    std::optional<qint32> m_SortOrder;
    QByteArray m_InternalItemsOrder;
    QList<ZBItem *> m_items;
};
