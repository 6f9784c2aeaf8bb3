#include "web/zbhistory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <sqlite3.h>

#include <algorithm>

#include "library/zblibrarycontroller.h"
#include "localization/zblocalizer.h"
#include "predicate/zbtextfold.h"

Q_LOGGING_CATEGORY(lcHistory, "norvik.history")

const QString ZBHistory::HistoryFileName = QStringLiteral("NVKHistory.sqlite");

namespace
{
constexpr int SchemaVersion = 1;

const char *const SchemaSql = R"SQL(
CREATE TABLE IF NOT EXISTS History(
    Z_PK INTEGER PRIMARY KEY, HistoryItem TEXT NOT NULL, LastAccessDate INTEGER,
    ActualPage INTEGER NOT NULL DEFAULT 0, PageTitle TEXT, HandWrited INTEGER NOT NULL DEFAULT 0);
)SQL";

QString fold(const QString &text)
{
    return ZBTextFold::fold(text, true, true);
}

// The history is not worth stopping for, but it is the user's: a file that
// cannot be used goes to a name of its own and is never written again.
QString moveAside(const QString &path)
{
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = path + QStringLiteral(".damaged-") + stamp;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = path + QStringLiteral(".damaged-") + stamp + QLatin1Char('-') + QString::number(n);
    if (!QFile::rename(path, target))
        return QString();
    for (const QString &suffix : {QStringLiteral("-wal"), QStringLiteral("-shm")})
    {
        if (QFileInfo::exists(path + suffix))
            QFile::rename(path + suffix, target + suffix);
    }
    return target;
}
} // namespace

ZBHistory::ZBHistory(const QString &folder)
    : m_folder(folder)
{
}

ZBHistory::~ZBHistory() = default;

QString ZBHistory::filePath() const
{
    const QString dir = m_folder.isEmpty() ? ZBLibraryController::applicationSupportFolder() : m_folder;
    return dir.isEmpty() ? QString() : QDir(dir).filePath(HistoryFileName);
}

void ZBHistory::ensureOpen()
{
    if (!m_tried)
        openStore();
}

ZBHistory::OpenResult ZBHistory::openStore()
{
    m_tried = true;
    m_opened = false;
    m_newerFormat = false;
    m_rows.clear();
    m_lastAccessDate = QDateTime();
    OpenResult result;

    const QString path = filePath();
    auto prepareFn = [this](ZBSqliteDatabase &db) { return prepare(db); };
    if (path.isEmpty())
        result.error = QStringLiteral("Can't find application support folder");
    else if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        result.error = QStringLiteral("Cannot create the folder %1").arg(QFileInfo(path).absolutePath());
    else
    {
        const auto status = m_db.open(path, prepareFn);
        if (status != ZBSqliteDatabase::OpenStatus::Failed)
        {
            result.ok = true;
            if (status == ZBSqliteDatabase::OpenStatus::RecoveredFromDamage)
            {
                result.recoveredFromDamage = true;
                result.quarantinedPath = m_db.quarantinedPath();
                result.error = m_db.lastError();
            }
        }
        else if (m_newerFormat)
            result.error = QStringLiteral("%1 was written by a newer version of Norvik Player").arg(path);
        else
        {
            // Not damage as SQLite sees it (no permission, a read-only file, a
            // folder in the way): the history still starts afresh beside it.
            result.error = m_db.lastError();
            m_db.close();
            const QString aside = QFileInfo::exists(path) ? moveAside(path) : QString();
            if (!aside.isEmpty() && m_db.open(path, prepareFn) == ZBSqliteDatabase::OpenStatus::Opened)
            {
                result.ok = true;
                result.recoveredFromDamage = true;
                result.quarantinedPath = aside;
            }
        }
    }

    if (result.recoveredFromDamage)
    {
        qCWarning(lcHistory) << "The history could not be read and was moved to" << result.quarantinedPath << ":"
                             << result.error;
        result.message = ZBLocalizer::localizedStringForKey(QStringLiteral("alertHistoryDamagedMessage"))
                             .arg(result.quarantinedPath, result.error);
    }
    else if (!result.ok)
    {
        qCWarning(lcHistory) << "The history cannot be opened, keeping it in memory:" << result.error;
        result.message =
            ZBLocalizer::localizedStringForKey(QStringLiteral("alertHistoryCannotOpenMessage")).arg(result.error);
        openInMemory();
    }
    m_opened = result.ok;
    m_openResult = result;
    return result;
}

bool ZBHistory::openInMemory()
{
    m_rows.clear();
    return m_db.open(QStringLiteral(":memory:"), [this](ZBSqliteDatabase &db) { return prepare(db); })
           == ZBSqliteDatabase::OpenStatus::Opened;
}

bool ZBHistory::prepare(ZBSqliteDatabase &db)
{
    m_rows.clear();
    // SQLite quietly opens a file it may not write read-only; the history
    // would then lose every change without a word.
    if (sqlite3_db_readonly(db.handle(), "main") == 1)
    {
        db.noteResult(SQLITE_READONLY);
        return false;
    }
    const int version = db.userVersion();
    if (version < 0)
        return false;
    if (version > SchemaVersion)
    {
        m_newerFormat = true;
        db.noteResult(SQLITE_ERROR);
        return false;
    }
    if (version < SchemaVersion)
    {
        if (!db.begin())
            return false;
        if (!db.exec(QString::fromUtf8(SchemaSql))
            || !db.exec(QStringLiteral("PRAGMA user_version = %1").arg(SchemaVersion)) || !db.commit())
        {
            db.rollback();
            return false;
        }
    }
    return load(db);
}

bool ZBHistory::load(ZBSqliteDatabase &db)
{
    ZBSqliteStatement *stmt = db.statement(
        "SELECT Z_PK, HistoryItem, LastAccessDate, ActualPage, PageTitle, HandWrited FROM History ORDER BY Z_PK");
    if (!stmt)
        return false;
    while (stmt->step())
    {
        Row row;
        row.entity.rowId = stmt->int64(0);
        row.entity.HistoryItem = stmt->text(1);
        if (!stmt->isNull(2))
            row.entity.LastAccessDate = QDateTime::fromMSecsSinceEpoch(stmt->int64(2), Qt::UTC);
        row.entity.ActualPage = stmt->int64(3) != 0;
        row.entity.PageTitle = stmt->text(4);
        row.entity.HandWrited = stmt->int64(5) != 0;
        row.folded = fold(row.entity.HistoryItem);
        if (row.entity.LastAccessDate > m_lastAccessDate)
            m_lastAccessDate = row.entity.LastAccessDate;
        m_rows.append(row);
    }
    if (stmt->ok())
        return true;
    m_rows.clear();
    return false;
}

QDateTime ZBHistory::nextAccessDate()
{
    // Dates are the order of the drop-down and the History menu; two uses in
    // the same millisecond must still come out in the order they happened.
    QDateTime now = QDateTime::currentDateTimeUtc();
    if (m_lastAccessDate.isValid() && now <= m_lastAccessDate)
        now = m_lastAccessDate.addMSecs(1);
    m_lastAccessDate = now;
    return now;
}

int ZBHistory::indexOfRow(qint64 rowId) const
{
    for (int i = 0; i < m_rows.size(); ++i)
    {
        if (m_rows[i].entity.rowId == rowId)
            return i;
    }
    return -1;
}

bool ZBHistory::runInTransaction(const std::function<bool()> &work)
{
    if (!m_db.isOpen() || !m_db.begin())
    {
        qCWarning(lcHistory) << "Cannot change the history:" << m_db.lastError();
        return false;
    }
    if (work() && m_db.commit())
        return true;
    qCWarning(lcHistory) << "Changing the history failed:" << m_db.lastError();
    m_db.rollback();
    return false;
}

bool ZBHistory::store(ZBHistoryEntity entity)
{
    ensureOpen();
    const bool inserting = !entity.isValid();
    const bool done = runInTransaction([this, &entity, inserting]() {
        ZBSqliteStatement *stmt =
            inserting ? m_db.statement("INSERT INTO History(HistoryItem, LastAccessDate, ActualPage, PageTitle, "
                                       "HandWrited) VALUES(?1, ?2, ?3, ?4, ?5)")
                      : m_db.statement("UPDATE History SET HistoryItem = ?1, LastAccessDate = ?2, ActualPage = ?3, "
                                       "PageTitle = ?4, HandWrited = ?5 WHERE Z_PK = ?6");
        if (!stmt)
            return false;
        stmt->bind(1, entity.HistoryItem);
        if (entity.LastAccessDate.isValid())
            stmt->bind(2, entity.LastAccessDate.toMSecsSinceEpoch());
        else
            stmt->bindNull(2);
        stmt->bind(3, qint64(entity.ActualPage));
        stmt->bind(4, entity.PageTitle);
        stmt->bind(5, qint64(entity.HandWrited));
        if (!inserting)
            stmt->bind(6, entity.rowId);
        if (!stmt->run())
            return false;
        if (inserting)
            entity.rowId = sqlite3_last_insert_rowid(m_db.handle());
        return true;
    });
    if (!done)
        return false;
    Row row{entity, fold(entity.HistoryItem)};
    const int at = indexOfRow(entity.rowId);
    if (at < 0)
        m_rows.append(row);
    else
        m_rows[at] = row;
    return true;
}

bool ZBHistory::addHistoryItem(const QString &url, bool handWrited)
{
    const QList<ZBHistoryEntity> matches = getHistoryItemByName(url);
    ZBHistoryEntity record = matches.isEmpty() ? ZBHistoryEntity() : matches.first();
    record.HistoryItem = url;
    record.HandWrited = handWrited;
    record.LastAccessDate = nextAccessDate();
    return store(record);
}

bool ZBHistory::addHistoryItemWithURL(const QString &url, const QString &pageTitle)
{
    const QList<ZBHistoryEntity> matches = getHistoryItemByName(url);
    ZBHistoryEntity record = matches.isEmpty() ? ZBHistoryEntity() : matches.first();
    record.HistoryItem = url;
    record.LastAccessDate = nextAccessDate();
    record.PageTitle = pageTitle;
    record.ActualPage = true;
    return store(record);
}

bool ZBHistory::touchHistoryItem(const ZBHistoryEntity &record)
{
    ensureOpen();
    const int at = indexOfRow(record.rowId);
    if (!record.isValid() || at < 0)
        return false;
    ZBHistoryEntity stored = m_rows[at].entity;
    stored.LastAccessDate = nextAccessDate();
    return store(stored);
}

bool ZBHistory::removeItemFromHistory(const ZBHistoryEntity &record)
{
    ensureOpen();
    const int at = indexOfRow(record.rowId);
    if (!record.isValid() || at < 0)
        return false;
    const bool done = runInTransaction([this, &record]() {
        ZBSqliteStatement *stmt = m_db.statement("DELETE FROM History WHERE Z_PK = ?1");
        if (!stmt)
            return false;
        stmt->bind(1, record.rowId);
        return stmt->run();
    });
    if (done)
        m_rows.removeAt(at);
    return done;
}

bool ZBHistory::clearHistory()
{
    ensureOpen();
    const bool done = runInTransaction([this]() { return m_db.exec(QStringLiteral("DELETE FROM History")); });
    if (done)
        m_rows.clear();
    return done;
}

QList<ZBHistoryEntity> ZBHistory::sorted(Filter filter)
{
    ensureOpen();
    QList<ZBHistoryEntity> records;
    for (const Row &row : std::as_const(m_rows))
    {
        if ((filter == ActualPages && !row.entity.ActualPage) || (filter == HandWritedURLs && !row.entity.HandWrited))
            continue;
        records.append(row.entity);
    }
    std::sort(records.begin(), records.end(), [](const ZBHistoryEntity &a, const ZBHistoryEntity &b) {
        if (a.LastAccessDate != b.LastAccessDate)
            return a.LastAccessDate > b.LastAccessDate;
        return a.rowId > b.rowId;
    });
    return records;
}

QList<ZBHistoryEntity> ZBHistory::getAllHistoryItems()
{
    return sorted(AllRecords);
}

QList<ZBHistoryEntity> ZBHistory::getAllActualPages()
{
    return sorted(ActualPages);
}

QList<ZBHistoryEntity> ZBHistory::getAllHandWritedURLs()
{
    return sorted(HandWritedURLs);
}

QList<ZBHistoryEntity> ZBHistory::historyMenuItems()
{
    return getAllActualPages().mid(0, HistoryMenuLimit);
}

QList<ZBHistoryEntity> ZBHistory::getHistoryItemByName(const QString &text)
{
    ensureOpen();
    QList<ZBHistoryEntity> matches;
    if (text.isEmpty())
        return matches;
    const QString prefix = fold(text);
    for (const Row &row : std::as_const(m_rows))
    {
        if (row.folded.startsWith(prefix))
            matches.append(row.entity);
    }
    return matches;
}
