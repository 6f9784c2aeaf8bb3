#include "localization/zbmainmenudefinition.h"

namespace
{
ZBMenuEntry item(const QString &title)
{
    return ZBMenuEntry{title, {}, 0};
}

ZBMenuEntry separator()
{
    return ZBMenuEntry{};
}

ZBMenuEntry menu(const QString &title, const QList<ZBMenuEntry> &children)
{
    return ZBMenuEntry{title, children, 0};
}
} // namespace

QString ZBMainMenuDefinition::applicationMenuTitle()
{
    return QStringLiteral("Apple");
}

QList<ZBMenuEntry> ZBMainMenuDefinition::mainMenu()
{
    // Titles are keys as well as texts (see ZBMenuEntry): the "MainMenu" tables
    // in every language must be updated together with this tree.
    return {
        menu(applicationMenuTitle(),
             {
                 item(QStringLiteral("About Norvik Player")),
                 separator(),
                 item(QStringLiteral("Preferences…")),
                 separator(),
                 item(QStringLiteral("Quit Norvik Player")),
             }),
        menu(QStringLiteral("File"),
             {
                 item(QStringLiteral("Open…")),
                 item(QStringLiteral("Add to Library…")),
                 separator(),
                 item(QStringLiteral("New Playlist")),
                 item(QStringLiteral("New Smart Playlist…")),
                 item(QStringLiteral("New Playlist from Selection")),
                 item(QStringLiteral("Edit Playlist")),
                 item(QStringLiteral("Delete Playlist")),
                 separator(),
                 item(QStringLiteral("Import Playlist…")),
                 item(QStringLiteral("Export Playlist…")),
                 item(QStringLiteral("Save Movie As…")),
                 separator(),
                 item(QStringLiteral("Close Window")),
                 item(QStringLiteral("Quit")),
             }),
        menu(QStringLiteral("Edit"),
             {
                 item(QStringLiteral("Cut")),
                 item(QStringLiteral("Copy")),
                 item(QStringLiteral("Paste")),
                 item(QStringLiteral("Delete")),
                 item(QStringLiteral("Select All")),
                 separator(),
                 item(QStringLiteral("Find")),
             }),
        menu(QStringLiteral("Track"),
             {
                 item(QStringLiteral("Get Info")),
                 item(QStringLiteral("Show in File Manager")),
                 item(QStringLiteral("Show Playing Track")),
                 // Command validation shows these as one to five stars.
                 menu(QStringLiteral("Rating"),
                      {
                          item(QStringLiteral("One Star")),
                          item(QStringLiteral("Two Stars")),
                          item(QStringLiteral("Three Stars")),
                          item(QStringLiteral("Four Stars")),
                          item(QStringLiteral("Five Stars")),
                      }),
             }),
        menu(QStringLiteral("Playback"),
             {
                 // Retitled Play or Pause by command validation.
                 item(QStringLiteral("Play")),
                 item(QStringLiteral("Stop")),
                 item(QStringLiteral("Next")),
                 item(QStringLiteral("Previous")),
                 separator(),
                 menu(QStringLiteral("Repeat"),
                      {
                          item(QStringLiteral("None")),
                          item(QStringLiteral("All")),
                          item(QStringLiteral("One")),
                      }),
                 item(QStringLiteral("Shuffle")),
                 separator(),
                 item(QStringLiteral("Volume Up")),
                 item(QStringLiteral("Volume Down")),
                 item(QStringLiteral("Mute")),
                 separator(),
                 item(QStringLiteral("Screenshot")),
                 item(QStringLiteral("Screenshot Series")),
                 separator(),
                 item(QStringLiteral("Fit")),
                 item(QStringLiteral("Original Size")),
             }),
        menu(QStringLiteral("View"),
             {
                 // The toggles below are retitled by command validation to say
                 // what choosing them will do.
                 item(QStringLiteral("Show Browser")),
                 separator(),
                 item(QStringLiteral("Detach Player")),
                 item(QStringLiteral("Enter Full Screen")),
                 item(QStringLiteral("Show Additional Controls")),
                 item(QStringLiteral("Always on Top")),
                 separator(),
                 item(QStringLiteral("Show Page Resources")),
                 item(QStringLiteral("Show Source List")),
                 item(QStringLiteral("Show Track List")),
                 separator(),
                 // Same order as the optional track-table columns.
                 menu(QStringLiteral("Columns"),
                      {
                          item(QStringLiteral("Type")),
                          item(QStringLiteral("Path")),
                          item(QStringLiteral("Time")),
                          item(QStringLiteral("Rating")),
                          item(QStringLiteral("Plays")),
                          item(QStringLiteral("Date Added")),
                          item(QStringLiteral("Last Played")),
                      }),
             }),
        menu(QStringLiteral("History"),
             {
                 item(QStringLiteral("Back")),
                 item(QStringLiteral("Forward")),
                 item(QStringLiteral("Home")),
                 separator(),
                 item(QStringLiteral("Download Selected")),
                 item(QStringLiteral("Download All")),
                 item(QStringLiteral("Preview")),
                 item(QStringLiteral("Clear Downloads List")),
                 separator(),
                 // The visited pages are appended after the first two items.
                 menu(QStringLiteral("Recent Pages"),
                      {
                          item(QStringLiteral("Clear History")),
                          separator(),
                      }),
             }),
        menu(QStringLiteral("Window"),
             {
                 item(QStringLiteral("Minimize")),
                 item(QStringLiteral("Zoom")),
                 separator(),
                 item(QStringLiteral("Main Window")),
             }),
        menu(QStringLiteral("Help"),
             {
                 item(QStringLiteral("Norvik Player Help")),
                 item(QStringLiteral("Show Tutorial")),
                 separator(),
                 item(QStringLiteral("Integration…")),
             }),
    };
}
