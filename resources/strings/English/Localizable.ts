<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>Button_OK_Title</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Button_Cancel_Title</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Button_Yes_Title</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>Button_No_Title</source>
        <translation>No</translation>
    </message>
    <message>
        <source>yesButtonTitle</source>
        <translation>Yes</translation>
    </message>
    <message>
        <source>noButtonTitle</source>
        <translation>No</translation>
    </message>
    <message>
        <source>NeverAskAgainTitle</source>
        <translation>Don’t ask me again</translation>
    </message>
    <message>
        <source>RememberMyChoice</source>
        <translation>Remember my choice</translation>
    </message>
    <message>
        <source>menuItemPlay</source>
        <translation>Play</translation>
    </message>
    <message>
        <source>menuItemGetInfo</source>
        <translation>Get Info</translation>
    </message>
    <message>
        <source>menuItemShowInFinder</source>
        <translation>Show in File Manager</translation>
    </message>
    <message>
        <source>menuItemDelete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>menuItemShowTrack</source>
        <translation>Show Playing Track</translation>
    </message>
    <message>
        <source>hudDrag</source>
        <translation>Drag</translation>
    </message>
    <message>
        <source>hudFit</source>
        <translation>Fit</translation>
    </message>
    <message>
        <source>hudStrech</source>
        <translation>Stretch</translation>
    </message>
    <message>
        <source>hudOneToOne</source>
        <translation>1:1</translation>
    </message>
    <message>
        <source>hudScreenshot</source>
        <translation>Screenshot</translation>
    </message>
    <message>
        <source>hudSeries</source>
        <translation>Series</translation>
    </message>
    <message>
        <source>hudZoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>columnTitleName</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>columnTitleNo</source>
        <translation>No.</translation>
    </message>
    <message>
        <source>columnTitleType</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>columnTitlePath</source>
        <translation>Path</translation>
    </message>
    <message>
        <source>columnTitleTime</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>columnTitleRating</source>
        <translation>Rating</translation>
    </message>
    <message>
        <source>columnTitlePlayCount</source>
        <translation>Plays</translation>
    </message>
    <message>
        <source>columnTitleAdded</source>
        <translation>Date Added</translation>
    </message>
    <message>
        <source>columnTitleLastPlayed</source>
        <translation>Last Played</translation>
    </message>
    <message>
        <source>columnTitleURL</source>
        <translation>Web Address</translation>
    </message>
    <message>
        <source>columnSourcePageTitle</source>
        <translation>Source Page</translation>
    </message>
    <message>
        <source>columnResourceTitle</source>
        <translation>Resource</translation>
    </message>
    <message>
        <source>columnResourceType</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>columnTitleDownload</source>
        <translation>Action</translation>
    </message>
    <message>
        <source>columnTitleProgress</source>
        <translation>Progress</translation>
    </message>
    <message>
        <source>columnEstimated</source>
        <translation>Size</translation>
    </message>
    <message>
        <source>menuDownloadsCopyUrl</source>
        <translation>Copy Address</translation>
    </message>
    <message>
        <source>menuDownloadsDownloadSelected</source>
        <translation>Download Selected</translation>
    </message>
    <message>
        <source>menuDownloadsClearDownloadsList</source>
        <translation>Clear Downloads List</translation>
    </message>
    <message>
        <source>menuDownloadsSelectAll</source>
        <translation>Select All</translation>
    </message>
    <message>
        <source>menuDownloadsRemoveSelected</source>
        <translation>Remove Selected Pages</translation>
    </message>
    <message>
        <source>menuDownloadShowFile</source>
        <translation>Show in File Manager</translation>
    </message>
    <message>
        <source>PlaybackMenu_Previous</source>
        <translation>Previous Track</translation>
    </message>
    <message>
        <source>PlaybackMenu_Next</source>
        <translation>Next Track</translation>
    </message>
    <message>
        <source>PlaybackMenu_Stop</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat</source>
        <translation>Repeat</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatNone</source>
        <translation>Repeat Off</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatOne</source>
        <translation>Repeat One</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatAll</source>
        <translation>Repeat All</translation>
    </message>
    <message>
        <source>PlaybackMenu_Shuffle</source>
        <translation>Shuffle</translation>
    </message>
    <message>
        <source>PlaybackMenu_VolumeUp</source>
        <translation>Volume Up</translation>
    </message>
    <message>
        <source>PlaybackMenu_VolumeDown</source>
        <translation>Volume Down</translation>
    </message>
    <message>
        <source>PlaybackMenu_Mute</source>
        <translation>Mute</translation>
    </message>
    <message>
        <source>PlaybackMenu_Screenshot</source>
        <translation>Take Screenshot</translation>
    </message>
    <message>
        <source>PlaybackMenu_Series</source>
        <translation>Screenshot Series</translation>
    </message>
    <message>
        <source>PlaybackMenu_Fit</source>
        <translation>Fit to Window</translation>
    </message>
    <message>
        <source>PlaybackMenu_Original</source>
        <translation>Original Size</translation>
    </message>
    <message>
        <source>prefShowAll</source>
        <translation>All</translation>
    </message>
    <message>
        <source>prefShowMediaOnly</source>
        <translation>Media</translation>
    </message>
    <message>
        <source>prefShowFlashOnly</source>
        <translation>Flash</translation>
    </message>
    <message>
        <source>prefShowVideoOnly</source>
        <translation>Video</translation>
    </message>
    <message>
        <source>tooltipFilterBar</source>
        <translation>Choose which of the captured resources are listed</translation>
    </message>
    <message>
        <source>tooltipButtonPlay</source>
        <translation>Play or pause</translation>
    </message>
    <message>
        <source>tooltipButtonPrev</source>
        <translation>Previous track (hold to rewind)</translation>
    </message>
    <message>
        <source>tooltipButtonNext</source>
        <translation>Next track (hold to fast-forward)</translation>
    </message>
    <message>
        <source>tooltipButtonOnTop</source>
        <translation>Keep the player above other windows</translation>
    </message>
    <message>
        <source>tooltipButtonHUD</source>
        <translation>Show or hide the additional controls</translation>
    </message>
    <message>
        <source>tooltipButtonFullscreen</source>
        <translation>Full screen</translation>
    </message>
    <message>
        <source>tooltipButtonDetach</source>
        <translation>Play in a separate window</translation>
    </message>
    <message>
        <source>tooltipButtonEdit</source>
        <translation>Edit the selected playlist</translation>
    </message>
    <message>
        <source>tooltipButtonPlus</source>
        <translation>New playlist</translation>
    </message>
    <message>
        <source>tooltipButtonMinus</source>
        <translation>Remove the selected playlist</translation>
    </message>
    <message>
        <source>tooltipButtonLEDBack</source>
        <translation>Leave the preview and go back to the page</translation>
    </message>
    <message>
        <source>tooltipButtonLEDChangeView</source>
        <translation>Show the next running task</translation>
    </message>
    <message>
        <source>tooltipButtonLEDCancel</source>
        <translation>Cancel the running task</translation>
    </message>
    <message>
        <source>tooltipButtonHUDSeries</source>
        <translation>Start or stop a screenshot series</translation>
    </message>
    <message>
        <source>tooltipButtonHUDFit</source>
        <translation>Fit the picture to the window</translation>
    </message>
    <message>
        <source>tooltipButtonHUDScreenshot</source>
        <translation>Take a screenshot</translation>
    </message>
    <message>
        <source>tooltipButtonHUDOneToOne</source>
        <translation>Show the picture at its original size</translation>
    </message>
    <message>
        <source>tooltipButtonHUDStretch</source>
        <translation>Stretch the picture to fill the window</translation>
    </message>
    <message>
        <source>tooltipButtonHUDDrag</source>
        <translation>Move a zoomed movie with the mouse</translation>
    </message>
    <message>
        <source>tooltipButtonHUDZoom</source>
        <translation>Zoom the movie</translation>
    </message>
    <message>
        <source>tooltipButtonShuffle</source>
        <translation>Shuffle on or off</translation>
    </message>
    <message>
        <source>tooltipButtonRepeat</source>
        <translation>Repeat: off, all tracks or one track</translation>
    </message>
    <message>
        <source>tooltipCollapseURL</source>
        <translation>Show or hide the page resources</translation>
    </message>
    <message>
        <source>tooltipCollapsePlaylist</source>
        <translation>Show or hide the track list</translation>
    </message>
    <message>
        <source>tooltipCollapseTree</source>
        <translation>Show or hide the source list</translation>
    </message>
    <message>
        <source>tooltipCollapseDownloadResourcesList</source>
        <translation>Show or hide the captured resources</translation>
    </message>
    <message>
        <source>mainWindowTitle</source>
        <translation>Norvik Player</translation>
    </message>
    <message>
        <source>mainWindowTitlePlaying</source>
        <translation>%1 – Norvik Player</translation>
    </message>
    <message>
        <source>mainWindowTitleBrowsing</source>
        <translation>Browsing – Norvik Player</translation>
    </message>
    <message>
        <source>mainWindowTitlePreview</source>
        <translation>Preview – Norvik Player</translation>
    </message>
    <message>
        <source>aboutVersion</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>contextMenuItemCopyURL</source>
        <translation>Copy Address</translation>
    </message>
    <message>
        <source>screenSaverInhibitReason</source>
        <translation>Playing a movie full screen</translation>
    </message>
    <message>
        <source>hudWindowTitle</source>
        <translation>Controls</translation>
    </message>
    <message>
        <source>hudButtonFit</source>
        <translation>Fit</translation>
    </message>
    <message>
        <source>hudButtonStretch</source>
        <translation>Stretch</translation>
    </message>
    <message>
        <source>hudButtonOneToOne</source>
        <translation>1:1</translation>
    </message>
    <message>
        <source>hudButtonDrag</source>
        <translation>Drag</translation>
    </message>
    <message>
        <source>hudButtonScreenshot</source>
        <translation>Shot</translation>
    </message>
    <message>
        <source>hudButtonSeries</source>
        <translation>Series</translation>
    </message>
    <message>
        <source>SmartListWindow_Title</source>
        <translation>Smart Playlist</translation>
    </message>
    <message>
        <source>importWindowTitle</source>
        <translation>Adding Files</translation>
    </message>
    <message>
        <source>searchFieldPlaceholder</source>
        <translation>Search</translation>
    </message>
    <message>
        <source>urlFieldPlaceholder</source>
        <translation>Enter a web address</translation>
    </message>
    <message>
        <source>buttonGo</source>
        <translation>Go</translation>
    </message>
    <message>
        <source>downloadAll</source>
        <translation>Download All</translation>
    </message>
    <message>
        <source>previewSWF</source>
        <translation>Preview</translation>
    </message>
    <message>
        <source>menuItemAddPlaylist</source>
        <translation>New Playlist</translation>
    </message>
    <message>
        <source>menuItemEditPlaylist</source>
        <translation>Rename Playlist</translation>
    </message>
    <message>
        <source>menuItemAddSmartPlaylist</source>
        <translation>New Smart Playlist…</translation>
    </message>
    <message>
        <source>menuItemEditSmartPlaylist</source>
        <translation>Edit Smart Playlist…</translation>
    </message>
    <message>
        <source>closePlayerWhenActionIsNotCompletedMessage</source>
        <translation>Downloads are still running. Quit anyway?</translation>
    </message>
    <message>
        <source>closePlayerWhenActionIsNotCompletedInfo</source>
        <translation>If you quit now, the running downloads are cancelled and the data received so far is lost.</translation>
    </message>
    <message>
        <source>alertInstallDriverMessageText</source>
        <translation>Install the Norvik Player integration helper?</translation>
    </message>
    <message>
        <source>alertInstallDriverInformativeText</source>
        <translation>With the helper, Norvik Player also captures media that other applications load from the web. Installing it needs administrator rights.</translation>
    </message>
    <message>
        <source>ledNoFile</source>
        <translation>No track</translation>
    </message>
    <message>
        <source>ledTime</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>ledZeroTime</source>
        <translation>00:00 / 00:00</translation>
    </message>
    <message>
        <source>ledFrames</source>
        <translation>Frames</translation>
    </message>
    <message>
        <source>ledStatusReady</source>
        <translation>Ready</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Ready</translation>
    </message>
    <message>
        <source>ledNoFilesForDownload</source>
        <translation>No downloads</translation>
    </message>
    <message>
        <source>ledTabDownloadProgressInfo</source>
        <translation>Downloading files</translation>
    </message>
    <message>
        <source>ledTabDownloadProgressCaption</source>
        <translation>Downloads</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressCaption</source>
        <translation>Screenshots</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressCompleteCaption</source>
        <translation>Screenshot saved</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressInfo</source>
        <translation>Every %1 s – %2 taken</translation>
    </message>
    <message>
        <source>ledOpenFolderText</source>
        <translation>Open Folder</translation>
    </message>
    <message>
        <source>ledTextConnecting</source>
        <translation>Connecting to %1…</translation>
    </message>
    <message>
        <source>ledResourcesLoadProgress</source>
        <translation>Loading resources: %1 of %2</translation>
    </message>
    <message>
        <source>ledDownloadingFles</source>
        <translation>Downloading: %1</translation>
    </message>
    <message>
        <source>logDownloadComplete</source>
        <translation>“%1” has been downloaded.</translation>
    </message>
    <message>
        <source>logDownloadFailedWithError</source>
        <translation>The download failed: %1</translation>
    </message>
    <message>
        <source>downloadErrorInvalidURL</source>
        <translation>“%1” is not a web address that can be downloaded.</translation>
    </message>
    <message>
        <source>downloadErrorBusy</source>
        <translation>“%1” is already being downloaded.</translation>
    </message>
    <message>
        <source>downloadErrorFolder</source>
        <translation>The folder “%1” cannot be written to: %2</translation>
    </message>
    <message>
        <source>downloadErrorFolderCreate</source>
        <translation>it cannot be created</translation>
    </message>
    <message>
        <source>downloadErrorHTTP</source>
        <translation>The server answered %1 %2.</translation>
    </message>
    <message>
        <source>downloadErrorNetwork</source>
        <translation>The server could not be reached: %1</translation>
    </message>
    <message>
        <source>downloadErrorRedirectLoop</source>
        <translation>The server redirects the address in a loop.</translation>
    </message>
    <message>
        <source>downloadErrorInsecureRedirect</source>
        <translation>The server redirected from a secure address to an insecure one, so the download was stopped.</translation>
    </message>
    <message>
        <source>downloadErrorIncomplete</source>
        <translation>The transfer broke off after %1 of %2: %3</translation>
    </message>
    <message>
        <source>downloadErrorShortBody</source>
        <translation>The server sent only %1 of the %2 it announced.</translation>
    </message>
    <message>
        <source>downloadErrorStalled</source>
        <translation>The server sent nothing for %1 seconds.</translation>
    </message>
    <message>
        <source>downloadErrorWrite</source>
        <translation>“%1” could not be written: %2</translation>
    </message>
    <message>
        <source>ScreenshotWasSaved</source>
        <translation>Screenshot of “%1” saved.</translation>
    </message>
    <message>
        <source>screenshots</source>
        <translation>screenshots</translation>
    </message>
    <message>
        <source>screenshot</source>
        <translation>screenshot</translation>
    </message>
    <message>
        <source>SaveSnapshotError</source>
        <translation>The screenshot “%1” could not be saved: %2.</translation>
    </message>
    <message>
        <source>saveSnapshotErrorNoPicture</source>
        <translation>the player has no picture to save</translation>
    </message>
    <message>
        <source>saveSnapshotErrorBadPicture</source>
        <translation>the picture is too large for the chosen image format</translation>
    </message>
    <message>
        <source>saveSnapshotErrorNoData</source>
        <translation>the image format produced no data</translation>
    </message>
    <message>
        <source>saveSnapshotErrorCantWrite</source>
        <translation>the file cannot be written</translation>
    </message>
    <message>
        <source>saveSnapshotErrorCantWriteBecause</source>
        <translation>the file cannot be written (%1)</translation>
    </message>
    <message>
        <source>untitledPlaylist</source>
        <translation>Untitled Playlist</translation>
    </message>
    <message>
        <source>savePanelExportPlaylist</source>
        <translation>Export Playlist</translation>
    </message>
    <message>
        <source>openPanelImportPlaylist</source>
        <translation>Import Playlist</translation>
    </message>
    <message>
        <source>importPlaylistErrorMsg</source>
        <translation>The playlist could not be imported</translation>
    </message>
    <message>
        <source>importPlaylistErrorInfo</source>
        <translation>The file cannot be read or is not a Norvik Player playlist. Nothing was added to the library.</translation>
    </message>
    <message>
        <source>alertLibraryCannotOpenMessage</source>
        <translation>Your library cannot be opened. Nothing in it was changed; please check that the folder can be read and written, then start Norvik Player again.</translation>
    </message>
    <message>
        <source>alertLibraryDamagedMessage</source>
        <translation>Your library file was damaged and could not be read, so a new, empty library was started.

The damaged file was kept unchanged as:
%1

(%2)</translation>
    </message>
    <message>
        <source>alertHistoryDamagedMessage</source>
        <translation>Your browsing history could not be read, so a new, empty history was started.

The old history file was kept unchanged as:
%1

(%2)</translation>
    </message>
    <message>
        <source>alertHistoryCannotOpenMessage</source>
        <translation>Your browsing history cannot be opened, so the pages you visit now are remembered only until Norvik Player quits. The history file was left unchanged.

(%1)</translation>
    </message>
    <message>
        <source>alertMediaModuleMissingTitle</source>
        <translation>The media libraries cannot be loaded</translation>
    </message>
    <message>
        <source>alertMediaModuleMissingMessage</source>
        <translation>The media libraries cannot be loaded, so web pages cannot be shown. Your library and downloads are unaffected.

(%1)</translation>
    </message>
    <message>
        <source>mediaModuleMissing</source>
        <translation>The media libraries cannot be loaded, so this track cannot be played. It stays in your library. (%1)</translation>
    </message>
    <message>
        <source>silverlightUnsupported</source>
        <translation>Silverlight content cannot be played on Linux: no Silverlight engine exists for it. The track stays in your library.</translation>
    </message>
    <message>
        <source>alertDeletePlaylistFromLibraryMessage</source>
        <translation>Delete this playlist?</translation>
    </message>
    <message>
        <source>alertDeletePlaylistFromLibraryInfo</source>
        <translation>Only the playlist is removed. Its tracks stay in the library and their files stay on disk.</translation>
    </message>
    <message>
        <source>alertDeletefromPlaylistMessage</source>
        <translation>Remove the selected tracks from this playlist?</translation>
    </message>
    <message>
        <source>alertDeletefromPlaylistInfo</source>
        <translation>The tracks stay in the library and their files are not touched.</translation>
    </message>
    <message>
        <source>alertDeletefromLibraryMessage</source>
        <translation>Remove the selected tracks from the library?</translation>
    </message>
    <message>
        <source>alertDeletefromLibraryInfo</source>
        <translation>The tracks are also removed from every playlist. This cannot be undone.</translation>
    </message>
    <message>
        <source>alertMessageDeleteFiles</source>
        <translation>Keep the files or move them to the Trash?</translation>
    </message>
    <message>
        <source>allertInformativeTextDeleteFiles</source>
        <translation>The tracks leave the library either way. Keep the files if you still want to use them elsewhere.</translation>
    </message>
    <message>
        <source>alertKeepFiles</source>
        <translation>Keep Files</translation>
    </message>
    <message>
        <source>alertMoveToTrash</source>
        <translation>Move to Trash</translation>
    </message>
    <message>
        <source>alertCannotPlayTrackTitle</source>
        <translation>This track cannot be played</translation>
    </message>
    <message>
        <source>alertCannotPlayTrackMessage</source>
        <translation>The file may be damaged, or a plug-in needed to play it is missing. The Plug-ins pane of the preferences shows what is installed.</translation>
    </message>
    <message>
        <source>alertButtonGotoPreferencesPluginsTab</source>
        <translation>Show Plug-ins</translation>
    </message>
    <message>
        <source>alertNotExistTitle</source>
        <translation>The file cannot be found</translation>
    </message>
    <message>
        <source>alertNotExistsMessage</source>
        <translation>The file of this track has been moved or deleted. You can locate it, remove the track from the library, or leave everything as it is.</translation>
    </message>
    <message>
        <source>alertFind</source>
        <translation>Locate…</translation>
    </message>
    <message>
        <source>alertDelete</source>
        <translation>Remove Track</translation>
    </message>
    <message>
        <source>alertDoNothing</source>
        <translation>Do Nothing</translation>
    </message>
    <message>
        <source>alertRealNotFoundMessage</source>
        <translation>This RealMedia file cannot be played</translation>
    </message>
    <message>
        <source>alertRealNotFoundInfo</source>
        <translation>Norvik Player plays RealMedia with the FFmpeg decoders installed on this computer, and the one this file needs is missing. There is no plug-in to install: a newer FFmpeg (the libavcodec package) may bring it.</translation>
    </message>
    <message>
        <source>alertRealNotFoundInstallButton</source>
        <translation>Get RealPlayer</translation>
    </message>
    <message>
        <source>alertCancelDownloadMessageText</source>
        <translation>Cancel this download?</translation>
    </message>
    <message>
        <source>alertCancelDownloadInformativeText</source>
        <translation>The data received so far is discarded. You can start the download again later.</translation>
    </message>
    <message>
        <source>alertReDownloadMessageText</source>
        <translation>The downloaded file is missing. Download it again?</translation>
    </message>
    <message>
        <source>alertReDownloadInformativeText</source>
        <translation>The old entry is removed from the library and the file is fetched again.</translation>
    </message>
    <message>
        <source>alertClearDownloadsMessage</source>
        <translation>Clear the downloads list?</translation>
    </message>
    <message>
        <source>alertClearDownloadsInfo</source>
        <translation>Running downloads are cancelled and every captured page leaves the list. Files already downloaded stay on disk.</translation>
    </message>
    <message>
        <source>tableDownload</source>
        <translation>Download</translation>
    </message>
    <message>
        <source>tableCancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>tablePlay</source>
        <translation>Play</translation>
    </message>
    <message>
        <source>tableShowInFinder</source>
        <translation>Show</translation>
    </message>
    <message>
        <source>tableWebPage</source>
        <translation>web page</translation>
    </message>
    <message>
        <source>NA</source>
        <translation>n/a</translation>
    </message>
    <message>
        <source>history404message</source>
        <translation>Page not found</translation>
    </message>
    <message>
        <source>contexMenuItemBack</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>contexMenuItemReload</source>
        <translation>Reload</translation>
    </message>
    <message>
        <source>browserStartPageHeading</source>
        <translation>Welcome to Norvik Player</translation>
    </message>
    <message>
        <source>browserStartPageText</source>
        <translation>Type the address of a page above. Every video and Flash movie the page loads is listed in the download list, ready to preview, download or add to your library.</translation>
    </message>
    <message>
        <source>browserErrorPageHeading</source>
        <translation>This page could not be loaded</translation>
    </message>
    <message>
        <source>browserErrorConnection</source>
        <translation>The server could not be reached. Check the address and your network connection.</translation>
    </message>
    <message>
        <source>browserErrorHttpStatus</source>
        <translation>The server answered with error %1.</translation>
    </message>
    <message>
        <source>browserErrorOther</source>
        <translation>The page could not be loaded: %1</translation>
    </message>
    <message>
        <source>SmartListWindow_Equals</source>
        <translation>is</translation>
    </message>
    <message>
        <source>SmartListWindow_Contains</source>
        <translation>contains</translation>
    </message>
    <message>
        <source>SmartListWindow_BeginsWith</source>
        <translation>begins with</translation>
    </message>
    <message>
        <source>SmartListWindow_EndsWith</source>
        <translation>ends with</translation>
    </message>
    <message>
        <source>SmartListWindow_Less</source>
        <translation>is less than</translation>
    </message>
    <message>
        <source>SmartListWindow_Greather</source>
        <translation>is greater than</translation>
    </message>
    <message>
        <source>SmartListWindow_Is</source>
        <translation>is</translation>
    </message>
    <message>
        <source>SmartListWindow_Early</source>
        <translation>is before</translation>
    </message>
    <message>
        <source>SmartListWindow_Later</source>
        <translation>is after</translation>
    </message>
    <message>
        <source>SmartListWindow_On</source>
        <translation>is on</translation>
    </message>
    <message>
        <source>SmartListWindow_Match</source>
        <translation>Match</translation>
    </message>
    <message>
        <source>SmartListWindow_OfTheFollowingRules</source>
        <translation>of the following rules</translation>
    </message>
    <message>
        <source>SmartListWindow_Name</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>smartWindowRuleAll</source>
        <translation>all</translation>
    </message>
    <message>
        <source>smartWindowRuleAny</source>
        <translation>any</translation>
    </message>
    <message>
        <source>SmartListWindow_AddRule</source>
        <translation>Add a rule below this one</translation>
    </message>
    <message>
        <source>SmartListWindow_RemoveRule</source>
        <translation>Remove this rule</translation>
    </message>
    <message>
        <source>SmartListWindow_Field</source>
        <translation>Field</translation>
    </message>
    <message>
        <source>SmartListWindow_Operator</source>
        <translation>Condition</translation>
    </message>
    <message>
        <source>SmartListWindow_Value</source>
        <translation>Value</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorName</source>
        <translation>Enter a name for the smart playlist.</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorNumber</source>
        <translation>Rule %1: “%2” is not a number.</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorPattern</source>
        <translation>Rule %1: “%2” is not a valid pattern (“%3” compares the whole text with a regular expression).</translation>
    </message>
    <message>
        <source>SmartListWindow_ChooseDate</source>
        <translation>Choose a date</translation>
    </message>
    <message>
        <source>SmartListWindow_DatePlaceholder</source>
        <translation>yyyy-mm-dd</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorDate</source>
        <translation>Rule %1: “%2” is not a date. Write it as year-month-day, for example %3.</translation>
    </message>
    <message>
        <source>SwitchToDownloadMode</source>
        <translation>Show Browser</translation>
    </message>
    <message>
        <source>SwitchToPlayerMode</source>
        <translation>Show Library</translation>
    </message>
    <message>
        <source>menuAttachWindow</source>
        <translation>Return Player to Main Window</translation>
    </message>
    <message>
        <source>menuDetachWindow</source>
        <translation>Play in Separate Window</translation>
    </message>
    <message>
        <source>menuEnterFullscreen</source>
        <translation>Enter Full Screen</translation>
    </message>
    <message>
        <source>menuExitFullscreen</source>
        <translation>Exit Full Screen</translation>
    </message>
    <message>
        <source>menuHelpShowTutorial</source>
        <translation>Show Tutorial</translation>
    </message>
    <message>
        <source>menuHelpHideTutorial</source>
        <translation>Hide Tutorial</translation>
    </message>
    <message>
        <source>MainMenu_Window_ShowAdditionalControls</source>
        <translation>Show Additional Controls</translation>
    </message>
    <message>
        <source>MainMenu_Window_HideAdditionalControls</source>
        <translation>Hide Additional Controls</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowURLPanel</source>
        <translation>Show Page Resources</translation>
    </message>
    <message>
        <source>MainMenu_View_HideURLPanel</source>
        <translation>Hide Page Resources</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowTreePanel</source>
        <translation>Show Source List</translation>
    </message>
    <message>
        <source>MainMenu_View_HideTreePanel</source>
        <translation>Hide Source List</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowPlaylistPanel</source>
        <translation>Show Track List</translation>
    </message>
    <message>
        <source>MainMenu_View_HidePlaylistPanel</source>
        <translation>Hide Track List</translation>
    </message>
    <message>
        <source>MainMenu_Movie_Play</source>
        <translation>Play</translation>
    </message>
    <message>
        <source>MainMenu_Movie_Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>prefGeneral</source>
        <translation>General</translation>
    </message>
    <message>
        <source>prefSWFandFLV</source>
        <translation>SWF &amp; FLV</translation>
    </message>
    <message>
        <source>prefPlaylist</source>
        <translation>Playlist</translation>
    </message>
    <message>
        <source>prefCapture</source>
        <translation>Capture</translation>
    </message>
    <message>
        <source>prefPlugins</source>
        <translation>Plug-ins</translation>
    </message>
    <message>
        <source>prefGeneralDriver</source>
        <translation>Offer to install the integration helper at start</translation>
    </message>
    <message>
        <source>prefGeneralAuto</source>
        <translation>Play the first added file automatically</translation>
    </message>
    <message>
        <source>prefGeneralSelectPlayer</source>
        <translation>Play FLV and F4V files with:</translation>
    </message>
    <message>
        <source>prefGeneralMPK</source>
        <translation>Flash player</translation>
    </message>
    <message>
        <source>prefGeneralQT</source>
        <translation>Built-in movie player</translation>
    </message>
    <message>
        <source>prefGeneralAllowToSendReceiveDataOverNetwork</source>
        <translation>Allow Flash content to send and receive data over the network</translation>
    </message>
    <message>
        <source>prefGeneralDontAllowScreenSaver</source>
        <translation>Keep the screen saver off in full screen</translation>
    </message>
    <message>
        <source>prefGeneralDefaultFlashQuality</source>
        <translation>Default Flash quality:</translation>
    </message>
    <message>
        <source>prefGeneralLowQuality</source>
        <translation>Low</translation>
    </message>
    <message>
        <source>prefGeneralMediumQuality</source>
        <translation>Medium</translation>
    </message>
    <message>
        <source>prefGeneralHighQuality</source>
        <translation>High</translation>
    </message>
    <message>
        <source>prefGeneralEnableFlashLocalSecurity</source>
        <translation>Restrict local Flash content to the security sandbox</translation>
    </message>
    <message>
        <source>prefGeneralFLVBackgroundColor</source>
        <translation>Background color behind FLV video:</translation>
    </message>
    <message>
        <source>prefGeneralPathForDownloads</source>
        <translation>Save downloads in:</translation>
    </message>
    <message>
        <source>prefGeneralResetButton</source>
        <translation>Reset All Warnings</translation>
    </message>
    <message>
        <source>prefGeneralOther</source>
        <translation>Other</translation>
    </message>
    <message>
        <source>prefGeneralDataType</source>
        <translation>Media files</translation>
    </message>
    <message>
        <source>prefPlaylistGotoNext</source>
        <translation>Go to the next track when a Flash movie:</translation>
    </message>
    <message>
        <source>prefPlaylistLastFrame</source>
        <translation>reaches its last frame</translation>
    </message>
    <message>
        <source>prefPlaylistDecrease</source>
        <translation>jumps back to an earlier frame</translation>
    </message>
    <message>
        <source>prefPlaylistStaySameFrame</source>
        <translation>stays on the same frame for longer than:</translation>
    </message>
    <message>
        <source>prefPlaylistTimeValue</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>prefPlaylistNoteText</source>
        <translation>Many Flash movies never stop by themselves. These rules decide when such a movie counts as finished.</translation>
    </message>
    <message>
        <source>prefCapturePathForScreenshots</source>
        <translation>Save screenshots in:</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotIntervalText</source>
        <translation>Time between the screenshots of a series:</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotIntervalValue</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>prefCaptureAlwaysStartCapturing</source>
        <translation>Start every series at the first frame</translation>
    </message>
    <message>
        <source>prefCaptureKeepKapturing</source>
        <translation>Keep capturing when the next track starts</translation>
    </message>
    <message>
        <source>prefCaptureSelectOption</source>
        <translation>Screenshot series</translation>
    </message>
    <message>
        <source>prefCaptureNoteText</source>
        <translation>Each track gets its own folder of screenshots; existing files are never overwritten.</translation>
    </message>
    <message>
        <source>pluginWindowInfoText1</source>
        <translation>Norvik Player plays media with these components. They are installed with the program; the versions below are the ones in use.</translation>
    </message>
    <message>
        <source>prefPluginsUpdate</source>
        <translation>Update</translation>
    </message>
    <message>
        <source>prefPluginsNotDetected</source>
        <translation>Not installed</translation>
    </message>
    <message>
        <source>prefPluginsDownload</source>
        <translation>Download</translation>
    </message>
    <message>
        <source>prefPluginsSilverlight</source>
        <translation>Silverlight: cannot be played on Linux, as no Silverlight engine exists for it.</translation>
    </message>
    <message>
        <source>prefCloseButton</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>prefGeneralResetMarked</source>
        <translation>All warnings will be shown again.</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotFormat</source>
        <translation>Screenshot format:</translation>
    </message>
    <message>
        <source>prefCaptureFormatFallback</source>
        <translation>%1 (not available here: PNG is written instead)</translation>
    </message>
    <message>
        <source>prefUnknownValue</source>
        <translation>Other value (%1)</translation>
    </message>
    <message>
        <source>menuPathOther</source>
        <translation>Other…</translation>
    </message>
    <message>
        <source>tutorialTopHint</source>
        <translation>Drop movies here or open them from the File menu</translation>
    </message>
    <message>
        <source>tutorialBottomHint</source>
        <translation>Enter a web address above to capture the videos of a page</translation>
    </message>
    <message>
        <source>tutorialButtonTextHide</source>
        <translation>Hide Tutorial</translation>
    </message>
    <message>
        <source>tutorialButtonTextShow</source>
        <translation>Show Tutorial</translation>
    </message>
    <message>
        <source>byte</source>
        <translation>B</translation>
    </message>
    <message>
        <source>kilobyte</source>
        <translation>KB</translation>
    </message>
    <message>
        <source>megabyte</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>kilobyte-sec</source>
        <translation>KB/s</translation>
    </message>
    <message>
        <source>megabyte-sec</source>
        <translation>MB/s</translation>
    </message>
    <message>
        <source>dateToday</source>
        <translation>Today</translation>
    </message>
    <message>
        <source>dateYesterday</source>
        <translation>Yesterday</translation>
    </message>
    <message>
        <source>dateTomorrow</source>
        <translation>Tomorrow</translation>
    </message>
    <message>
        <source>dateMediumFormat</source>
        <translation>MMM d, yyyy</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Library</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Playlists</translation>
    </message>
    <message>
        <source>Downloads</source>
        <translation>Downloads</translation>
    </message>
    <message>
        <source>All Tracks</source>
        <translation>All Tracks</translation>
    </message>
    <message>
        <source>SWF</source>
        <translation>Flash Movies</translation>
    </message>
    <message>
        <source>Video</source>
        <translation>Videos</translation>
    </message>
    <message>
        <source>Real video</source>
        <translation>RealMedia</translation>
    </message>
    <message>
        <source>Silverlight</source>
        <translation>Silverlight</translation>
    </message>
    <message>
        <source>NowBrowsing</source>
        <translation>Now Browsing</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Today</translation>
    </message>
    <message>
        <source>Last week</source>
        <translation>Last Week</translation>
    </message>
    <message>
        <source>Last month</source>
        <translation>Last Month</translation>
    </message>
    <message>
        <source>infoFileSize</source>
        <translation>File size</translation>
    </message>
    <message>
        <source>infoFormat</source>
        <translation>Format</translation>
    </message>
</context>
</TS>
