<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Localizable</name>
    <message>
        <source>Button_OK_Title</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Button_Cancel_Title</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Button_Yes_Title</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>Button_No_Title</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>yesButtonTitle</source>
        <translation>Ja</translation>
    </message>
    <message>
        <source>noButtonTitle</source>
        <translation>Nein</translation>
    </message>
    <message>
        <source>NeverAskAgainTitle</source>
        <translation>Nicht mehr fragen</translation>
    </message>
    <message>
        <source>RememberMyChoice</source>
        <translation>Auswahl merken</translation>
    </message>
    <message>
        <source>menuItemPlay</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>menuItemGetInfo</source>
        <translation>Informationen</translation>
    </message>
    <message>
        <source>menuItemShowInFinder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>menuItemDelete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>menuItemShowTrack</source>
        <translation>Laufenden Titel zeigen</translation>
    </message>
    <message>
        <source>hudDrag</source>
        <translation>Verschieben</translation>
    </message>
    <message>
        <source>hudFit</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>hudStrech</source>
        <translation>Strecken</translation>
    </message>
    <message>
        <source>hudOneToOne</source>
        <translation>1:1</translation>
    </message>
    <message>
        <source>hudScreenshot</source>
        <translation>Bildschirmfoto</translation>
    </message>
    <message>
        <source>hudSeries</source>
        <translation>Serie</translation>
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
        <translation>Nr.</translation>
    </message>
    <message>
        <source>columnTitleType</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>columnTitlePath</source>
        <translation>Pfad</translation>
    </message>
    <message>
        <source>columnTitleTime</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>columnTitleRating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>columnTitlePlayCount</source>
        <translation>Wiedergaben</translation>
    </message>
    <message>
        <source>columnTitleAdded</source>
        <translation>Hinzugefügt</translation>
    </message>
    <message>
        <source>columnTitleLastPlayed</source>
        <translation>Zuletzt gespielt</translation>
    </message>
    <message>
        <source>columnTitleURL</source>
        <translation>Webadresse</translation>
    </message>
    <message>
        <source>columnSourcePageTitle</source>
        <translation>Quellseite</translation>
    </message>
    <message>
        <source>columnResourceTitle</source>
        <translation>Ressource</translation>
    </message>
    <message>
        <source>columnResourceType</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>columnTitleDownload</source>
        <translation>Aktion</translation>
    </message>
    <message>
        <source>columnTitleProgress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>columnEstimated</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>menuDownloadsCopyUrl</source>
        <translation>Adresse kopieren</translation>
    </message>
    <message>
        <source>menuDownloadsDownloadSelected</source>
        <translation>Auswahl herunterladen</translation>
    </message>
    <message>
        <source>menuDownloadsClearDownloadsList</source>
        <translation>Download-Liste leeren</translation>
    </message>
    <message>
        <source>menuDownloadsSelectAll</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>menuDownloadsRemoveSelected</source>
        <translation>Ausgewählte Seiten entfernen</translation>
    </message>
    <message>
        <source>menuDownloadShowFile</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Previous</source>
        <translation>Vorheriger Titel</translation>
    </message>
    <message>
        <source>PlaybackMenu_Next</source>
        <translation>Nächster Titel</translation>
    </message>
    <message>
        <source>PlaybackMenu_Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatNone</source>
        <translation>Nicht wiederholen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatOne</source>
        <translation>Titel wiederholen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Repeat_RepeatAll</source>
        <translation>Alle wiederholen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Shuffle</source>
        <translation>Zufallswiedergabe</translation>
    </message>
    <message>
        <source>PlaybackMenu_VolumeUp</source>
        <translation>Lauter</translation>
    </message>
    <message>
        <source>PlaybackMenu_VolumeDown</source>
        <translation>Leiser</translation>
    </message>
    <message>
        <source>PlaybackMenu_Mute</source>
        <translation>Stummschalten</translation>
    </message>
    <message>
        <source>PlaybackMenu_Screenshot</source>
        <translation>Bildschirmfoto aufnehmen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Series</source>
        <translation>Bildschirmfoto-Serie</translation>
    </message>
    <message>
        <source>PlaybackMenu_Fit</source>
        <translation>An Fenster anpassen</translation>
    </message>
    <message>
        <source>PlaybackMenu_Original</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>prefShowAll</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>prefShowMediaOnly</source>
        <translation>Medien</translation>
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
        <translation>Auswählen, welche der erfassten Ressourcen aufgelistet werden</translation>
    </message>
    <message>
        <source>tooltipButtonPlay</source>
        <translation>Wiedergabe oder Pause</translation>
    </message>
    <message>
        <source>tooltipButtonPrev</source>
        <translation>Vorheriger Titel (gedrückt halten zum Zurückspulen)</translation>
    </message>
    <message>
        <source>tooltipButtonNext</source>
        <translation>Nächster Titel (gedrückt halten zum Vorspulen)</translation>
    </message>
    <message>
        <source>tooltipButtonOnTop</source>
        <translation>Player über anderen Fenstern halten</translation>
    </message>
    <message>
        <source>tooltipButtonHUD</source>
        <translation>Zusätzliche Steuerelemente ein- oder ausblenden</translation>
    </message>
    <message>
        <source>tooltipButtonFullscreen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>tooltipButtonDetach</source>
        <translation>In eigenem Fenster wiedergeben</translation>
    </message>
    <message>
        <source>tooltipButtonEdit</source>
        <translation>Ausgewählte Wiedergabeliste bearbeiten</translation>
    </message>
    <message>
        <source>tooltipButtonPlus</source>
        <translation>Neue Wiedergabeliste</translation>
    </message>
    <message>
        <source>tooltipButtonMinus</source>
        <translation>Ausgewählte Wiedergabeliste entfernen</translation>
    </message>
    <message>
        <source>tooltipButtonLEDBack</source>
        <translation>Vorschau verlassen und zur Seite zurückkehren</translation>
    </message>
    <message>
        <source>tooltipButtonLEDChangeView</source>
        <translation>Nächste laufende Aufgabe zeigen</translation>
    </message>
    <message>
        <source>tooltipButtonLEDCancel</source>
        <translation>Laufende Aufgabe abbrechen</translation>
    </message>
    <message>
        <source>tooltipButtonHUDSeries</source>
        <translation>Bildschirmfoto-Serie starten oder beenden</translation>
    </message>
    <message>
        <source>tooltipButtonHUDFit</source>
        <translation>Bild an das Fenster anpassen</translation>
    </message>
    <message>
        <source>tooltipButtonHUDScreenshot</source>
        <translation>Bildschirmfoto aufnehmen</translation>
    </message>
    <message>
        <source>tooltipButtonHUDOneToOne</source>
        <translation>Bild in Originalgröße zeigen</translation>
    </message>
    <message>
        <source>tooltipButtonHUDStretch</source>
        <translation>Bild auf Fenstergröße strecken</translation>
    </message>
    <message>
        <source>tooltipButtonHUDDrag</source>
        <translation>Vergrößerten Film mit der Maus verschieben</translation>
    </message>
    <message>
        <source>tooltipButtonHUDZoom</source>
        <translation>Film vergrößern oder verkleinern</translation>
    </message>
    <message>
        <source>tooltipButtonShuffle</source>
        <translation>Zufallswiedergabe ein oder aus</translation>
    </message>
    <message>
        <source>tooltipButtonRepeat</source>
        <translation>Wiederholen: aus, alle Titel oder ein Titel</translation>
    </message>
    <message>
        <source>tooltipCollapseURL</source>
        <translation>Seitenressourcen ein- oder ausblenden</translation>
    </message>
    <message>
        <source>tooltipCollapsePlaylist</source>
        <translation>Titelliste ein- oder ausblenden</translation>
    </message>
    <message>
        <source>tooltipCollapseTree</source>
        <translation>Quellenliste ein- oder ausblenden</translation>
    </message>
    <message>
        <source>tooltipCollapseDownloadResourcesList</source>
        <translation>Erfasste Ressourcen ein- oder ausblenden</translation>
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
        <translation>Browser – Norvik Player</translation>
    </message>
    <message>
        <source>mainWindowTitlePreview</source>
        <translation>Vorschau – Norvik Player</translation>
    </message>
    <message>
        <source>aboutVersion</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>contextMenuItemCopyURL</source>
        <translation>Adresse kopieren</translation>
    </message>
    <message>
        <source>screenSaverInhibitReason</source>
        <translation>Ein Film läuft im Vollbild</translation>
    </message>
    <message>
        <source>hudWindowTitle</source>
        <translation>Steuerung</translation>
    </message>
    <message>
        <source>hudButtonFit</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>hudButtonStretch</source>
        <translation>Strecken</translation>
    </message>
    <message>
        <source>hudButtonOneToOne</source>
        <translation>1:1</translation>
    </message>
    <message>
        <source>hudButtonDrag</source>
        <translation>Ziehen</translation>
    </message>
    <message>
        <source>hudButtonScreenshot</source>
        <translation>Foto</translation>
    </message>
    <message>
        <source>hudButtonSeries</source>
        <translation>Serie</translation>
    </message>
    <message>
        <source>SmartListWindow_Title</source>
        <translation>Intelligente Wiedergabeliste</translation>
    </message>
    <message>
        <source>importWindowTitle</source>
        <translation>Dateien werden hinzugefügt</translation>
    </message>
    <message>
        <source>searchFieldPlaceholder</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>urlFieldPlaceholder</source>
        <translation>Webadresse eingeben</translation>
    </message>
    <message>
        <source>buttonGo</source>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>downloadAll</source>
        <translation>Alles herunterladen</translation>
    </message>
    <message>
        <source>previewSWF</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>menuItemAddPlaylist</source>
        <translation>Neue Wiedergabeliste</translation>
    </message>
    <message>
        <source>menuItemEditPlaylist</source>
        <translation>Wiedergabeliste umbenennen</translation>
    </message>
    <message>
        <source>menuItemAddSmartPlaylist</source>
        <translation>Neue intelligente Wiedergabeliste …</translation>
    </message>
    <message>
        <source>menuItemEditSmartPlaylist</source>
        <translation>Intelligente Wiedergabeliste bearbeiten …</translation>
    </message>
    <message>
        <source>closePlayerWhenActionIsNotCompletedMessage</source>
        <translation>Es laufen noch Downloads. Trotzdem beenden?</translation>
    </message>
    <message>
        <source>closePlayerWhenActionIsNotCompletedInfo</source>
        <translation>Wenn Sie jetzt beenden, werden die laufenden Downloads abgebrochen und die bisher empfangenen Daten gehen verloren.</translation>
    </message>
    <message>
        <source>alertInstallDriverMessageText</source>
        <translation>Integrationshelfer von Norvik Player installieren?</translation>
    </message>
    <message>
        <source>alertInstallDriverInformativeText</source>
        <translation>Mit dem Helfer erfasst Norvik Player auch Medien, die andere Programme aus dem Web laden. Für die Installation sind Administratorrechte erforderlich.</translation>
    </message>
    <message>
        <source>ledNoFile</source>
        <translation>Kein Titel</translation>
    </message>
    <message>
        <source>ledTime</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>ledZeroTime</source>
        <translation>00:00 / 00:00</translation>
    </message>
    <message>
        <source>ledFrames</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>ledStatusReady</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
    <message>
        <source>ledNoFilesForDownload</source>
        <translation>Keine Downloads</translation>
    </message>
    <message>
        <source>ledTabDownloadProgressInfo</source>
        <translation>Dateien werden heruntergeladen</translation>
    </message>
    <message>
        <source>ledTabDownloadProgressCaption</source>
        <translation>Downloads</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressCaption</source>
        <translation>Bildschirmfotos</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressCompleteCaption</source>
        <translation>Bildschirmfoto gespeichert</translation>
    </message>
    <message>
        <source>ledTabScreenshotProgressInfo</source>
        <translation>Alle %1 s – %2 aufgenommen</translation>
    </message>
    <message>
        <source>ledOpenFolderText</source>
        <translation>Ordner öffnen</translation>
    </message>
    <message>
        <source>ledTextConnecting</source>
        <translation>Verbindung mit %1 wird hergestellt …</translation>
    </message>
    <message>
        <source>ledResourcesLoadProgress</source>
        <translation>Ressourcen werden geladen: %1 von %2</translation>
    </message>
    <message>
        <source>ledDownloadingFles</source>
        <translation>Wird heruntergeladen: %1</translation>
    </message>
    <message>
        <source>logDownloadComplete</source>
        <translation>„%1“ wurde heruntergeladen.</translation>
    </message>
    <message>
        <source>logDownloadFailedWithError</source>
        <translation>Der Download ist fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>downloadErrorInvalidURL</source>
        <translation>„%1“ ist keine Webadresse, die geladen werden kann.</translation>
    </message>
    <message>
        <source>downloadErrorBusy</source>
        <translation>„%1“ wird bereits geladen.</translation>
    </message>
    <message>
        <source>downloadErrorFolder</source>
        <translation>In den Ordner „%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>downloadErrorFolderCreate</source>
        <translation>er kann nicht angelegt werden</translation>
    </message>
    <message>
        <source>downloadErrorHTTP</source>
        <translation>Der Server antwortete mit %1 %2.</translation>
    </message>
    <message>
        <source>downloadErrorNetwork</source>
        <translation>Der Server ist nicht erreichbar: %1</translation>
    </message>
    <message>
        <source>downloadErrorRedirectLoop</source>
        <translation>Der Server leitet die Adresse im Kreis um.</translation>
    </message>
    <message>
        <source>downloadErrorInsecureRedirect</source>
        <translation>Der Server leitete von einer sicheren auf eine unsichere Adresse um, deshalb wurde der Download angehalten.</translation>
    </message>
    <message>
        <source>downloadErrorIncomplete</source>
        <translation>Die Übertragung brach nach %1 von %2 ab: %3</translation>
    </message>
    <message>
        <source>downloadErrorShortBody</source>
        <translation>Der Server sandte nur %1 der angekündigten %2.</translation>
    </message>
    <message>
        <source>downloadErrorStalled</source>
        <translation>Der Server hat %1 Sekunden lang nichts gesendet.</translation>
    </message>
    <message>
        <source>downloadErrorWrite</source>
        <translation>„%1“ konnte nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>ScreenshotWasSaved</source>
        <translation>Bildschirmfoto von „%1“ gespeichert.</translation>
    </message>
    <message>
        <source>screenshots</source>
        <translation>Bildschirmfotos</translation>
    </message>
    <message>
        <source>screenshot</source>
        <translation>Bildschirmfoto</translation>
    </message>
    <message>
        <source>SaveSnapshotError</source>
        <translation>Das Bildschirmfoto „%1“ konnte nicht gespeichert werden: %2.</translation>
    </message>
    <message>
        <source>saveSnapshotErrorNoPicture</source>
        <translation>der Player zeigt kein Bild, das gespeichert werden könnte</translation>
    </message>
    <message>
        <source>saveSnapshotErrorBadPicture</source>
        <translation>das Bild ist für das gewählte Bildformat zu groß</translation>
    </message>
    <message>
        <source>saveSnapshotErrorNoData</source>
        <translation>das Bildformat hat keine Daten erzeugt</translation>
    </message>
    <message>
        <source>saveSnapshotErrorCantWrite</source>
        <translation>die Datei kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>saveSnapshotErrorCantWriteBecause</source>
        <translation>die Datei kann nicht geschrieben werden (%1)</translation>
    </message>
    <message>
        <source>untitledPlaylist</source>
        <translation>Unbenannte Wiedergabeliste</translation>
    </message>
    <message>
        <source>savePanelExportPlaylist</source>
        <translation>Wiedergabeliste exportieren</translation>
    </message>
    <message>
        <source>openPanelImportPlaylist</source>
        <translation>Wiedergabeliste importieren</translation>
    </message>
    <message>
        <source>importPlaylistErrorMsg</source>
        <translation>Die Wiedergabeliste konnte nicht importiert werden</translation>
    </message>
    <message>
        <source>importPlaylistErrorInfo</source>
        <translation>Die Datei ist nicht lesbar oder keine Wiedergabeliste von Norvik Player. Der Mediathek wurde nichts hinzugefügt.</translation>
    </message>
    <message>
        <source>alertLibraryCannotOpenMessage</source>
        <translation>Ihre Mediathek kann nicht geöffnet werden. Es wurde nichts daran verändert; bitte prüfen Sie, ob der Ordner lesbar und beschreibbar ist, und starten Sie Norvik Player erneut.</translation>
    </message>
    <message>
        <source>alertLibraryDamagedMessage</source>
        <translation>Ihre Mediathek-Datei war beschädigt und konnte nicht gelesen werden, daher wurde eine neue, leere Mediathek angelegt.

Die beschädigte Datei wurde unverändert aufbewahrt unter:
%1

(%2)</translation>
    </message>
    <message>
        <source>alertHistoryDamagedMessage</source>
        <translation>Ihr Browserverlauf konnte nicht gelesen werden, daher wurde ein neuer, leerer Verlauf angelegt.

Die alte Verlaufsdatei wurde unverändert aufbewahrt unter:
%1

(%2)</translation>
    </message>
    <message>
        <source>alertHistoryCannotOpenMessage</source>
        <translation>Ihr Browserverlauf kann nicht geöffnet werden, daher werden die jetzt besuchten Seiten nur bis zum Beenden von Norvik Player gemerkt. Die Verlaufsdatei wurde nicht verändert.

(%1)</translation>
    </message>
    <message>
        <source>alertMediaModuleMissingTitle</source>
        <translation>Die Medienbibliotheken können nicht geladen werden</translation>
    </message>
    <message>
        <source>alertMediaModuleMissingMessage</source>
        <translation>Die Medienbibliotheken können nicht geladen werden, daher können keine Webseiten angezeigt werden. Ihre Mediathek und Ihre Downloads bleiben unverändert.

(%1)</translation>
    </message>
    <message>
        <source>mediaModuleMissing</source>
        <translation>Die Medienbibliotheken können nicht geladen werden, daher kann dieser Titel nicht abgespielt werden. Er bleibt in Ihrer Mediathek. (%1)</translation>
    </message>
    <message>
        <source>silverlightUnsupported</source>
        <translation>Silverlight-Inhalte können unter Linux nicht abgespielt werden: Dafür gibt es keine Silverlight-Engine. Der Titel bleibt in Ihrer Mediathek.</translation>
    </message>
    <message>
        <source>alertDeletePlaylistFromLibraryMessage</source>
        <translation>Diese Wiedergabeliste löschen?</translation>
    </message>
    <message>
        <source>alertDeletePlaylistFromLibraryInfo</source>
        <translation>Nur die Wiedergabeliste wird entfernt. Ihre Titel bleiben in der Mediathek und die Dateien auf dem Datenträger.</translation>
    </message>
    <message>
        <source>alertDeletefromPlaylistMessage</source>
        <translation>Ausgewählte Titel aus dieser Wiedergabeliste entfernen?</translation>
    </message>
    <message>
        <source>alertDeletefromPlaylistInfo</source>
        <translation>Die Titel bleiben in der Mediathek, ihre Dateien werden nicht verändert.</translation>
    </message>
    <message>
        <source>alertDeletefromLibraryMessage</source>
        <translation>Ausgewählte Titel aus der Mediathek entfernen?</translation>
    </message>
    <message>
        <source>alertDeletefromLibraryInfo</source>
        <translation>Die Titel werden auch aus allen Wiedergabelisten entfernt. Das kann nicht rückgängig gemacht werden.</translation>
    </message>
    <message>
        <source>alertMessageDeleteFiles</source>
        <translation>Dateien behalten oder in den Papierkorb verschieben?</translation>
    </message>
    <message>
        <source>allertInformativeTextDeleteFiles</source>
        <translation>Die Titel werden in jedem Fall aus der Mediathek entfernt. Behalten Sie die Dateien, wenn Sie sie noch anderweitig verwenden möchten.</translation>
    </message>
    <message>
        <source>alertKeepFiles</source>
        <translation>Dateien behalten</translation>
    </message>
    <message>
        <source>alertMoveToTrash</source>
        <translation>In den Papierkorb</translation>
    </message>
    <message>
        <source>alertCannotPlayTrackTitle</source>
        <translation>Dieser Titel kann nicht abgespielt werden</translation>
    </message>
    <message>
        <source>alertCannotPlayTrackMessage</source>
        <translation>Die Datei ist möglicherweise beschädigt oder ein benötigtes Plug-in fehlt. Der Bereich „Plug-ins“ der Einstellungen zeigt, was installiert ist.</translation>
    </message>
    <message>
        <source>alertButtonGotoPreferencesPluginsTab</source>
        <translation>Plug-ins anzeigen</translation>
    </message>
    <message>
        <source>alertNotExistTitle</source>
        <translation>Die Datei wurde nicht gefunden</translation>
    </message>
    <message>
        <source>alertNotExistsMessage</source>
        <translation>Die Datei dieses Titels wurde verschoben oder gelöscht. Sie können sie suchen, den Titel aus der Mediathek entfernen oder alles unverändert lassen.</translation>
    </message>
    <message>
        <source>alertFind</source>
        <translation>Suchen …</translation>
    </message>
    <message>
        <source>alertDelete</source>
        <translation>Titel entfernen</translation>
    </message>
    <message>
        <source>alertDoNothing</source>
        <translation>Nichts tun</translation>
    </message>
    <message>
        <source>alertRealNotFoundMessage</source>
        <translation>Diese RealMedia-Datei kann nicht abgespielt werden</translation>
    </message>
    <message>
        <source>alertRealNotFoundInfo</source>
        <translation>Norvik Player spielt RealMedia mit den auf diesem Computer installierten FFmpeg-Decodern ab, und der Decoder, den diese Datei braucht, fehlt. Es gibt kein Plug-in zu installieren: eine neuere FFmpeg-Version (das Paket libavcodec) bringt ihn vielleicht mit.</translation>
    </message>
    <message>
        <source>alertRealNotFoundInstallButton</source>
        <translation>RealPlayer herunterladen</translation>
    </message>
    <message>
        <source>alertCancelDownloadMessageText</source>
        <translation>Diesen Download abbrechen?</translation>
    </message>
    <message>
        <source>alertCancelDownloadInformativeText</source>
        <translation>Die bisher empfangenen Daten werden verworfen. Sie können den Download später erneut starten.</translation>
    </message>
    <message>
        <source>alertReDownloadMessageText</source>
        <translation>Die heruntergeladene Datei fehlt. Erneut herunterladen?</translation>
    </message>
    <message>
        <source>alertReDownloadInformativeText</source>
        <translation>Der alte Eintrag wird aus der Mediathek entfernt und die Datei erneut geladen.</translation>
    </message>
    <message>
        <source>alertClearDownloadsMessage</source>
        <translation>Download-Liste leeren?</translation>
    </message>
    <message>
        <source>alertClearDownloadsInfo</source>
        <translation>Laufende Downloads werden abgebrochen und alle erfassten Seiten aus der Liste entfernt. Bereits geladene Dateien bleiben erhalten.</translation>
    </message>
    <message>
        <source>tableDownload</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>tableCancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>tablePlay</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>tableShowInFinder</source>
        <translation>Zeigen</translation>
    </message>
    <message>
        <source>tableWebPage</source>
        <translation>Webseite</translation>
    </message>
    <message>
        <source>NA</source>
        <translation>k. A.</translation>
    </message>
    <message>
        <source>history404message</source>
        <translation>Seite nicht gefunden</translation>
    </message>
    <message>
        <source>contexMenuItemBack</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>contexMenuItemReload</source>
        <translation>Neu laden</translation>
    </message>
    <message>
        <source>browserStartPageHeading</source>
        <translation>Willkommen bei Norvik Player</translation>
    </message>
    <message>
        <source>browserStartPageText</source>
        <translation>Geben Sie oben die Adresse einer Seite ein. Jedes Video und jeder Flash-Film, den die Seite lädt, erscheint in der Downloadliste – zur Vorschau, zum Laden oder für Ihre Mediathek.</translation>
    </message>
    <message>
        <source>browserErrorPageHeading</source>
        <translation>Diese Seite konnte nicht geladen werden</translation>
    </message>
    <message>
        <source>browserErrorConnection</source>
        <translation>Der Server ist nicht erreichbar. Prüfen Sie die Adresse und Ihre Netzwerkverbindung.</translation>
    </message>
    <message>
        <source>browserErrorHttpStatus</source>
        <translation>Der Server antwortete mit Fehler %1.</translation>
    </message>
    <message>
        <source>browserErrorOther</source>
        <translation>Die Seite konnte nicht geladen werden: %1</translation>
    </message>
    <message>
        <source>SmartListWindow_Equals</source>
        <translation>ist</translation>
    </message>
    <message>
        <source>SmartListWindow_Contains</source>
        <translation>enthält</translation>
    </message>
    <message>
        <source>SmartListWindow_BeginsWith</source>
        <translation>beginnt mit</translation>
    </message>
    <message>
        <source>SmartListWindow_EndsWith</source>
        <translation>endet mit</translation>
    </message>
    <message>
        <source>SmartListWindow_Less</source>
        <translation>ist kleiner als</translation>
    </message>
    <message>
        <source>SmartListWindow_Greather</source>
        <translation>ist größer als</translation>
    </message>
    <message>
        <source>SmartListWindow_Is</source>
        <translation>ist</translation>
    </message>
    <message>
        <source>SmartListWindow_Early</source>
        <translation>ist vor dem</translation>
    </message>
    <message>
        <source>SmartListWindow_Later</source>
        <translation>ist nach dem</translation>
    </message>
    <message>
        <source>SmartListWindow_On</source>
        <translation>ist am</translation>
    </message>
    <message>
        <source>SmartListWindow_Match</source>
        <translation>Entspricht</translation>
    </message>
    <message>
        <source>SmartListWindow_OfTheFollowingRules</source>
        <translation>der folgenden Regeln</translation>
    </message>
    <message>
        <source>SmartListWindow_Name</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>smartWindowRuleAll</source>
        <translation>allen</translation>
    </message>
    <message>
        <source>smartWindowRuleAny</source>
        <translation>einer</translation>
    </message>
    <message>
        <source>SmartListWindow_AddRule</source>
        <translation>Unter dieser Regel eine weitere hinzufügen</translation>
    </message>
    <message>
        <source>SmartListWindow_RemoveRule</source>
        <translation>Diese Regel entfernen</translation>
    </message>
    <message>
        <source>SmartListWindow_Field</source>
        <translation>Feld</translation>
    </message>
    <message>
        <source>SmartListWindow_Operator</source>
        <translation>Bedingung</translation>
    </message>
    <message>
        <source>SmartListWindow_Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorName</source>
        <translation>Geben Sie einen Namen für die intelligente Wiedergabeliste ein.</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorNumber</source>
        <translation>Regel %1: „%2“ ist keine Zahl.</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorPattern</source>
        <translation>Regel %1: „%2“ ist kein gültiges Muster („%3“ vergleicht den ganzen Text mit einem regulären Ausdruck).</translation>
    </message>
    <message>
        <source>SmartListWindow_ChooseDate</source>
        <translation>Datum auswählen</translation>
    </message>
    <message>
        <source>SmartListWindow_DatePlaceholder</source>
        <translation>jjjj-mm-tt</translation>
    </message>
    <message>
        <source>SmartListWindow_ErrorDate</source>
        <translation>Regel %1: „%2“ ist kein Datum. Schreiben Sie es als Jahr-Monat-Tag, zum Beispiel %3.</translation>
    </message>
    <message>
        <source>SwitchToDownloadMode</source>
        <translation>Browser anzeigen</translation>
    </message>
    <message>
        <source>SwitchToPlayerMode</source>
        <translation>Mediathek anzeigen</translation>
    </message>
    <message>
        <source>menuAttachWindow</source>
        <translation>Player ins Hauptfenster zurückholen</translation>
    </message>
    <message>
        <source>menuDetachWindow</source>
        <translation>In eigenem Fenster wiedergeben</translation>
    </message>
    <message>
        <source>menuEnterFullscreen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>menuExitFullscreen</source>
        <translation>Vollbild beenden</translation>
    </message>
    <message>
        <source>menuHelpShowTutorial</source>
        <translation>Einführung zeigen</translation>
    </message>
    <message>
        <source>menuHelpHideTutorial</source>
        <translation>Einführung ausblenden</translation>
    </message>
    <message>
        <source>MainMenu_Window_ShowAdditionalControls</source>
        <translation>Zusätzliche Steuerelemente einblenden</translation>
    </message>
    <message>
        <source>MainMenu_Window_HideAdditionalControls</source>
        <translation>Zusätzliche Steuerelemente ausblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowURLPanel</source>
        <translation>Seitenressourcen einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_HideURLPanel</source>
        <translation>Seitenressourcen ausblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowTreePanel</source>
        <translation>Quellenliste einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_HideTreePanel</source>
        <translation>Quellenliste ausblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_ShowPlaylistPanel</source>
        <translation>Titelliste einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_HidePlaylistPanel</source>
        <translation>Titelliste ausblenden</translation>
    </message>
    <message>
        <source>MainMenu_Movie_Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>MainMenu_Movie_Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>prefGeneral</source>
        <translation>Allgemein</translation>
    </message>
    <message>
        <source>prefSWFandFLV</source>
        <translation>SWF &amp; FLV</translation>
    </message>
    <message>
        <source>prefPlaylist</source>
        <translation>Wiedergabeliste</translation>
    </message>
    <message>
        <source>prefCapture</source>
        <translation>Aufnahme</translation>
    </message>
    <message>
        <source>prefPlugins</source>
        <translation>Plug-ins</translation>
    </message>
    <message>
        <source>prefGeneralDriver</source>
        <translation>Beim Start anbieten, den Integrationshelfer zu installieren</translation>
    </message>
    <message>
        <source>prefGeneralAuto</source>
        <translation>Erste hinzugefügte Datei automatisch abspielen</translation>
    </message>
    <message>
        <source>prefGeneralSelectPlayer</source>
        <translation>FLV- und F4V-Dateien abspielen mit:</translation>
    </message>
    <message>
        <source>prefGeneralMPK</source>
        <translation>Flash-Player</translation>
    </message>
    <message>
        <source>prefGeneralQT</source>
        <translation>Integrierter Videoplayer</translation>
    </message>
    <message>
        <source>prefGeneralAllowToSendReceiveDataOverNetwork</source>
        <translation>Flash-Inhalten erlauben, Daten über das Netzwerk zu senden und zu empfangen</translation>
    </message>
    <message>
        <source>prefGeneralDontAllowScreenSaver</source>
        <translation>Bildschirmschoner im Vollbild verhindern</translation>
    </message>
    <message>
        <source>prefGeneralDefaultFlashQuality</source>
        <translation>Standardqualität für Flash:</translation>
    </message>
    <message>
        <source>prefGeneralLowQuality</source>
        <translation>Niedrig</translation>
    </message>
    <message>
        <source>prefGeneralMediumQuality</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>prefGeneralHighQuality</source>
        <translation>Hoch</translation>
    </message>
    <message>
        <source>prefGeneralEnableFlashLocalSecurity</source>
        <translation>Lokale Flash-Inhalte auf die Sicherheits-Sandbox beschränken</translation>
    </message>
    <message>
        <source>prefGeneralFLVBackgroundColor</source>
        <translation>Hintergrundfarbe hinter FLV-Videos:</translation>
    </message>
    <message>
        <source>prefGeneralPathForDownloads</source>
        <translation>Downloads speichern in:</translation>
    </message>
    <message>
        <source>prefGeneralResetButton</source>
        <translation>Alle Warnungen zurücksetzen</translation>
    </message>
    <message>
        <source>prefGeneralOther</source>
        <translation>Sonstiges</translation>
    </message>
    <message>
        <source>prefGeneralDataType</source>
        <translation>Mediendateien</translation>
    </message>
    <message>
        <source>prefPlaylistGotoNext</source>
        <translation>Zum nächsten Titel wechseln, wenn ein Flash-Film:</translation>
    </message>
    <message>
        <source>prefPlaylistLastFrame</source>
        <translation>sein letztes Bild erreicht</translation>
    </message>
    <message>
        <source>prefPlaylistDecrease</source>
        <translation>zu einem früheren Bild zurückspringt</translation>
    </message>
    <message>
        <source>prefPlaylistStaySameFrame</source>
        <translation>länger auf demselben Bild bleibt als:</translation>
    </message>
    <message>
        <source>prefPlaylistTimeValue</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>prefPlaylistNoteText</source>
        <translation>Viele Flash-Filme enden nie von selbst. Diese Regeln legen fest, wann ein solcher Film als beendet gilt.</translation>
    </message>
    <message>
        <source>prefCapturePathForScreenshots</source>
        <translation>Bildschirmfotos speichern in:</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotIntervalText</source>
        <translation>Abstand zwischen den Bildschirmfotos einer Serie:</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotIntervalValue</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>prefCaptureAlwaysStartCapturing</source>
        <translation>Jede Serie beim ersten Bild beginnen</translation>
    </message>
    <message>
        <source>prefCaptureKeepKapturing</source>
        <translation>Aufnahme beim nächsten Titel fortsetzen</translation>
    </message>
    <message>
        <source>prefCaptureSelectOption</source>
        <translation>Bildschirmfoto-Serien</translation>
    </message>
    <message>
        <source>prefCaptureNoteText</source>
        <translation>Jeder Titel erhält einen eigenen Ordner für Bildschirmfotos; vorhandene Dateien werden nie überschrieben.</translation>
    </message>
    <message>
        <source>pluginWindowInfoText1</source>
        <translation>Norvik Player spielt Medien mit diesen Komponenten ab. Sie werden mit dem Programm installiert; unten stehen die verwendeten Versionen.</translation>
    </message>
    <message>
        <source>prefPluginsUpdate</source>
        <translation>Aktualisieren</translation>
    </message>
    <message>
        <source>prefPluginsNotDetected</source>
        <translation>Nicht installiert</translation>
    </message>
    <message>
        <source>prefPluginsDownload</source>
        <translation>Herunterladen</translation>
    </message>
    <message>
        <source>prefPluginsSilverlight</source>
        <translation>Silverlight: kann unter Linux nicht abgespielt werden, da es dafür keine Silverlight-Engine gibt.</translation>
    </message>
    <message>
        <source>prefCloseButton</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>prefGeneralResetMarked</source>
        <translation>Alle Warnungen werden wieder angezeigt.</translation>
    </message>
    <message>
        <source>prefCaptureScreenshotFormat</source>
        <translation>Format der Bildschirmfotos:</translation>
    </message>
    <message>
        <source>prefCaptureFormatFallback</source>
        <translation>%1 (hier nicht verfügbar: stattdessen wird PNG geschrieben)</translation>
    </message>
    <message>
        <source>prefUnknownValue</source>
        <translation>Anderer Wert (%1)</translation>
    </message>
    <message>
        <source>menuPathOther</source>
        <translation>Andere …</translation>
    </message>
    <message>
        <source>tutorialTopHint</source>
        <translation>Filme hierher ziehen oder über das Menü „Datei“ öffnen</translation>
    </message>
    <message>
        <source>tutorialBottomHint</source>
        <translation>Oben eine Webadresse eingeben, um die Videos einer Seite zu erfassen</translation>
    </message>
    <message>
        <source>tutorialButtonTextHide</source>
        <translation>Einführung ausblenden</translation>
    </message>
    <message>
        <source>tutorialButtonTextShow</source>
        <translation>Einführung zeigen</translation>
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
        <translation>Heute</translation>
    </message>
    <message>
        <source>dateYesterday</source>
        <translation>Gestern</translation>
    </message>
    <message>
        <source>dateTomorrow</source>
        <translation>Morgen</translation>
    </message>
    <message>
        <source>dateMediumFormat</source>
        <translation>dd.MM.yyyy</translation>
    </message>
    <message>
        <source>Tracks</source>
        <translation>Mediathek</translation>
    </message>
    <message>
        <source>Playlists</source>
        <translation>Wiedergabelisten</translation>
    </message>
    <message>
        <source>Downloads</source>
        <translation>Downloads</translation>
    </message>
    <message>
        <source>All Tracks</source>
        <translation>Alle Titel</translation>
    </message>
    <message>
        <source>SWF</source>
        <translation>Flash-Filme</translation>
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
        <translation>Aktuelle Seite</translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
    <message>
        <source>Last week</source>
        <translation>Letzte Woche</translation>
    </message>
    <message>
        <source>Last month</source>
        <translation>Letzter Monat</translation>
    </message>
    <message>
        <source>infoFileSize</source>
        <translation>Dateigröße</translation>
    </message>
    <message>
        <source>infoFormat</source>
        <translation>Format</translation>
    </message>
</context>
</TS>
