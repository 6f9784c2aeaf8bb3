#include "library/zbtracksearch.h"

#include "library/zblibrarycontroller.h"
#include "library/zbsmartlistrules.h"
#include "predicate/zbpredicate.h"

QString ZBTrackSearch::request(const QString &text)
{
    const QString value = ZBSmartListRules::quoteText(text);
    return QStringLiteral("((Name CONTAINS[cd] %1) OR (URL CONTAINS[cd] %1) OR (Type CONTAINS[cd] %1))").arg(value);
}

ZBItemList ZBTrackSearch::filter(const ZBItemList &tracks, const QString &text)
{
    if (text.isEmpty())
        return tracks;
    return ZBLibraryController::filterItems(tracks, ZBPredicate::parse(request(text)));
}
