<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>MainMenu</name>
    <message>
        <source>MainMenu_NorvikPlayer</source>
        <translation>Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_About Norvik Player</source>
        <translation>About Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_Preferences…</source>
        <translation>Preferences…</translation>
    </message>
    <message>
        <source>MainMenu_NorvikPlayer_Quit Norvik Player</source>
        <translation>Quit Norvik Player</translation>
    </message>
    <message>
        <source>MainMenu_File</source>
        <translation>File</translation>
    </message>
    <message>
        <source>MainMenu_File_Open…</source>
        <translation>Open…</translation>
    </message>
    <message>
        <source>MainMenu_File_Add to Library…</source>
        <translation>Add to Library…</translation>
    </message>
    <message>
        <source>MainMenu_File_New Playlist</source>
        <translation>New Playlist</translation>
    </message>
    <message>
        <source>MainMenu_File_New Smart Playlist…</source>
        <translation>New Smart Playlist…</translation>
    </message>
    <message>
        <source>MainMenu_File_New Playlist from Selection</source>
        <translation>New Playlist from Selection</translation>
    </message>
    <message>
        <source>MainMenu_File_Edit Playlist</source>
        <translation>Edit Playlist</translation>
    </message>
    <message>
        <source>MainMenu_File_Delete Playlist</source>
        <translation>Delete Playlist</translation>
    </message>
    <message>
        <source>MainMenu_File_Import Playlist…</source>
        <translation>Import Playlist…</translation>
    </message>
    <message>
        <source>MainMenu_File_Export Playlist…</source>
        <translation>Export Playlist…</translation>
    </message>
    <message>
        <source>MainMenu_File_Save Movie As…</source>
        <translation>Save Movie As…</translation>
    </message>
    <message>
        <source>MainMenu_File_Close Window</source>
        <translation>Close Window</translation>
    </message>
    <message>
        <source>MainMenu_File_Quit</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>MainMenu_Edit</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Cut</source>
        <translation>Cut</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Copy</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Paste</source>
        <translation>Paste</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Delete</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Select All</source>
        <translation>Select All</translation>
    </message>
    <message>
        <source>MainMenu_Edit_Find</source>
        <translation>Find</translation>
    </message>
    <message>
        <source>MainMenu_Track</source>
        <translation>Track</translation>
    </message>
    <message>
        <source>MainMenu_Track_Get Info</source>
        <translation>Get Info</translation>
    </message>
    <message>
        <source>MainMenu_Track_Show in File Manager</source>
        <translation>Show in File Manager</translation>
    </message>
    <message>
        <source>MainMenu_Track_Show Playing Track</source>
        <translation>Show Playing Track</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating</source>
        <translation>Rating</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_One Star</source>
        <translation>One Star</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Two Stars</source>
        <translation>Two Stars</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Three Stars</source>
        <translation>Three Stars</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Four Stars</source>
        <translation>Four Stars</translation>
    </message>
    <message>
        <source>MainMenu_Track_Rating_Five Stars</source>
        <translation>Five Stars</translation>
    </message>
    <message>
        <source>MainMenu_Playback</source>
        <translation>Playback</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Play</source>
        <translation>Play</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Stop</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Next</source>
        <translation>Next</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Previous</source>
        <translation>Previous</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat</source>
        <translation>Repeat</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_None</source>
        <translation>None</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_All</source>
        <translation>All</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Repeat_One</source>
        <translation>One</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Shuffle</source>
        <translation>Shuffle</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Volume Up</source>
        <translation>Volume Up</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Volume Down</source>
        <translation>Volume Down</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Mute</source>
        <translation>Mute</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Screenshot</source>
        <translation>Screenshot</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Screenshot Series</source>
        <translation>Screenshot Series</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Fit</source>
        <translation>Fit</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Stretch</source>
        <translation>Stretch</translation>
    </message>
    <message>
        <source>MainMenu_Playback_Original Size</source>
        <translation>Original Size</translation>
    </message>
    <message>
        <source>MainMenu_View</source>
        <translation>View</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Browser</source>
        <translation>Show Browser</translation>
    </message>
    <message>
        <source>MainMenu_View_Normal Mode</source>
        <translation>Normal Mode</translation>
    </message>
    <message>
        <source>MainMenu_View_Detach Player</source>
        <translation>Detach Player</translation>
    </message>
    <message>
        <source>MainMenu_View_Enter Full Screen</source>
        <translation>Enter Full Screen</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Fullscreen Controls</source>
        <translation>Show Fullscreen Controls</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Additional Controls</source>
        <translation>Show Additional Controls</translation>
    </message>
    <message>
        <source>MainMenu_View_Always on Top</source>
        <translation>Always on Top</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Page Resources</source>
        <translation>Show Page Resources</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Source List</source>
        <translation>Show Source List</translation>
    </message>
    <message>
        <source>MainMenu_View_Show Track List</source>
        <translation>Show Track List</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns</source>
        <translation>Columns</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Type</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Path</source>
        <translation>Path</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Time</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Rating</source>
        <translation>Rating</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Plays</source>
        <translation>Plays</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Date Added</source>
        <translation>Date Added</translation>
    </message>
    <message>
        <source>MainMenu_View_Columns_Last Played</source>
        <translation>Last Played</translation>
    </message>
    <message>
        <source>MainMenu_History</source>
        <translation>History</translation>
    </message>
    <message>
        <source>MainMenu_History_Back</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>MainMenu_History_Forward</source>
        <translation>Forward</translation>
    </message>
    <message>
        <source>MainMenu_History_Home</source>
        <translation>Home</translation>
    </message>
    <message>
        <source>MainMenu_History_Download Selected</source>
        <translation>Download Selected</translation>
    </message>
    <message>
        <source>MainMenu_History_Download All</source>
        <translation>Download All</translation>
    </message>
    <message>
        <source>MainMenu_History_Preview</source>
        <translation>Preview</translation>
    </message>
    <message>
        <source>MainMenu_History_Clear Downloads List</source>
        <translation>Clear Downloads List</translation>
    </message>
    <message>
        <source>MainMenu_History_Recent Pages</source>
        <translation>Recent Pages</translation>
    </message>
    <message>
        <source>MainMenu_History_Recent Pages_Clear History</source>
        <translation>Clear History</translation>
    </message>
    <message>
        <source>MainMenu_Window</source>
        <translation>Window</translation>
    </message>
    <message>
        <source>MainMenu_Window_Minimize</source>
        <translation>Minimize</translation>
    </message>
    <message>
        <source>MainMenu_Window_Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>MainMenu_Window_Main Window</source>
        <translation>Main Window</translation>
    </message>
    <message>
        <source>MainMenu_Help</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>MainMenu_Help_Norvik Player Help</source>
        <translation>Norvik Player Help</translation>
    </message>
    <message>
        <source>MainMenu_Help_Show Tutorial</source>
        <translation>Show Tutorial</translation>
    </message>
    <message>
        <source>MainMenu_Help_Integration…</source>
        <translation>Integration…</translation>
    </message>
</context>
</TS>
