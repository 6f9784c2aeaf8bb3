#pragma once

#include <QByteArray>
#include <QByteArrayView>
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
    // A value worked out from a text as the row is copied, on the thread that
    // steps the statement; never 0 (that stands for NULL).
    using Digest = quint64 (*)(QByteArrayView utf8);

    struct Layout
    {
        int columnCount = 0;
        // A bit per column that is read as text; the others are integers.
        quint64 textColumns = 0;
        // The text columns whose digest() is wanted.
        quint64 digestColumns = 0;
        Digest digest = nullptr;
    };

    explicit ZBSqliteRows(const Layout &layout);

    // Steps `stmt` to its end and hands its rows to `consume` in batches, in
    // their order, on the calling thread. With `onSecondThread`, the
    // statement is stepped on a thread of its own meanwhile, which must be
    // the only one using its connection until this returns. False when
    // stepping failed (see the statement's ok()); the rows before the failure
    // were consumed.
    static bool readAll(ZBSqliteStatement &stmt, const Layout &layout, bool onSecondThread,
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
    // 0 for NULL.
    quint64 digest(qsizetype row, int column) const { return cell(row, column).digest; }

private:
    struct Cell
    {
        // The integer, or where a text starts in m_bytes.
        qint64 value = 0;
        // A text's length in bytes; -1 for NULL.
        qint32 size = 0;
        quint64 digest = 0;
    };

    const Cell &cell(qsizetype row, int column) const { return m_cells[size_t(row * m_layout.columnCount + column)]; }

    Layout m_layout;
    qsizetype m_rows = 0;
    std::vector<Cell> m_cells;
    QByteArray m_bytes;
};
