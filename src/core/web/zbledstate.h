#pragma once

// Which page of the status panel shows and where its change-page and cancel
// buttons lead. The panel has a browsing page and three operation pages
// (playback, screenshot series, downloads); the user steps through the
// operation pages whose operation runs, and the one chosen last comes back
// whenever the library is shown again.
class ZBLedState
{
public:
    // currentLedDisplayMode: the operation page chosen last.
    enum DisplayMode
    {
        PlaybackLedMode = 0,
        ScreenshotLedMode = 1,
        DownloadLedMode = 2,
    };
    // Page indexes of the panel.
    enum Page
    {
        BrowsingPage = 0,
        PlaybackPage = 1,
        ScreenshotPage = 2,
        DownloadPage = 3,
    };
    enum class Operation
    {
        None,
        Series,
        Downloads,
    };

    int currentLedDisplayMode() const { return m_mode; }
    void switchToPlaybackLedMode() { m_mode = PlaybackLedMode; }
    void switchToScreenshotLedMode() { m_mode = ScreenshotLedMode; }
    void switchToDownloadLedMode() { m_mode = DownloadLedMode; }

    // The change-page button: the next operation page whose operation runs,
    // playback when none does. Returns the new mode.
    int changeLedViewMode(bool seriesRunning, bool downloadsRunning);
    // The playback page's change-page button leads somewhere only while
    // something else runs.
    static bool isChangePageEnabled(bool seriesRunning, bool downloadsRunning);

    // The page to show in a content mode of the window (0 browsing, 1 library,
    // 2 search results, 3 page preview): the browser's status while a page is
    // on screen, else the operation page chosen last.
    int visiblePage(int contentMode) const;

    // The cancel button: what the shown operation page asks to cancel. The
    // panel then moves on as if that operation had already stopped, so it
    // does not depend on how quickly the owner reports the stop.
    Operation cancelCurrentOperation(bool seriesRunning, bool downloadsRunning);

    // A finished operation gives its page up for playback: a finished series
    // or batch of downloads has nothing left to show.
    void operationEnded(Operation operation);

private:
    int m_mode = PlaybackLedMode;
};
