#pragma once

#include <memory>

#include <QString>

// What the menu retitling needs to know of a menu, so that the retitling rules
// live in the core and work the same on a real menu bar, on the menu
// definition and in tests. An adapter is a view: it owns nothing of the menu.
class ZBMenuAdapter
{
public:
    virtual ~ZBMenuAdapter();

    // The menu's own title; empty for a menu bar.
    virtual QString title() const = 0;
    virtual void setTitle(const QString &title) = 0;

    virtual int itemCount() const = 0;
    // Empty for a separator.
    virtual QString itemTitle(int index) const = 0;
    virtual void setItemTitle(int index, const QString &title) = 0;
    // The submenu the item opens, or null.
    virtual std::unique_ptr<ZBMenuAdapter> submenu(int index) const = 0;
};
