#pragma once

#include <QList>

#include "localization/zbmenuentry.h"

// The layout of the main menu bar with its English titles. The window builds
// its menu bar from this tree and then retitles it through the localizer with
// the prefix "MainMenu" in the table "MainMenu".
class ZBMainMenuDefinition
{
public:
    ZBMainMenuDefinition() = delete;

    // The title the application menu carries before retitling; the localizer
    // looks it up as "NorvikPlayer".
    static QString applicationMenuTitle();

    // The menus of the menu bar, left to right.
    static QList<ZBMenuEntry> mainMenu();
};
