#include "library/zbtrackremoval.h"

#include "settings/zbsettings.h"

ZBTrackRemoval ZBTrackRemoval::plan(bool fromPlainPlaylist, int viewMode, const ZBItemList &selection,
                                    const ZBSettings &settings)
{
    ZBTrackRemoval removal;
    if (fromPlainPlaylist && viewMode != 2 && viewMode != 3)
    {
        removal.scope = Scope::Playlist;
        removal.confirm = !settings.option_DontAskMeAgainRemoveItemFromPlaylist;
        removal.files = FileQuestion::Keep;
        return removal;
    }
    removal.scope = Scope::Library;
    removal.confirm = !settings.option_DontAskMeAgainRemoveItemFromLibrary;
    if (settings.option_DontAskMeAgainMoveToTrashOrKeepFile)
        removal.files = settings.option_alwaysMoveFileToTrash ? FileQuestion::Trash : FileQuestion::Keep;
    else if (selection.size() == 1 && !selection.first()->isValid().value_or(true))
        // Its file is already gone: there is nothing to keep or throw away.
        removal.files = FileQuestion::Keep;
    else
        removal.files = FileQuestion::Ask;
    return removal;
}
