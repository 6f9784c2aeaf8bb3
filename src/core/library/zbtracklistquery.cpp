#include "library/zbtracklistquery.h"

#include "library/zblibrarycontroller.h"
#include "library/zblibrarytree.h"
#include "library/zbtracksearch.h"

namespace
{
bool sameList(const ZBTrackListQuery::Request &a, const ZBTrackListQuery::Request &b)
{
    return a.listUUID == b.listUUID && a.sortKey == b.sortKey && a.ascend == b.ascend && a.sortAnyway == b.sortAnyway;
}

// What the table shows for a list: the library tree's rule, and the table's
// sort over a list's own order when the user asked for it.
ZBItemList listTracks(ZBLibraryController &library, const ZBTrackListQuery::Request &request)
{
    const ZBPlaylist *playlist = library.getPlaylistsFromLibraryByUUID(request.listUUID);
    if (!playlist)
        return {};
    ZBItemList tracks = ZBLibraryTree(library).tracksForList(request.listUUID, request.sortKey, request.ascend);
    if (request.sortAnyway && !playlist->InternalItemsOrder().isEmpty() && !ZBLibraryGuard::cancelled())
        tracks = ZBLibraryController::sortList(tracks, request.sortKey, request.ascend);
    return tracks;
}
} // namespace

ZBTrackListQuery::ZBTrackListQuery(ZBLibraryController &library, QObject *parent)
    : QObject(parent)
    , m_library(library)
{
    m_worker = std::thread([this]() { run(); });
    ZBLibraryGuard::addReader(this);
}

ZBTrackListQuery::~ZBTrackListQuery()
{
    ZBLibraryGuard::removeReader(this);
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
        m_cancel = true;
    }
    m_wake.notify_all();
    m_worker.join();
}

quint64 ZBTrackListQuery::request(const Request &request)
{
    const quint64 serial = ++m_latest;
    {
        std::lock_guard lock(m_mutex);
        m_next = Job{serial, request};
        if (m_running)
        {
            m_cancel = true;
            m_stoppedByWrite = false;
        }
    }
    m_wake.notify_one();
    return serial;
}

void ZBTrackListQuery::drop()
{
    {
        std::unique_lock lock(m_mutex);
        m_next.reset();
        if (m_running)
        {
            m_cancel = true;
            m_stoppedByWrite = false;
            m_idle.wait(lock, [this]() { return !m_running; });
        }
    }
    // Answers already on their way carry an older serial now.
    m_delivered = ++m_latest;
}

bool ZBTrackListQuery::isReading()
{
    std::lock_guard lock(m_mutex);
    return m_running;
}

void ZBTrackListQuery::holdForWrite()
{
    if (m_held.load(std::memory_order_acquire))
        return;
    {
        std::unique_lock lock(m_mutex);
        m_held = true;
        if (m_running)
        {
            m_cancel = true;
            m_stoppedByWrite = true;
            m_idle.wait(lock, [this]() { return !m_running; });
        }
    }
    // The writer's work runs to the end of the current event; the read
    // starts again after it.
    QMetaObject::invokeMethod(this, &ZBTrackListQuery::resume, Qt::QueuedConnection);
}

void ZBTrackListQuery::resume()
{
    {
        std::lock_guard lock(m_mutex);
        m_held = false;
    }
    m_wake.notify_one();
}

void ZBTrackListQuery::run()
{
    ZBLibraryGuard::lowerThreadPriority();
    std::unique_lock lock(m_mutex);
    for (;;)
    {
        m_wake.wait(lock, [this]() { return m_stop || (m_next && !m_held); });
        if (m_stop)
            return;
        Job job = std::move(*m_next);
        m_next.reset();
        m_running = true;
        m_cancel = false;
        m_stoppedByWrite = false;
        lock.unlock();

        std::optional<Result> result;
        {
            const ZBLibraryGuard::ReadScope scope(&m_cancel);
            result = answer(job);
        }

        lock.lock();
        m_running = false;
        if (m_cancel)
        {
            // Stopped for a write, not by a newer request: the answer is
            // still wanted, worked out on the changed library.
            if (m_stoppedByWrite && !m_next && !m_stop)
                m_next = std::move(job);
        }
        else if (result)
        {
            deliver(std::move(*result));
        }
        m_idle.notify_all();
    }
}

std::optional<ZBTrackListQuery::Result> ZBTrackListQuery::answer(const Job &job)
{
    Result result;
    result.serial = job.serial;
    result.request = job.request;
    const quint64 generation = m_library.managedObjectContext()->generation();
    if (sameList(m_keptRequest, job.request) && m_keptGeneration == generation && generation != 0)
    {
        result.list = m_keptList;
    }
    else
    {
        result.list = listTracks(m_library, job.request);
        if (ZBLibraryGuard::cancelled())
            return std::nullopt;
        m_keptRequest = job.request;
        m_keptGeneration = generation;
        m_keptList = result.list;
    }
    result.shown = ZBTrackSearch::filter(result.list, job.request.search);
    for (const QString &uuid : job.request.countLists)
        result.counts << int(m_library.getItemsFromPlaylist(m_library.getPlaylistsFromLibraryByUUID(uuid)).size());
    if (ZBLibraryGuard::cancelled())
        return std::nullopt;
    return result;
}

void ZBTrackListQuery::deliver(Result result)
{
    auto shared = std::make_shared<Result>(std::move(result));
    QMetaObject::invokeMethod(
        this,
        [this, shared]() {
            // A newer request made since this one finished wins.
            if (shared->serial != m_latest)
                return;
            m_delivered = shared->serial;
            Q_EMIT resultReady(*shared);
        },
        Qt::QueuedConnection);
}
