#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

class ZBSqliteStatement;

// A SQLite file opened the way both of the program's stores want it: WAL
// journal, full sync on commit (a committed change survives a power cut), and a
// damaged file moved aside instead of being overwritten.
class ZBSqliteDatabase
{
public:
    enum class OpenStatus
    {
        Opened,
        // The file was unreadable as a database: it now sits beside the new,
        // empty one under quarantinedPath().
        RecoveredFromDamage,
        Failed
    };

    ZBSqliteDatabase() = default;
    ~ZBSqliteDatabase();
    ZBSqliteDatabase(const ZBSqliteDatabase &) = delete;
    ZBSqliteDatabase &operator=(const ZBSqliteDatabase &) = delete;

    // Opens (creating when missing) and lets `prepare` build or check the
    // schema and read the content; a prepare that meets a damaged file makes
    // the file be moved aside and prepare run again on a fresh one.
    template <typename Prepare>
    OpenStatus open(const QString &path, Prepare &&prepare)
    {
        return openImpl(path, [&prepare](ZBSqliteDatabase &db) { return prepare(db); });
    }

    // An existing file, for a quick look only: never created, never moved
    // aside, no journal set up. False when it is missing or unreadable.
    bool openForReading(const QString &path);
    void close();
    bool isOpen() const { return m_db != nullptr; }
    QString path() const { return m_path; }
    QString quarantinedPath() const { return m_quarantinedPath; }
    QString lastError() const { return m_lastError; }
    // True when the last failure was SQLite reporting a damaged or foreign file.
    bool lastErrorWasDamage() const { return m_lastErrorWasDamage; }

    bool exec(const QString &sql);
    // Cached per SQL text for the life of the connection.
    ZBSqliteStatement *statement(const char *sql);

    bool begin();
    bool commit();
    void rollback();

    int userVersion();
    // "ok", or SQLite's own description of what is wrong.
    QString integrityCheck();

    bool noteResult(int rc);
    sqlite3 *handle() const { return m_db; }

private:
    using PrepareFn = std::function<bool(ZBSqliteDatabase &)>;
    OpenStatus openImpl(const QString &path, const PrepareFn &prepare);
    bool openFile();
    bool quarantine();

    sqlite3 *m_db = nullptr;
    QString m_path;
    QString m_quarantinedPath;
    QString m_lastError;
    bool m_lastErrorWasDamage = false;
    std::vector<std::pair<const char *, std::unique_ptr<ZBSqliteStatement>>> m_statements;
};

// A prepared statement; binding is 1-based as in SQLite, columns 0-based.
class ZBSqliteStatement
{
public:
    ZBSqliteStatement(ZBSqliteDatabase *db, sqlite3_stmt *stmt);
    ~ZBSqliteStatement();

    void bindNull(int index);
    void bind(int index, qint64 value);
    void bind(int index, double value);
    // A null QString binds NULL, an empty one binds '' — the library tells them
    // apart (a local track's URL is '').
    void bind(int index, const QString &value);
    void bind(int index, const QByteArray &value);

    // True while a row is available; false at the end or on error (see ok()).
    bool step();
    bool run();
    void reset();
    bool ok() const { return m_ok; }

    bool isNull(int column) const;
    qint64 int64(int column) const;
    double real(int column) const;
    QString text(int column) const;
    // The text's UTF-8 as SQLite holds it, valid until the next step; null
    // for NULL.
    QByteArrayView utf8(int column) const;
    QByteArray blob(int column) const;

private:
    ZBSqliteDatabase *m_db;
    sqlite3_stmt *m_stmt;
    bool m_ok = true;
};
