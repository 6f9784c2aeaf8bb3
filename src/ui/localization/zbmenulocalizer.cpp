#include "localization/zbmenulocalizer.h"

#include <QMenu>
#include <QMenuBar>
#include <QWidget>

#include "localization/zblocalizer.h"
#include "localization/zbwidgetmenuadapter.h"

void ZBMenuLocalizer::localizeMenuBar(QMenuBar *menuBar, const QString &name, const QString &table)
{
    if (!menuBar)
        return;
    ZBWidgetMenuAdapter adapter(menuBar);
    ZBLocalizer::localizeMenu(adapter, name, table);
}

void ZBMenuLocalizer::localizeMainMenuBar(QMenuBar *menuBar)
{
    localizeMenuBar(menuBar, ZBLocalizer::mainMenuTable(), ZBLocalizer::mainMenuTable());
}

void ZBMenuLocalizer::localizeMenu(QMenu *menu, const QString &name, const QString &table)
{
    if (!menu)
        return;
    ZBWidgetMenuAdapter adapter(menu);
    ZBLocalizer::localizeMenu(adapter, name, table);
}

void ZBMenuLocalizer::sizeToFit(QWidget *control, qreal maxWidth, qreal maxHeight)
{
    if (!control)
        return;
    control->adjustSize();
    const QSize size = ZBLocalizer::sizeToFit(control->size(), maxWidth, maxHeight);
    control->setGeometry(QRect(control->pos(), size));
    control->update();
}
