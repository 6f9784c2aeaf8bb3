#pragma once

#include <atomic>

// Lets one background reader of the library (a track list query) run while
// the GUI thread goes on. The library has no locks: its records are written
// on the GUI thread only, and a reader fills lazy caches (folded texts, sort
// ranks, kept list answers) as it goes. So before the GUI thread writes a
// record or fills a cache itself, it calls willWrite(), which stops every
// running read at its next poll and holds new ones back until the GUI thread
// returns to its event loop.
//
// Long loops of the library poll cancelled() every few thousand items and,
// when it says so, stop without keeping what they have so far.
class ZBLibraryGuard
{
public:
    // A reader that willWrite() must stop; the GUI thread registers it.
    class Reader
    {
    public:
        virtual ~Reader() = default;
        // Returns once no read of this reader runs and none will start
        // before the calling thread's next event-loop turn.
        virtual void holdForWrite() = 0;
    };

    // Marks the current thread as running a read that `flag` cancels, for
    // as long as the scope lives.
    class ReadScope
    {
    public:
        explicit ReadScope(const std::atomic<bool> *flag);
        ~ReadScope();
        ReadScope(const ReadScope &) = delete;
        ReadScope &operator=(const ReadScope &) = delete;

    private:
        const std::atomic<bool> *m_previous;
    };

    static void willWrite();
    static bool cancelled();
    // The flag of the read on this thread, for helper threads it starts.
    static const std::atomic<bool> *currentFlag();
    static bool inRead() { return currentFlag() != nullptr; }
    // Lets every other thread of the process go first; for threads that
    // only read.
    static void lowerThreadPriority();

    static void addReader(Reader *reader);
    static void removeReader(Reader *reader);
};
