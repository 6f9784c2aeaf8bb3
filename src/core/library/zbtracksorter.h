#pragma once

#include <optional>
#include <vector>

#include "library/zbitem.h"

class ZBObjectContext;

// Orders tracks the way the track table shows them (see
// ZBLibraryController::sortList()). The plain sort compares each track's
// value as the table reads it; the fast sort gives the same order from keys
// worked out once: every track's place in the collation of a text field,
// kept by the library until a track changes, and the numbers and dates as
// integers, sorted by a stable radix sort.
class ZBTrackSorter
{
public:
    static ZBItemList sort(const ZBItemList &tracks, const QString &key, bool ascend);
    static ZBItemList plainSort(const ZBItemList &tracks, const QString &key, bool ascend);
    // Dates and counts sort inverted: ascend puts the newest and the most first.
    static bool isInvertedSortKey(const QString &key);
    // Works out and keeps the places of `key` ahead of the first sort by it.
    // Only where nothing else reads or writes the library meanwhile (its
    // reader thread, before the window has it): it neither waits for nor
    // stops a background read.
    static void prepare(ZBObjectContext &context, const QString &key);

private:
    static std::optional<ZBItemList> fastSort(const ZBItemList &tracks, const QString &key, bool ascend);
    // Every track's place in the order of a number or date key, by serial,
    // kept by the context until a track changes; null when the key is not
    // one of them.
    static const std::vector<quint32> *valueRanks(ZBObjectContext &context, const QString &key);
};
