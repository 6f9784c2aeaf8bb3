#include "localization/zbwidgetmenuadapter.h"

#include <QAction>
#include <QMenu>

ZBWidgetMenuAdapter::ZBWidgetMenuAdapter(QWidget *menu)
    : m_menu(menu)
{
}

QString ZBWidgetMenuAdapter::title() const
{
    // A menu bar has no title of its own.
    const auto *menu = qobject_cast<const QMenu *>(m_menu.data());
    return menu ? menu->title() : QString();
}

void ZBWidgetMenuAdapter::setTitle(const QString &title)
{
    if (auto *menu = qobject_cast<QMenu *>(m_menu.data()))
        menu->setTitle(title);
}

int ZBWidgetMenuAdapter::itemCount() const
{
    return m_menu ? int(m_menu->actions().size()) : 0;
}

QString ZBWidgetMenuAdapter::itemTitle(int index) const
{
    const QAction *action = m_menu->actions().at(index);
    return action->isSeparator() ? QString() : action->text();
}

void ZBWidgetMenuAdapter::setItemTitle(int index, const QString &title)
{
    m_menu->actions().at(index)->setText(title);
}

std::unique_ptr<ZBMenuAdapter> ZBWidgetMenuAdapter::submenu(int index) const
{
    QMenu *menu = m_menu->actions().at(index)->menu();
    if (!menu)
        return nullptr;
    return std::make_unique<ZBWidgetMenuAdapter>(menu);
}
