#include "util/zbsqliterows.h"

#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <thread>

#include <QScopeGuard>

#include "util/zbsqlitedatabase.h"

namespace
{
// Large enough that the threads meet rarely; a batch of tracks is about a
// megabyte.
constexpr qsizetype BatchRows = 2048;

// Batches go round between the two threads: full ones to the consumer,
// spent ones back. Three keep both threads busy.
class BatchQueue
{
public:
    void put(ZBSqliteRows *batch)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_batches.push_back(batch);
        }
        m_ready.notify_one();
    }

    // Null once closed and empty.
    ZBSqliteRows *take()
    {
        std::unique_lock lock(m_mutex);
        m_ready.wait(lock, [this]() { return !m_batches.empty() || m_closed; });
        if (m_batches.empty())
            return nullptr;
        ZBSqliteRows *batch = m_batches.front();
        m_batches.pop_front();
        return batch;
    }

    void close()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_closed = true;
        }
        m_ready.notify_one();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<ZBSqliteRows *> m_batches;
    bool m_closed = false;
};

// The C library grows the heap of a thread other than the main one (the
// player reads its library on such a thread) a page at a time, with an
// mprotect() for each page, and each of those calls holds up the page faults
// of the stepping thread: the two share one lock on the address space. Timed,
// that cost more than the second thread saved. Blocks just under the size the
// library would map on their own, allocated and freed, grow the heap in their
// steps instead; the space stays the thread's without another call.
void growHeapAhead(size_t bytes)
{
    constexpr size_t Block = 60 * 1024;
    std::vector<void *> blocks;
    blocks.reserve(bytes / Block + 1);
    for (size_t grown = 0; grown < bytes; grown += Block)
        blocks.push_back(std::malloc(Block));
    for (void *block : blocks)
        std::free(block);
}
} // namespace

ZBSqliteRows::ZBSqliteRows(const Layout &layout)
    : m_layout(layout)
{
}

void ZBSqliteRows::clear()
{
    m_rows = 0;
    m_cells.clear();
    m_bytes.resize(0);
}

void ZBSqliteRows::append(const ZBSqliteStatement &stmt)
{
    for (int column = 0; column < m_layout.columnCount; ++column)
    {
        Cell cell;
        const quint64 bit = quint64(1) << column;
        if (m_layout.textColumns & bit)
        {
            const QByteArrayView bytes = stmt.utf8(column);
            cell.value = m_bytes.size();
            cell.size = bytes.isNull() ? -1 : qint32(bytes.size());
            if (!bytes.isNull() && (m_layout.digestColumns & bit))
                cell.digest = m_layout.digest(bytes);
            m_bytes.append(bytes);
        }
        else if (stmt.isNull(column))
            cell.size = -1;
        else
            cell.value = stmt.int64(column);
        m_cells.push_back(cell);
    }
    ++m_rows;
}

QString ZBSqliteRows::text(qsizetype row, int column) const
{
    const Cell &found = cell(row, column);
    if (found.size < 0)
        return QString();
    if (found.size == 0)
        return QString(QLatin1String(""));
    return QString::fromUtf8(m_bytes.constData() + found.value, found.size);
}

bool ZBSqliteRows::readAll(ZBSqliteStatement &stmt, const Layout &layout, bool onSecondThread,
                           const std::function<void(const ZBSqliteRows &)> &consume)
{
    if (!onSecondThread)
    {
        ZBSqliteRows batch(layout);
        while (stmt.step())
        {
            batch.append(stmt);
            if (batch.size() == BatchRows)
            {
                consume(batch);
                batch.clear();
            }
        }
        if (batch.size() > 0)
            consume(batch);
        return stmt.ok();
    }

    // The records are made on the calling thread, so that they come from its
    // heap as they would without the second thread: a process that reads the
    // library again reuses the memory the last one freed.
    std::vector<ZBSqliteRows> batches(3, ZBSqliteRows(layout));
    BatchQueue full;
    BatchQueue spare;
    for (ZBSqliteRows &batch : batches)
        spare.put(&batch);
    std::thread producer([&]() {
        ZBSqliteRows *batch = spare.take();
        while (batch && stmt.step())
        {
            batch->append(stmt);
            if (batch->size() == BatchRows)
            {
                full.put(batch);
                batch = spare.take();
            }
        }
        if (batch && batch->size() > 0)
            full.put(batch);
        full.close();
    });
    // Should a record fail to be made, the producer stops at its next batch
    // and is joined before the exception goes on.
    const auto stopProducer = qScopeGuard([&]() {
        spare.close();
        producer.join();
    });
    while (ZBSqliteRows *batch = full.take())
    {
        // Roughly what the records take: a field or a string's header per
        // column, and the text again as UTF-16.
        growHeapAhead(size_t(batch->size() * layout.columnCount) * 32 + size_t(batch->m_bytes.size()) * 2);
        consume(*batch);
        batch->clear();
        spare.put(batch);
    }
    // The producer closed `full` after its last step: the result is final.
    return stmt.ok();
}
