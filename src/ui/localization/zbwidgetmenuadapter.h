#pragma once

#include <QPointer>
#include <QWidget>

#include "localization/zbmenuadapter.h"

// A QMenu or a QMenuBar seen through ZBMenuAdapter: its items are its actions,
// a separator has no text, and an action's submenu is its QMenu.
class ZBWidgetMenuAdapter : public ZBMenuAdapter
{
public:
    // menu is a QMenu or a QMenuBar.
    explicit ZBWidgetMenuAdapter(QWidget *menu);

    QString title() const override;
    void setTitle(const QString &title) override;
    int itemCount() const override;
    QString itemTitle(int index) const override;
    void setItemTitle(int index, const QString &title) override;
    std::unique_ptr<ZBMenuAdapter> submenu(int index) const override;

private:
    QPointer<QWidget> m_menu;
};
