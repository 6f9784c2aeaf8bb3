#pragma once

#include <QList>
#include <QString>

#include <functional>

#include "util/zbsqlitedatabase.h"
#include "web/zbhistoryentity.h"

// The browser's URL history, kept in "NVKHistory.sqlite" beside the library.
// Every record is loaded at open, so the address field's completion and the
// History menu never wait for the disk; each call that changes the history is
// one transaction.
//
// The history is convenient, not precious: a file that cannot be read is moved
// aside (never deleted) and a fresh history started, and when no file can be
// used at all the history lives in memory until the program quits. Either way
// the result of openStore() carries a text for the user.
class ZBHistory
{
public:
    static const QString HistoryFileName;
    // The History menu lists this many pages at most.
    static constexpr int HistoryMenuLimit = 10;

    struct OpenResult
    {
        // The history file is in use (possibly a fresh one); false when the
        // history is kept in memory only.
        bool ok = false;
        // The old file could not be read and now sits at quarantinedPath.
        bool recoveredFromDamage = false;
        QString quarantinedPath;
        // What went wrong, for the log and the message.
        QString error;
        // Localised text to show; empty when there is nothing to tell.
        QString message;
    };

    // `folder` holds the history file; empty means the library's folder
    // (ZBLibraryController::applicationSupportFolder()).
    explicit ZBHistory(const QString &folder = QString());
    ~ZBHistory();
    ZBHistory(const ZBHistory &) = delete;
    ZBHistory &operator=(const ZBHistory &) = delete;

    // Opens the store now; otherwise the first query or change opens it.
    OpenResult openStore();
    const OpenResult &openResult() const { return m_openResult; }
    bool isOpen() const { return m_opened; }
    QString filePath() const;

    // Reuses the first record whose URL begins with `url` (see
    // getHistoryItemByName) or adds one; sets its URL, flag and date.
    bool addHistoryItem(const QString &url, bool handWrited);
    // The same lookup and reuse for a page that loaded: URL, date, title, and
    // marks it as an actual page.
    bool addHistoryItemWithURL(const QString &url, const QString &pageTitle);
    // Sets the record's "LastAccessDate" to now and nothing else.
    bool touchHistoryItem(const ZBHistoryEntity &record);
    // False for a record that is not (or no longer) stored.
    bool removeItemFromHistory(const ZBHistoryEntity &record);
    // Deletes every record in one transaction.
    bool clearHistory();

    // Most recently used first.
    QList<ZBHistoryEntity> getAllHistoryItems();
    QList<ZBHistoryEntity> getAllActualPages();
    QList<ZBHistoryEntity> getAllHandWritedURLs();
    // The pages of the History menu: the most recent actual pages.
    QList<ZBHistoryEntity> historyMenuItems();
    // Records whose URL begins with `text`, ignoring case and diacritics, in
    // the order they were first stored; an empty text matches nothing.
    QList<ZBHistoryEntity> getHistoryItemByName(const QString &text);

private:
    struct Row
    {
        ZBHistoryEntity entity;
        // HistoryItem folded for case and diacritics.
        QString folded;
    };
    enum Filter
    {
        AllRecords,
        ActualPages,
        HandWritedURLs,
    };

    void ensureOpen();
    bool prepare(ZBSqliteDatabase &db);
    bool load(ZBSqliteDatabase &db);
    bool openInMemory();
    QList<ZBHistoryEntity> sorted(Filter filter);
    int indexOfRow(qint64 rowId) const;
    QDateTime nextAccessDate();
    // Writes `entity` (inserting it when it has no rowId yet) in its own
    // transaction and, once committed, into the loaded records.
    bool store(ZBHistoryEntity entity);
    bool runInTransaction(const std::function<bool()> &work);

    QString m_folder;
    ZBSqliteDatabase m_db;
    bool m_opened = false;
    bool m_tried = false;
    // The file was written by a newer program and is left as it is.
    bool m_newerFormat = false;
    OpenResult m_openResult;
    QList<Row> m_rows;
    QDateTime m_lastAccessDate;
};
