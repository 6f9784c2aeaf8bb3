#pragma once

#include <QHash>
#include <QString>

#include <functional>

class QAction;
class QMenuBar;
struct ZBMenuEntry;

// Builds the menu bar from its English definition. An item whose path
// ("Playback/Repeat/All") has a command is connected; the others stay disabled
// until the feature behind them exists, rather than pretend to work.
class ZBMainMenuBuilder
{
public:
    using Commands = QHash<QString, std::function<void()>>;

    // Every item's action by its path, for shortcuts and check marks.
    static QHash<QString, QAction *> build(QMenuBar *bar, const QList<ZBMenuEntry> &menus, const Commands &commands);
};
