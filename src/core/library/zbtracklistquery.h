#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "library/zbitem.h"
#include "library/zblibraryguard.h"

class ZBLibraryController;

// Works out what the track table shows (the tracks of a list, in the
// table's sort, narrowed by the search text) on a thread of its own, so that
// a million tracks never hold up the window. Each request supersedes the one
// before: a read still running is stopped, and only the newest request's
// answer is ever delivered, on the thread that made the request.
//
// The library is read without locks (see ZBLibraryGuard): a write on the GUI
// thread stops the running read first, and the read starts again on the
// changed library once the GUI thread is back in its event loop.
class ZBTrackListQuery : public QObject, private ZBLibraryGuard::Reader
{
    Q_OBJECT

public:
    struct Request
    {
        QString listUUID;
        QString sortKey;
        bool ascend = true;
        QString search;
        // Sorted by the key even when the list keeps an order of its own:
        // the user clicked a column header.
        bool sortAnyway = false;
        // Lists whose tracks are only counted (the source list's badges).
        QStringList countLists;
    };
    struct Result
    {
        quint64 serial = 0;
        Request request;
        // The list's tracks, and those of them the search text keeps.
        ZBItemList list;
        ZBItemList shown;
        // The counts of request.countLists, in order.
        QList<int> counts;
    };

    explicit ZBTrackListQuery(ZBLibraryController &library, QObject *parent = nullptr);
    ~ZBTrackListQuery() override;

    // The serial the answer will carry.
    quint64 request(const Request &request);
    // Forgets the queued request and stops the running read, waiting for it,
    // and no answer made so far is delivered: the library is about to be
    // read anew on another thread, which no read may meet.
    void drop();
    // True from a request until its answer (or a newer one's) is delivered.
    bool isPending() const { return m_delivered != m_latest; }
    // True while a read runs on the query's thread.
    bool isReading();

Q_SIGNALS:
    void resultReady(const ZBTrackListQuery::Result &result);

private:
    struct Job
    {
        quint64 serial = 0;
        Request request;
    };

    void holdForWrite() override;
    void resume();
    void run();
    // Null when the read was stopped.
    std::optional<Result> answer(const Job &job);
    void deliver(Result result);

    ZBLibraryController &m_library;

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::condition_variable m_idle;
    std::optional<Job> m_next;
    bool m_running = false;
    bool m_stoppedByWrite = false;
    bool m_stop = false;
    std::atomic<bool> m_held{false};
    std::atomic<bool> m_cancel{false};
    // Written on the requesting thread only.
    quint64 m_latest = 0;
    quint64 m_delivered = 0;

    // The last list worked out, for the searches and re-sorts that follow;
    // read and written by the worker only.
    Request m_keptRequest;
    quint64 m_keptGeneration = 0;
    ZBItemList m_keptList;

    std::thread m_worker;
};
