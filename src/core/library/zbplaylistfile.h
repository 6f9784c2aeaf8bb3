#pragma once

#include <QString>
#include <QStringList>
#include <QVariantMap>

class ZBLibraryController;
class ZBPlaylist;

// Playlist files ("nvp"): a plain playlist with its tracks, or a smart list
// with its filter, written as an XML property list whose root dictionary
// another machine reads back into its own library.
//
// What the window does with these files, and the localisation keys it uses:
//   export command    save panel titled SavePanelTitleKey ("savePanelExportPlaylist"),
//                     proposing proposedFileName(), extension Extension; then
//                     exportPlaylist(), whose failure the window does not report
//   import command    open panel titled OpenPanelTitleKey ("openPanelImportPlaylist"),
//                     one file of type Extension; then importPlaylistFile()
//   failed import     ImportResult::errorAlertCount() times the alert titled
//                     ImportErrorTitleKey ("importPlaylistErrorMsg"), message
//                     ImportErrorInfoKey ("importPlaylistErrorInfo"), one button
//                     ImportErrorButtonKey ("Button_OK_Title"): twice for an
//                     unreadable file, once for a root dictionary that lacks a
//                     required key
//   after an import   rebuild and expand the tree, select ImportResult::playlistUUID
class ZBPlaylistFile
{
public:
    ZBPlaylistFile() = delete;

    static const QString Extension;
    static const QString SavePanelTitleKey;
    static const QString OpenPanelTitleKey;
    static const QString ImportErrorTitleKey;
    static const QString ImportErrorInfoKey;
    static const QString ImportErrorButtonKey;

    // The list's name as a file name: "<name>.nvp", with the characters a
    // file name cannot hold replaced.
    static QString proposedFileName(const ZBPlaylist *playlist);

    // The root dictionary of the list's file. Tracks follow the order the
    // library returns the members in; the list's own item order is not kept.
    static QVariantMap dictionaryForPlaylist(const ZBLibraryController &library, const ZBPlaylist *playlist);
    // Writes the file in place (not through a temporary file). False, with
    // `error` saying why, when it could not be written.
    static bool exportPlaylist(const ZBLibraryController &library, const ZBPlaylist *playlist, const QString &path,
                               QString *error = nullptr);

    struct ImportResult
    {
        // The new list; empty when nothing was created.
        QString playlistUUID;
        // The file could not be read as a dictionary. The import then went
        // on with an empty one, which lacks every key: hence two alerts.
        bool unreadable = false;
        // Required root keys that were absent or held no usable value.
        QStringList missingKeys;
        // Why nothing was created, in plain words for the log and norvikctl;
        // the alert itself shows only the localised texts.
        QString error;
        // Passed over without an alert: track entries skipped for a missing
        // key, entries beyond a gap in the numbering, a filter that does not
        // parse, a library that could not be saved.
        QStringList notes;
        int tracksInList = 0;
        int tracksNewToLibrary = 0;

        bool succeeded() const { return !playlistUUID.isEmpty(); }
        int errorAlertCount() const { return unreadable ? 2 : (succeeded() ? 0 : 1); }
    };

    // Reads one file and creates the list it describes in the library.
    static ImportResult importPlaylistFile(ZBLibraryController &library, const QString &path);
    // The same for a root dictionary already read.
    static ImportResult importPlaylistDictionary(ZBLibraryController &library, const QVariantMap &root);
};
