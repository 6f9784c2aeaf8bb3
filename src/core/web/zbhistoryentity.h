#pragma once

#include <QDateTime>
#include <QString>

// One record of the URL history, as ZBHistory hands it out: a copy, so a list
// shown in a menu or a drop-down stays valid after the store changes. rowId
// names the stored record for the calls that change or delete it.
struct ZBHistoryEntity
{
    qint64 rowId = 0;
    // The URL, as typed or as loaded.
    QString HistoryItem;
    // Last time the URL was typed, chosen or loaded.
    QDateTime LastAccessDate;
    // A page with this URL actually loaded (or failed to) and got a title.
    bool ActualPage = false;
    QString PageTitle;
    // Made from the address field (Return or Go).
    bool HandWrited = false;

    bool isValid() const { return rowId > 0; }
};
