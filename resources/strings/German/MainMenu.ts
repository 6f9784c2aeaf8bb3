<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>MainMenu</name>
    <message>
        <source>MainMenu_NorvikPlayer</source>
        <translation>Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_About Norvik Player</source>
        <translation>Über Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_Preferences…</source>
        <translation>Einstellungen …</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_Quit Norvik Player</source>
        <translation>Norvik Player beenden</translation>
    </message>
    <message>
        <source>MainMenu_File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>MainMenu_File_Open…</source>
        <translation>Öffnen …</translation>
    </message>
    <message>
        <source>MainMenu_File_Add to Library…</source>
        <translation>Zur Mediathek hinzufügen …</translation>
    </message>
    <message>
        <source>MainMenu_File_New Playlist</source>
        <translation>Neue Wiedergabeliste</translation>
    </message>
    <message>
        <source>MainMenu_File_New Smart Playlist…</source>
        <translation>Neue intelligente Wiedergabeliste …</translation>
    </message>
    <message>
        <source>MainMenu_File_New Playlist from Selection</source>
        <translation>Neue Wiedergabeliste aus Auswahl</translation>
    </message>
    <message>
        <source>MainMenu_File_Edit Playlist</source>
        <translation>Wiedergabeliste bearbeiten</translation>
    </message>
    <message>
        <source>MainMenu_File_Delete Playlist</source>
        <translation>Wiedergabeliste löschen</translation>
    </message>
    <message>
        <source>MainMenu_File_Import Playlist…</source>
        <translation>Wiedergabeliste importieren …</translation>
    </message>
    <message>
        <source>MainMenu_File_Export Playlist…</source>
        <translation>Wiedergabeliste exportieren …</translation>
    </message>
    <message>
        <source>MainMenu_File_Save Movie As…</source>
        <translation>Film speichern unter …</translation>
    </message>
    <message>
        <source>MainMenu_File_Close Window</source>
        <translation>Fenster schließen</translation>
    </message>
    <message>
        <source>MainMenu_File_Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>MainMenu_Edit</source>
        <translation>Bearbeiten</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Find</source>
        <translation>Suchen</translation>
    </message>
    <message>
        <source>MainMenu_Track</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>MainMenu_Track_Get Info</source>
        <translation>Informationen</translation>
    </message>
    <message>
        <source>MainMenu_Track_Show in File Manager</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>MainMenu_Track_Show Playing Track</source>
        <translation>Laufenden Titel zeigen</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_One Star</source>
        <translation>Ein Stern</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Two Stars</source>
        <translation>Zwei Sterne</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Three Stars</source>
        <translation>Drei Sterne</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Four Stars</source>
        <translation>Vier Sterne</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Five Stars</source>
        <translation>Fünf Sterne</translation>
    </message>
    <message>
        <source>MainMenu_Playback</source>
        <translation>Wiedergabe</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Stop</source>
        <translation>Stopp</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Next</source>
        <translation>Nächster Titel</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Previous</source>
        <translation>Vorheriger Titel</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_None</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_All</source>
        <translation>Alle Titel</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_One</source>
        <translation>Einen Titel</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Shuffle</source>
        <translation>Zufallswiedergabe</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Volume Up</source>
        <translation>Lauter</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Volume Down</source>
        <translation>Leiser</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Mute</source>
        <translation>Stummschalten</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Screenshot</source>
        <translation>Bildschirmfoto</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Screenshot Series</source>
        <translation>Bildschirmfoto-Serie</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Fit</source>
        <translation>Einpassen</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Stretch</source>
        <translation>Strecken</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Original Size</source>
        <translation>Originalgröße</translation>
    </message>
    <message>
        <source>MainMenu_View</source>
        <translation>Ansicht</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Browser</source>
        <translation>Browser anzeigen</translation>
    </message>
    <message>
        <source>MainMenu_View_Normal Mode</source>
        <translation>Normalansicht</translation>
    </message>
    <message>
        <source>MainMenu_View_Detach Player</source>
        <translation>Player abkoppeln</translation>
    </message>
    <message>
        <source>MainMenu_View_Enter Full Screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Fullscreen Controls</source>
        <translation>Steuerung im Vollbild zeigen</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Additional Controls</source>
        <translation>Zusätzliche Steuerelemente einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_Always on Top</source>
        <translation>Immer im Vordergrund</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Page Resources</source>
        <translation>Seitenressourcen einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Source List</source>
        <translation>Quellenliste einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Track List</source>
        <translation>Titelliste einblenden</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns</source>
        <translation>Spalten</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Type</source>
        <translation>Typ</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Path</source>
        <translation>Pfad</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Time</source>
        <translation>Dauer</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Rating</source>
        <translation>Bewertung</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Plays</source>
        <translation>Wiedergaben</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Date Added</source>
        <translation>Hinzugefügt</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Last Played</source>
        <translation>Zuletzt gespielt</translation>
    </message>
    <message>
        <source>MainMenu_History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>MainMenu_History_Back</source>
        <translation>Zurück</translation>
    </message>
    <message>
        <source>MainMenu_History_Forward</source>
        <translation>Vorwärts</translation>
    </message>
    <message>
        <source>MainMenu_History_Home</source>
        <translation>Startseite</translation>
    </message>
    <message>
        <source>MainMenu_History_Download Selected</source>
        <translation>Auswahl herunterladen</translation>
    </message>
    <message>
        <source>MainMenu_History_Download All</source>
        <translation>Alles herunterladen</translation>
    </message>
    <message>
        <source>MainMenu_History_Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>MainMenu_History_Clear Downloads List</source>
        <translation>Download-Liste leeren</translation>
    </message>
    <message>
        <source>MainMenu_History_Recent Pages</source>
        <translation>Zuletzt besuchte Seiten</translation>
    </message>
    <message>
        <source>MainMenu_History_Recent Pages_Clear History</source>
        <translation>Verlauf löschen</translation>
    </message>
    <message>
        <source>MainMenu_Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>MainMenu_Window_Minimize</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>MainMenu_Window_Zoom</source>
        <translation>Zoomen</translation>
    </message>
    <message>
        <source>MainMenu_Window_Main Window</source>
        <translation>Hauptfenster</translation>
    </message>
    <message>
        <source>MainMenu_Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>MainMenu_Help_Norvik Player Help</source>
        <translation>Hilfe zu Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_Help_Show Tutorial</source>
        <translation>Einführung zeigen</translation>
    </message>
    <message>
        <source>MainMenu_Help_Integration…</source>
        <translation>Integration …</translation>
    </message>
</context>
</TS>
