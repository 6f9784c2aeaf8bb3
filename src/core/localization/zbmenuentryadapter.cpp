#include "localization/zbmenuentryadapter.h"

ZBMenuEntryAdapter::ZBMenuEntryAdapter(QList<ZBMenuEntry> &entries)
    : m_entries(&entries)
{
}

ZBMenuEntryAdapter::ZBMenuEntryAdapter(ZBMenuEntry &menu)
    : m_menu(&menu)
    , m_entries(&menu.children)
{
}

QString ZBMenuEntryAdapter::title() const
{
    return m_menu ? m_menu->title : QString();
}

void ZBMenuEntryAdapter::setTitle(const QString &title)
{
    if (m_menu)
        m_menu->title = title;
}

int ZBMenuEntryAdapter::itemCount() const
{
    return int(m_entries->size());
}

QString ZBMenuEntryAdapter::itemTitle(int index) const
{
    return m_entries->at(index).title;
}

void ZBMenuEntryAdapter::setItemTitle(int index, const QString &title)
{
    (*m_entries)[index].title = title;
}

std::unique_ptr<ZBMenuAdapter> ZBMenuEntryAdapter::submenu(int index) const
{
    ZBMenuEntry &entry = (*m_entries)[index];
    if (!entry.hasSubmenu())
        return nullptr;
    return std::make_unique<ZBMenuEntryAdapter>(entry);
}
