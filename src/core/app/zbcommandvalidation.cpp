#include "app/zbcommandvalidation.h"

namespace
{
bool isUserList(const ZBCommandState &state)
{
    return state.sourceSelected && state.sourceGroup.compare(QLatin1String("User"), Qt::CaseInsensitive) == 0;
}

// The library's own date lists; a user's list that happens to share a name
// is not one of them.
bool isDateList(const ZBCommandState &state)
{
    if (!state.sourceSelected || isUserList(state))
        return false;
    return state.sourceName == u"Today" || state.sourceName == u"Last week" || state.sourceName == u"Last month";
}

QString choose(bool condition, const char *yes, const char *no)
{
    return QLatin1String(condition ? yes : no);
}
} // namespace

ZBCommandValidity ZBCommandValidation::validateMenuItem(int tag, const ZBCommandState &state)
{
    ZBCommandValidity validity;
    setTitle(tag, state, validity);
    // While a dialog holds the program, no command may start anything.
    validity.enabled = !state.modalWindowOpen && isEnabled(tag, state);
    switch (tag)
    {
        case 406:
            validity.checked = state.screenshotSeriesInProgress;
            break;
        case 411:
            validity.checked = state.repeat == 0;
            break;
        case 412:
            validity.checked = state.repeat == 2;
            break;
        case 413:
            validity.checked = state.repeat == 1;
            break;
        case 424:
            validity.checked = state.shuffle;
            break;
        case 803:
            validity.checked = state.muted;
            break;
        default:
            break;
    }
    return validity;
}

void ZBCommandValidation::setTitle(int tag, const ZBCommandState &state, ZBCommandValidity &validity)
{
    // Commands that toggle something are titled by what choosing them does.
    switch (tag)
    {
        case 221:
        case 222:
        case 223:
        case 224:
        case 225:
            validity.title = QString(tag - 220, QChar(0x2605));
            break;
        case 301:
            validity.titleKey =
                choose(state.mode == 1 || state.mode == 2, "SwitchToDownloadMode", "SwitchToPlayerMode");
            break;
        case 304:
            validity.titleKey = choose(state.displayMode == 1, "menuAttachWindow", "menuDetachWindow");
            break;
        case 305:
            validity.titleKey = choose(state.displayMode == 2, "menuExitFullscreen", "menuEnterFullscreen");
            break;
        case 306:
            validity.titleKey = choose(state.hudVisible, "MainMenu_Window_HideAdditionalControls",
                                       "MainMenu_Window_ShowAdditionalControls");
            break;
        case 310:
            validity.titleKey =
                choose(state.urlPaneCollapsed, "MainMenu_View_ShowURLPanel", "MainMenu_View_HideURLPanel");
            break;
        case 311:
            validity.titleKey =
                choose(state.treePaneCollapsed, "MainMenu_View_ShowTreePanel", "MainMenu_View_HideTreePanel");
            break;
        case 312:
            validity.titleKey =
                choose(state.listPaneCollapsed, "MainMenu_View_ShowPlaylistPanel", "MainMenu_View_HidePlaylistPanel");
            break;
        case 401:
            validity.titleKey = choose(state.isPlaying && state.hasPlayingItem && !state.playbackStopped,
                                       "MainMenu_Movie_Pause", "MainMenu_Movie_Play");
            break;
        case 701:
            validity.titleKey = choose(state.showTutorial == u"hide", "menuHelpShowTutorial", "menuHelpHideTutorial");
            break;
        default:
            break;
    }
}

bool ZBCommandValidation::isEnabled(int tag, const ZBCommandState &state)
{
    const bool library = state.mode == 1 || state.mode == 2;
    const bool browsing = state.mode == 0 || state.mode == 3;
    const bool listShown = !state.listPaneCollapsed;
    const bool treeShown = !state.treePaneCollapsed;
    const bool userList = isUserList(state);
    const bool smartUserList = userList && state.sourceIsSmart;
    const bool trackSelected = state.selectedTrackRow >= 0;
    const bool downloadSelected = state.selectedDownloadRow >= 0;
    const bool playing = !state.playbackStopped;
    const QString downloadType = state.selectedDownloadType.toLower();

    switch (tag)
    {
        case 201:
            return listShown && !isDateList(state) && !smartUserList && trackSelected;
        case 202:
            return treeShown && userList && !state.sourceIsSmart && library;
        case 203:
            return treeShown && userList;
        case 204:
            return treeShown && smartUserList && library;
        case 205:
        case 206:
            return trackSelected && listShown;
        case 2001:
            return trackSelected;
        case 207:
            return state.sourceSelected && trackSelected && listShown && !state.sourceIsSmart;
        case 208:
        case 209:
        case 219:
        case 411:
        case 412:
        case 413:
        case 424:
            return library;
        case 210:
            return state.hasPlayingItem && library && listShown;
        case 211:
        case 425:
            return library && state.hasPlayingItem;
        case 212:
            return library && listShown;
        case 213:
            return library && userList;
        case 220:
        case 221:
        case 222:
        case 223:
        case 224:
        case 225:
        case 230:
            return library && trackSelected && listShown;
        case 303:
            return state.displayMode != 0;
        case 305:
        case 406:
        case 408:
        case 409:
            return library && playing;
        case 308:
            return state.displayMode == 2;
        case 401:
            if (state.isPlaying)
                return state.hasPlayingItem && playing;
            // A paused track resumes; otherwise the selected row starts, but not
            // over a web page.
            return (state.hasPlayingItem || trackSelected) && !browsing;
        case 403:
            return library && playing &&
                   (state.currentUsedView == 0 ||
                    ((state.currentUsedView == 1 || state.currentUsedView == 2) && state.displayMode == 1));
        case 405:
            return library && playing && !state.screenshotSeriesInProgress;
        case 501:
            return downloadSelected && state.mode == 0 && state.downloadSelectionHasDownloadable && listShown;
        case 502:
            return downloadSelected && state.mode == 0 && listShown &&
                   (downloadType == u"swf" || downloadType == u"exe");
        case 503:
            return browsing && state.downloadableUrlCount > 0;
        case 504:
        case 2032:
        case 2033:
            return state.downloadRowCount > 0;
        case 505:
            return browsing;
        case 601:
            return state.historyItemCount > 2;
        case 701:
            // The tutorial is offered only over the logo.
            return library && state.playbackStopped;
        case 801:
            return state.volume < 100;
        case 802:
            return state.volume > 0 || (state.muted && state.volumeBeforeMute > 0);
        case 2004:
            return !isDateList(state) && !smartUserList;
        case 2005:
            return state.hasPlayingItem;
        case 2031:
            return downloadSelected;
        case 2034:
            return state.downloadSelectionHasRoot;
        case 2035:
            return downloadSelected && state.mode == 0 && state.downloadSelectionHasDownloadable;
        case 2036:
            return state.selectedDownloadSaved;
        case 9001:
            return !state.browserOnStartPage;
        default:
            return true;
    }
}
