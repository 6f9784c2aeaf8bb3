#include "localization/zbmainmenudefinition.h"

namespace
{
ZBMenuEntry item(const QString &title, int tag = 0)
{
    return ZBMenuEntry{title, {}, tag};
}

ZBMenuEntry separator()
{
    return ZBMenuEntry{};
}

ZBMenuEntry menu(const QString &title, const QList<ZBMenuEntry> &children, int tag = 0)
{
    return ZBMenuEntry{title, children, tag};
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
                 item(QStringLiteral("Add to Library…"), 219),
                 separator(),
                 item(QStringLiteral("New Playlist"), 208),
                 item(QStringLiteral("New Smart Playlist…"), 209),
                 item(QStringLiteral("New Playlist from Selection"), 230),
                 item(QStringLiteral("Edit Playlist"), 204),
                 item(QStringLiteral("Delete Playlist"), 203),
                 separator(),
                 item(QStringLiteral("Import Playlist…")),
                 item(QStringLiteral("Export Playlist…"), 213),
                 item(QStringLiteral("Save Movie As…"), 211),
                 separator(),
                 item(QStringLiteral("Close Window")),
                 item(QStringLiteral("Quit")),
             }),
        menu(QStringLiteral("Edit"),
             {
                 item(QStringLiteral("Cut")),
                 item(QStringLiteral("Copy")),
                 item(QStringLiteral("Paste")),
                 item(QStringLiteral("Delete"), 207),
                 item(QStringLiteral("Select All")),
                 separator(),
                 item(QStringLiteral("Find"), 212),
             }),
        menu(QStringLiteral("Track"),
             {
                 item(QStringLiteral("Get Info"), 205),
                 item(QStringLiteral("Show in File Manager"), 206),
                 item(QStringLiteral("Show Playing Track"), 210),
                 // Command validation shows these as one to five stars.
                 menu(QStringLiteral("Rating"),
                      {
                          item(QStringLiteral("One Star"), 221),
                          item(QStringLiteral("Two Stars"), 222),
                          item(QStringLiteral("Three Stars"), 223),
                          item(QStringLiteral("Four Stars"), 224),
                          item(QStringLiteral("Five Stars"), 225),
                      }),
             }),
        menu(QStringLiteral("Playback"),
             {
                 // Retitled Play or Pause by command validation.
                 item(QStringLiteral("Play"), 401),
                 item(QStringLiteral("Stop"), 425),
                 item(QStringLiteral("Next"), 408),
                 item(QStringLiteral("Previous"), 409),
                 separator(),
                 menu(QStringLiteral("Repeat"),
                      {
                          item(QStringLiteral("None"), 411),
                          item(QStringLiteral("All"), 412),
                          item(QStringLiteral("One"), 413),
                      }),
                 item(QStringLiteral("Shuffle"), 424),
                 separator(),
                 item(QStringLiteral("Volume Up"), 801),
                 item(QStringLiteral("Volume Down"), 802),
                 item(QStringLiteral("Mute"), 803),
                 separator(),
                 item(QStringLiteral("Screenshot"), 405),
                 item(QStringLiteral("Screenshot Series"), 406),
                 separator(),
                 item(QStringLiteral("Fit")),
                 item(QStringLiteral("Stretch")),
                 item(QStringLiteral("Original Size"), 403),
             }),
        menu(QStringLiteral("View"),
             {
                 // The toggles below are retitled by command validation to say
                 // what choosing them will do.
                 item(QStringLiteral("Show Browser"), 301),
                 separator(),
                 item(QStringLiteral("Normal Mode"), 303),
                 item(QStringLiteral("Detach Player"), 304),
                 item(QStringLiteral("Enter Full Screen"), 305),
                 item(QStringLiteral("Show Fullscreen Controls"), 308),
                 item(QStringLiteral("Show Additional Controls"), 306),
                 item(QStringLiteral("Always on Top"), 307),
                 separator(),
                 item(QStringLiteral("Show Page Resources"), 310),
                 item(QStringLiteral("Show Source List"), 311),
                 item(QStringLiteral("Show Track List"), 312),
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
                 item(QStringLiteral("Home"), 9001),
                 separator(),
                 item(QStringLiteral("Download Selected"), 501),
                 item(QStringLiteral("Download All"), 503),
                 item(QStringLiteral("Preview"), 502),
                 item(QStringLiteral("Clear Downloads List"), 504),
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
                 item(QStringLiteral("Show Tutorial"), 701),
                 separator(),
                 item(QStringLiteral("Integration…")),
             }),
    };
}
