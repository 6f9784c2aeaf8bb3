#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

class ZBSqliteStatement;

// Rows of a statement copied out of SQLite's buffers, a batch at a time.
//
// Reading a large library is two jobs of about equal cost: stepping the
// statement, and turning its UTF-8 into the records' strings (with an
// allocation each). Copied rows let one thread do the first while another
// does the second, on one connection and so within one read transaction.
class ZBSqliteRows
{
public:
    // `textColumns`: a bit per column that is read as text; the others are
    // read as integers.
    ZBSqliteRows(int columnCount, quint64 textColumns);

    // Steps `stmt` to its end and hands its rows to `consume` in batches, in
    // their order. With `onSecondThread`, `consume` runs on a thread of its
    // own while the statement goes on; it has returned for the last batch
    // when this returns. False when stepping failed (see the statement's
    // ok()); the rows before the failure were consumed.
    static bool readAll(ZBSqliteStatement &stmt, int columnCount, quint64 textColumns, bool onSecondThread,
                        const std::function<void(const ZBSqliteRows &)> &consume);

    qsizetype size() const { return m_rows; }
    void clear();
    // Copies the statement's current row.
    void append(const ZBSqliteStatement &stmt);

    bool isNull(qsizetype row, int column) const { return cell(row, column).size < 0; }
    qint64 int64(qsizetype row, int column) const { return cell(row, column).value; }
    // As ZBSqliteStatement::text gives it: null for NULL, empty but not null
    // for ''.
    QString text(qsizetype row, int column) const;

private:
    struct Cell
    {
        // The integer, or where a text starts in m_bytes.
        qint64 value = 0;
        // A text's length in bytes; -1 for NULL.
        qint32 size = 0;
    };

    const Cell &cell(qsizetype row, int column) const { return m_cells[size_t(row * m_columnCount + column)]; }

    int m_columnCount;
    quint64 m_textColumns;
    qsizetype m_rows = 0;
    std::vector<Cell> m_cells;
    QByteArray m_bytes;
};
