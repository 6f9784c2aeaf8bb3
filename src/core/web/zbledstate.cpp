#include "web/zbledstate.h"

int ZBLedState::changeLedViewMode(bool seriesRunning, bool downloadsRunning)
{
    switch (m_mode)
    {
        case ScreenshotLedMode:
            m_mode = PlaybackLedMode;
            break;
        case DownloadLedMode:
            m_mode = seriesRunning ? ScreenshotLedMode : PlaybackLedMode;
            break;
        default:
            if (downloadsRunning)
                m_mode = DownloadLedMode;
            else if (seriesRunning)
                m_mode = ScreenshotLedMode;
            break;
    }
    return m_mode;
}

bool ZBLedState::isChangePageEnabled(bool seriesRunning, bool downloadsRunning)
{
    return seriesRunning || downloadsRunning;
}

int ZBLedState::visiblePage(int contentMode) const
{
    if (contentMode == 0 || contentMode == 3)
        return BrowsingPage;
    return m_mode + PlaybackPage;
}

ZBLedState::Operation ZBLedState::cancelCurrentOperation(bool seriesRunning, bool downloadsRunning)
{
    Operation cancelled = Operation::None;
    if (m_mode == ScreenshotLedMode && seriesRunning)
        cancelled = Operation::Series;
    else if (m_mode == DownloadLedMode && downloadsRunning)
        cancelled = Operation::Downloads;
    changeLedViewMode(seriesRunning && cancelled != Operation::Series,
                      downloadsRunning && cancelled != Operation::Downloads);
    return cancelled;
}

void ZBLedState::operationEnded(Operation operation)
{
    if ((operation == Operation::Series && m_mode == ScreenshotLedMode) ||
        (operation == Operation::Downloads && m_mode == DownloadLedMode))
        m_mode = PlaybackLedMode;
}
