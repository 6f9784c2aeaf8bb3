#include "web/zbdownloaditem.h"

ZBDownloadItem::ZBDownloadItem(const QString &url)
    : m_url(url)
{
}

ZBDownloadItem::~ZBDownloadItem()
{
    qDeleteAll(m_resources);
}

ZBDownloadItem *ZBDownloadItem::pageRoot()
{
    ZBDownloadItem *item = this;
    while (item->m_parent)
        item = item->m_parent;
    return item;
}

void ZBDownloadItem::setResourceUrl(const QString &url)
{
    if (url == m_url)
        return;
    const QString oldUrl = m_url;
    m_url = url;
    if (m_parent)
        m_parent->urlChanged(this, oldUrl);
}

void ZBDownloadItem::urlChanged(ZBDownloadItem *child, const QString &oldUrl)
{
    if (m_resourcesByURL.value(oldUrl) == child)
    {
        m_resourcesByURL.remove(oldUrl);
        for (ZBDownloadItem *other : std::as_const(m_resources))
        {
            if (other->m_url == oldUrl)
            {
                m_resourcesByURL.insert(oldUrl, other);
                break;
            }
        }
    }
    // Only the first child with a URL answers for it.
    const QString &newUrl = child->m_url;
    ZBDownloadItem *holder = m_resourcesByURL.value(newUrl);
    if (!holder || m_resources.indexOf(child) < m_resources.indexOf(holder))
        m_resourcesByURL.insert(newUrl, child);
}

void ZBDownloadItem::addResource(ZBDownloadItem *item)
{
    m_resources.append(item);
    if (!m_resourcesByURL.contains(item->m_url))
        m_resourcesByURL.insert(item->m_url, item);
}

const QList<ZBDownloadItem *> &ZBDownloadItem::childrenWithFilter(int filter) const
{
    static const QList<ZBDownloadItem *> none;
    if (m_parent)
        return filter == FilterVideo ? m_videoResources : m_resources;
    switch (filter)
    {
        case FilterAll:
            return m_resources;
        case FilterFlash:
            return m_swfResources;
        case FilterVideo:
            return m_videoResources;
        case FilterMedia:
            return m_mediaResources;
        default:
            return none;
    }
}

ZBDownloadItem *ZBDownloadItem::childAtIndex(int index, int filter) const
{
    const QList<ZBDownloadItem *> &children = childrenWithFilter(filter);
    return index >= 0 && index < children.size() ? children.at(index) : nullptr;
}

int ZBDownloadItem::numberOfChildrenWithFilter(int filter) const
{
    return int(childrenWithFilter(filter).size());
}

ZBDownloadItem *ZBDownloadItem::getResourceByURL(const QString &url) const
{
    return m_resourcesByURL.value(url);
}

ZBDownloadItem *ZBDownloadItem::getResourceByDownloadID(quint64 id) const
{
    if (id == 0)
        return nullptr;
    for (ZBDownloadItem *child : m_resources)
    {
        if (child->m_downloadID == id)
            return child;
        if (ZBDownloadItem *found = child->getResourceByDownloadID(id))
            return found;
    }
    return nullptr;
}

bool ZBDownloadItem::isInSubtreeOf(const ZBDownloadItem *ancestor) const
{
    for (const ZBDownloadItem *item = this; item; item = item->m_parent)
    {
        if (item == ancestor)
            return true;
    }
    return false;
}

bool ZBDownloadItem::isFlashType(const QString &type)
{
    return type.compare(QLatin1String("swf"), Qt::CaseInsensitive) == 0 ||
           type.compare(QLatin1String("exe"), Qt::CaseInsensitive) == 0;
}

QString ZBDownloadItem::actionKey(int action)
{
    switch (action)
    {
        case DownloadAction:
            return QStringLiteral("tableDownload");
        case CancelAction:
            return QStringLiteral("tableCancel");
        case PlayAction:
            return QStringLiteral("tablePlay");
        case ShowInFinderAction:
            return QStringLiteral("tableShowInFinder");
        default:
            return QString();
    }
}
