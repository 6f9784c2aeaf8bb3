#pragma once

#include <QString>

// How the main window is laid out for a content mode: 0 browsing a page's
// captured resources, 1 a library list, 2 search results, 3 the preview of a
// captured Flash movie.
struct ZBContentLayout
{
    enum Mode
    {
        Browsing = 0,
        Library = 1,
        Search = 2,
        Preview = 3
    };

    // The web view takes the player's place, the downloads table the track
    // table's.
    bool showsBrowser = false;
    bool collapseUrlPane = false;
    bool expandUrlPane = false;
    // Key of the list pane button's tool tip.
    QString listButtonToolTipKey;
    // Key of the window title; "mainWindowTitlePlaying" takes the track name.
    QString titleKey;
    // The list editing buttons and the track table's menu.
    bool listEditingEnabled = true;
    // Detach, fullscreen and HUD make sense only over the player.
    bool playerModeButtonsEnabled = true;
    // A page on show takes over from the detached and HUD windows.
    bool closeDetachedAndHUD = false;
    // Browsing stops whatever plays and any screenshot series.
    bool stopPlayback = false;
    bool stopScreenshotSeries = false;

    static ZBContentLayout forMode(int mode, bool mustShowUrlPaneInPlaylistMode, bool playing);
    static bool isLibraryContent(int mode) { return mode == Library || mode == Search; }
};
