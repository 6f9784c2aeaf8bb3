#pragma once

#include <QList>

#include "localization/zbmenuadapter.h"
#include "localization/zbmenuentry.h"

// Lets the localizer retitle a menu definition in place, without widgets: the
// items of the adapter are the given entries, the title is the owning entry's.
class ZBMenuEntryAdapter : public ZBMenuAdapter
{
public:
    // A menu bar: the entries are its menus; it has no title of its own.
    explicit ZBMenuEntryAdapter(QList<ZBMenuEntry> &entries);
    // A menu: the entry's children are its items.
    explicit ZBMenuEntryAdapter(ZBMenuEntry &menu);

    QString title() const override;
    void setTitle(const QString &title) override;
    int itemCount() const override;
    QString itemTitle(int index) const override;
    void setItemTitle(int index, const QString &title) override;
    std::unique_ptr<ZBMenuAdapter> submenu(int index) const override;

private:
    ZBMenuEntry *m_menu = nullptr;
    QList<ZBMenuEntry> *m_entries = nullptr;
};
