#include "util/zbsqlitedatabase.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>

#include <cstring>

namespace
{
bool isDamage(int rc)
{
    const int primary = rc & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}
} // namespace

ZBSqliteDatabase::~ZBSqliteDatabase()
{
    close();
}

void ZBSqliteDatabase::close()
{
    m_statements.clear();
    if (m_db)
    {
        sqlite3_close_v2(m_db);
        m_db = nullptr;
    }
}

bool ZBSqliteDatabase::noteResult(int rc)
{
    if (rc == SQLITE_OK || rc == SQLITE_DONE || rc == SQLITE_ROW)
        return true;
    m_lastError = m_db ? QString::fromUtf8(sqlite3_errmsg(m_db)) : QString::fromUtf8(sqlite3_errstr(rc));
    m_lastErrorWasDamage = m_lastErrorWasDamage || isDamage(rc);
    return false;
}

bool ZBSqliteDatabase::openFile()
{
    const QByteArray nativePath = QFile::encodeName(m_path);
    // One thread at a time uses a connection (the store's reader, then the
    // GUI thread), so SQLite's own lock on every call is not needed: at a
    // million tracks it was 8 % of reading the store.
    const int rc = sqlite3_open_v2(nativePath.constData(), &m_db,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK)
    {
        noteResult(rc);
        close();
        return false;
    }
    sqlite3_extended_result_codes(m_db, 1);
    // Another process (the command-line tool, a second start) may hold the
    // write lock for a moment; wait rather than fail.
    sqlite3_busy_timeout(m_db, 5000);
    // journal_mode is the first statement that reads the file header, so a
    // file that is not a database at all is caught here.
    return exec(QStringLiteral("PRAGMA journal_mode=WAL")) && exec(QStringLiteral("PRAGMA synchronous=FULL"))
           && exec(QStringLiteral("PRAGMA foreign_keys=ON"));
}

bool ZBSqliteDatabase::openForReading(const QString &path)
{
    close();
    m_path = path;
    const QByteArray nativePath = QFile::encodeName(path);
    const int rc = sqlite3_open_v2(nativePath.constData(), &m_db, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK)
    {
        noteResult(rc);
        close();
        return false;
    }
    sqlite3_busy_timeout(m_db, 200);
    return true;
}

ZBSqliteDatabase::OpenStatus ZBSqliteDatabase::openImpl(const QString &path, const PrepareFn &prepare)
{
    close();
    m_path = path;
    m_quarantinedPath.clear();
    m_lastError.clear();
    m_lastErrorWasDamage = false;

    if (openFile() && prepare(*this))
        return OpenStatus::Opened;
    if (!m_lastErrorWasDamage)
    {
        close();
        return OpenStatus::Failed;
    }

    const QString damage = m_lastError;
    close();
    if (!quarantine())
        return OpenStatus::Failed;
    m_lastError.clear();
    m_lastErrorWasDamage = false;
    if (openFile() && prepare(*this))
    {
        m_lastError = damage;
        return OpenStatus::RecoveredFromDamage;
    }
    close();
    return OpenStatus::Failed;
}

bool ZBSqliteDatabase::quarantine()
{
    // The damaged file is the user's only copy of their data: move it, with
    // its journal, to a name of its own and never write over it.
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString target = m_path + QStringLiteral(".damaged-") + stamp;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = m_path + QStringLiteral(".damaged-") + stamp + QLatin1Char('-') + QString::number(n);
    if (!QFile::rename(m_path, target))
    {
        m_lastError = QStringLiteral("could not move the damaged file %1 aside").arg(m_path);
        return false;
    }
    for (const QString &suffix : {QStringLiteral("-wal"), QStringLiteral("-shm")})
    {
        if (QFileInfo::exists(m_path + suffix))
            QFile::rename(m_path + suffix, target + suffix);
    }
    m_quarantinedPath = target;
    return true;
}

bool ZBSqliteDatabase::exec(const QString &sql)
{
    if (!m_db)
        return false;
    char *message = nullptr;
    const int rc = sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &message);
    if (message)
        sqlite3_free(message);
    return noteResult(rc);
}

ZBSqliteStatement *ZBSqliteDatabase::statement(const char *sql)
{
    for (auto &entry : m_statements)
    {
        if (entry.first == sql || std::strcmp(entry.first, sql) == 0)
        {
            entry.second->reset();
            return entry.second.get();
        }
    }
    sqlite3_stmt *stmt = nullptr;
    const int rc = sqlite3_prepare_v3(m_db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt, nullptr);
    if (!noteResult(rc))
        return nullptr;
    m_statements.emplace_back(sql, std::make_unique<ZBSqliteStatement>(this, stmt));
    return m_statements.back().second.get();
}

bool ZBSqliteDatabase::begin()
{
    return exec(QStringLiteral("BEGIN IMMEDIATE"));
}

bool ZBSqliteDatabase::commit()
{
    return exec(QStringLiteral("COMMIT"));
}

void ZBSqliteDatabase::rollback()
{
    if (m_db && !sqlite3_get_autocommit(m_db))
        sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
}

int ZBSqliteDatabase::userVersion()
{
    ZBSqliteStatement *stmt = statement("PRAGMA user_version");
    if (!stmt || !stmt->step())
        return -1;
    const int version = int(stmt->int64(0));
    stmt->reset();
    return version;
}

QString ZBSqliteDatabase::integrityCheck()
{
    ZBSqliteStatement *stmt = statement("PRAGMA integrity_check");
    if (!stmt)
        return m_lastError;
    QStringList problems;
    while (stmt->step())
        problems << stmt->text(0);
    if (!stmt->ok())
        return m_lastError;
    return problems.join(QLatin1Char('\n'));
}

ZBSqliteStatement::ZBSqliteStatement(ZBSqliteDatabase *db, sqlite3_stmt *stmt)
    : m_db(db)
    , m_stmt(stmt)
{
}

ZBSqliteStatement::~ZBSqliteStatement()
{
    sqlite3_finalize(m_stmt);
}

void ZBSqliteStatement::bindNull(int index)
{
    sqlite3_bind_null(m_stmt, index);
}

void ZBSqliteStatement::bind(int index, qint64 value)
{
    sqlite3_bind_int64(m_stmt, index, value);
}

void ZBSqliteStatement::bind(int index, double value)
{
    sqlite3_bind_double(m_stmt, index, value);
}

void ZBSqliteStatement::bind(int index, const QString &value)
{
    if (value.isNull())
    {
        sqlite3_bind_null(m_stmt, index);
        return;
    }
    const QByteArray utf8 = value.toUtf8();
    sqlite3_bind_text(m_stmt, index, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

void ZBSqliteStatement::bind(int index, const QByteArray &value)
{
    if (value.isNull())
    {
        sqlite3_bind_null(m_stmt, index);
        return;
    }
    sqlite3_bind_blob(m_stmt, index, value.constData(), int(value.size()), SQLITE_TRANSIENT);
}

bool ZBSqliteStatement::step()
{
    const int rc = sqlite3_step(m_stmt);
    if (rc == SQLITE_ROW)
        return true;
    m_ok = m_db->noteResult(rc);
    return false;
}

bool ZBSqliteStatement::run()
{
    step();
    const bool ok = m_ok;
    reset();
    return ok;
}

void ZBSqliteStatement::reset()
{
    sqlite3_reset(m_stmt);
    sqlite3_clear_bindings(m_stmt);
    m_ok = true;
}

bool ZBSqliteStatement::isNull(int column) const
{
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

qint64 ZBSqliteStatement::int64(int column) const
{
    return sqlite3_column_int64(m_stmt, column);
}

double ZBSqliteStatement::real(int column) const
{
    return sqlite3_column_double(m_stmt, column);
}

QString ZBSqliteStatement::text(int column) const
{
    if (sqlite3_column_type(m_stmt, column) == SQLITE_NULL)
        return QString();
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    const int size = sqlite3_column_bytes(m_stmt, column);
    if (size == 0)
        return QString(QLatin1String(""));
    return QString::fromUtf8(data, size);
}

QByteArrayView ZBSqliteStatement::utf8(int column) const
{
    // SQLite gives no text for NULL, and an empty one for ''; asking for the
    // type first would be a third call per value.
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    if (!data)
        return QByteArrayView();
    return QByteArrayView(data, sqlite3_column_bytes(m_stmt, column));
}

QByteArray ZBSqliteStatement::blob(int column) const
{
    if (sqlite3_column_type(m_stmt, column) == SQLITE_NULL)
        return QByteArray();
    const auto *data = static_cast<const char *>(sqlite3_column_blob(m_stmt, column));
    const int size = sqlite3_column_bytes(m_stmt, column);
    return size == 0 ? QByteArray("") : QByteArray(data, size);
}
