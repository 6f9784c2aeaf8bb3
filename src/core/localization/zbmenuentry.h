#pragma once

#include <QList>
#include <QString>

// One node of a menu tree: a menu of the menu bar, an item, or a separator
// (empty title). The title is the English text; it doubles as the last part of
// the item's key in the "MainMenu" string table, so changing a title means
// renaming its key in every language.
struct ZBMenuEntry
{
    QString title;
    QList<ZBMenuEntry> children;
    // The command tag the window controller validates the item by; 0 until the
    // commands are wired up.
    int tag = 0;

    bool isSeparator() const { return title.isEmpty(); }
    bool hasSubmenu() const { return !children.isEmpty(); }
};
