#pragma once

#include <QString>

#include "library/zbitem.h"

// The search field's filter: a track matches when its name, its URL or its
// type contains the text, ignoring case and accents.
class ZBTrackSearch
{
public:
    static QString request(const QString &text);
    // All of `tracks` for an empty text; otherwise those that match, in order.
    static ZBItemList filter(const ZBItemList &tracks, const QString &text);
};
