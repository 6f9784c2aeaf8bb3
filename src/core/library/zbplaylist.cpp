#include "library/zbplaylist.h"

#include "library/zbitem.h"

namespace
{
bool sameText(const QString &a, const QString &b)
{
    return a == b && a.isNull() == b.isNull();
}
} // namespace

void ZBPlaylist::setPlaylistUUID(const QString &value)
{
    if (sameText(m_PlaylistUUID, value))
        return;
    willChange();
    m_PlaylistUUID = value;
    didChange();
}

void ZBPlaylist::setName(const QString &value)
{
    if (sameText(m_Name, value))
        return;
    willChange();
    m_Name = value;
    didChange();
}

void ZBPlaylist::setIsSmart(bool value)
{
    if (m_isSmart == value)
        return;
    willChange();
    m_isSmart = value;
    didChange();
}

void ZBPlaylist::setRequest(const QString &value)
{
    if (sameText(m_Request, value))
        return;
    willChange();
    m_Request = value;
    didChange();
}

void ZBPlaylist::setGroup(const QString &value)
{
    // The store keeps no absent group: a list without one is the user's.
    const QString group = value.isNull() ? QStringLiteral("User") : value;
    if (m_Group == group)
        return;
    willChange();
    m_Group = group;
    didChange();
}

void ZBPlaylist::setSortField(const QString &value)
{
    if (sameText(m_SortField, value))
        return;
    willChange();
    m_SortField = value;
    didChange();
}

void ZBPlaylist::setAscend(std::optional<bool> value)
{
    if (m_Ascend == value)
        return;
    willChange();
    m_Ascend = value;
    didChange();
}

void ZBPlaylist::setSortOrder(std::optional<qint32> value)
{
    if (m_SortOrder == value)
        return;
    willChange();
    m_SortOrder = value;
    didChange();
}

void ZBPlaylist::setInternalItemsOrder(const QByteArray &value)
{
    if (m_InternalItemsOrder == value && m_InternalItemsOrder.isNull() == value.isNull())
        return;
    willChange();
    m_InternalItemsOrder = value;
    didChange();
}

QVariant ZBPlaylist::valueForKeyPath(const QString &keyPath) const
{
    const auto text = [](const QString &value) { return value.isNull() ? QVariant() : QVariant(value); };
    if (keyPath == u"PlaylistUUID")
        return text(m_PlaylistUUID);
    if (keyPath == u"Name")
        return text(m_Name);
    if (keyPath == u"isSmart")
        return m_isSmart;
    if (keyPath == u"Request")
        return text(m_Request);
    if (keyPath == u"Group")
        return text(m_Group);
    if (keyPath == u"SortField")
        return text(m_SortField);
    if (keyPath == u"Ascend")
        return m_Ascend ? QVariant(*m_Ascend) : QVariant();
    if (keyPath == u"SortOrder")
        return m_SortOrder ? QVariant(*m_SortOrder) : QVariant();
    if (keyPath.startsWith(u"Item."))
    {
        const QString rest = keyPath.mid(5);
        QVariantList values;
        for (const ZBItem *item : m_items)
            values.append(item->valueForKeyPath(rest));
        return values;
    }
    return QVariant();
}
