#pragma once

#include <QString>

class QMenu;
class QMenuBar;
class QWidget;

// The widget side of the localizer: retitles real menus by the rules of
// ZBLocalizer::localizeMenu and fits controls to their localised content.
class ZBMenuLocalizer
{
public:
    ZBMenuLocalizer() = delete;

    // Retitles the whole menu bar; at launch with the prefix and table
    // "MainMenu". Run it once: keys are built from the English titles.
    static void localizeMenuBar(QMenuBar *menuBar, const QString &name, const QString &table);
    static void localizeMainMenuBar(QMenuBar *menuBar);
    static void localizeMenu(QMenu *menu, const QString &name, const QString &table);

    // Lets the control take the size of its content, then caps the width and
    // height at limits above 0; the position is kept.
    static void sizeToFit(QWidget *control, qreal maxWidth, qreal maxHeight);
};
