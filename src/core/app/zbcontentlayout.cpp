#include "app/zbcontentlayout.h"

ZBContentLayout ZBContentLayout::forMode(int mode, bool mustShowUrlPaneInPlaylistMode, bool playing)
{
    ZBContentLayout layout;
    if (isLibraryContent(mode))
    {
        layout.collapseUrlPane = !mustShowUrlPaneInPlaylistMode;
        layout.listButtonToolTipKey = QStringLiteral("tooltipCollapsePlaylist");
        layout.titleKey = playing ? QStringLiteral("mainWindowTitlePlaying") : QStringLiteral("mainWindowTitle");
        return layout;
    }
    layout.showsBrowser = true;
    layout.expandUrlPane = true;
    layout.listButtonToolTipKey = QStringLiteral("tooltipCollapseDownloadResourcesList");
    layout.listEditingEnabled = false;
    layout.playerModeButtonsEnabled = false;
    layout.closeDetachedAndHUD = true;
    if (mode == Browsing)
    {
        layout.titleKey = QStringLiteral("mainWindowTitleBrowsing");
        layout.stopPlayback = true;
        layout.stopScreenshotSeries = true;
    }
    else
    {
        layout.titleKey = QStringLiteral("mainWindowTitlePreview");
    }
    return layout;
}
