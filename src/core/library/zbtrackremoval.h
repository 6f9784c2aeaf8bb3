#pragma once

#include "library/zbitem.h"

class ZBSettings;

// What removing the selected tracks means and which questions it takes. From
// a plain playlist the tracks only leave the list; anywhere else (a smart or
// standard list, search results, a page's captured items) they leave the
// library, and their files may go to the Trash.
class ZBTrackRemoval
{
public:
    enum class Scope
    {
        Playlist,
        Library
    };
    enum class FileQuestion
    {
        // Nothing to decide: the files stay.
        Keep,
        // The remembered choice: to the Trash.
        Trash,
        // Ask the user.
        Ask
    };

    Scope scope = Scope::Library;
    // Whether the removal itself must be confirmed.
    bool confirm = true;
    FileQuestion files = FileQuestion::Keep;

    // `fromPlainPlaylist`: the shown list is a plain playlist; `viewMode`:
    // the content mode (2 search results and 3 captured items count as the
    // library).
    static ZBTrackRemoval plan(bool fromPlainPlaylist, int viewMode, const ZBItemList &selection,
                               const ZBSettings &settings);
};
