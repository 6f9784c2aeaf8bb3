#pragma once

#include <optional>

#include <QString>

// What the menu commands read of the program's state, taken in one piece so
// that the rules below stay a pure function of it.
struct ZBCommandState
{
    // 0 browsing, 1 library, 2 search, 3 page preview.
    int mode = 1;
    // 0 normal, 1 detached, 2 fullscreen.
    int displayMode = 0;
    bool modalWindowOpen = false;
    bool hudVisible = false;
    bool urlPaneCollapsed = false;
    bool treePaneCollapsed = false;
    bool listPaneCollapsed = false;

    // The list selected in the source list; empty name when none is.
    bool sourceSelected = false;
    QString sourceName;
    QString sourceGroup;
    bool sourceIsSmart = false;
    int selectedTrackRow = -1;

    bool isPlaying = false;
    bool hasPlayingItem = false;
    bool playbackStopped = true;
    // The engine showing the track: 0 Flash movie, 1 video, 2 Flash video,
    // 3 RealMedia, 4 Silverlight; -1 none.
    int currentUsedView = -1;
    bool screenshotSeriesInProgress = false;
    // 0 none, 1 one, 2 all.
    int repeat = 0;
    bool shuffle = false;
    bool muted = false;
    // 0..100, the main slider's or, in fullscreen, the fullscreen slider's.
    double volume = 100;
    double volumeBeforeMute = 0;

    int selectedDownloadRow = -1;
    int downloadRowCount = 0;
    int downloadableUrlCount = 0;
    bool downloadSelectionHasDownloadable = false;
    bool downloadSelectionHasRoot = false;
    bool selectedDownloadSaved = false;
    QString selectedDownloadType;
    int historyItemCount = 0;
    bool browserOnStartPage = true;
    // The "showTutorial" setting.
    QString showTutorial;
};

// How one menu command looks in a given state.
struct ZBCommandValidity
{
    bool enabled = true;
    // A string-table key for the item's title; empty when the title stays.
    QString titleKey;
    // A title that is not a key (the rating stars).
    QString title;
    // Set for the commands that carry a check mark.
    std::optional<bool> checked;
};

// The enabling, titles and check marks of the menu commands, by tag. Tags
// without a rule are enabled and keep their title.
class ZBCommandValidation
{
public:
    ZBCommandValidation() = delete;

    static ZBCommandValidity validateMenuItem(int tag, const ZBCommandState &state);

private:
    static bool isEnabled(int tag, const ZBCommandState &state);
    static void setTitle(int tag, const ZBCommandState &state, ZBCommandValidity &validity);
};
