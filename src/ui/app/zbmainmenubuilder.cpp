#include "ui/app/zbmainmenubuilder.h"

#include <QMenu>
#include <QMenuBar>

#include "localization/zbmenuentry.h"

namespace
{
void addEntries(QMenu *menu, const QList<ZBMenuEntry> &entries, const QString &path,
                const ZBMainMenuBuilder::Commands &commands, QHash<QString, QAction *> &actions)
{
    for (const ZBMenuEntry &entry : entries)
    {
        if (entry.isSeparator())
        {
            menu->addSeparator();
            continue;
        }
        const QString itemPath = path + QLatin1Char('/') + entry.title;
        if (entry.hasSubmenu())
        {
            addEntries(menu->addMenu(entry.title), entry.children, itemPath, commands, actions);
            continue;
        }
        QAction *action = menu->addAction(entry.title);
        // Commands are validated by their tag.
        if (entry.tag != 0)
            action->setData(entry.tag);
        actions.insert(itemPath, action);
        const auto command = commands.constFind(itemPath);
        if (command == commands.cend())
            action->setEnabled(false);
        else
            QObject::connect(action, &QAction::triggered, menu, *command);
    }
}
} // namespace

QHash<QString, QAction *> ZBMainMenuBuilder::build(QMenuBar *bar, const QList<ZBMenuEntry> &menus,
                                                   const Commands &commands)
{
    QHash<QString, QAction *> actions;
    for (const ZBMenuEntry &top : menus)
    {
        // The application menu's commands are named the way its keys are.
        const QString path = top.title == u"Apple" ? QStringLiteral("NorvikPlayer") : top.title;
        addEntries(bar->addMenu(top.title), top.children, path, commands, actions);
    }
    return actions;
}
