#include "library/zblibraryguard.h"

#include <cerrno>

#include <algorithm>
#include <mutex>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace
{
thread_local const std::atomic<bool> *t_flag = nullptr;

std::mutex s_readersMutex;
std::vector<ZBLibraryGuard::Reader *> s_readers;
// Checked before the lock: most writes happen with no reader at all (a
// batch import, the tools).
std::atomic<int> s_readerCount{0};
} // namespace

ZBLibraryGuard::ReadScope::ReadScope(const std::atomic<bool> *flag)
    : m_previous(t_flag)
{
    t_flag = flag;
}

ZBLibraryGuard::ReadScope::~ReadScope()
{
    t_flag = m_previous;
}

void ZBLibraryGuard::lowerThreadPriority()
{
    // A background read takes a whole core for as long as it runs; the GUI
    // thread must win whenever both want one, or the window stutters on a
    // busy machine. Linux keeps a nice value per thread; it cannot be raised
    // again without privileges, so only threads that read and nothing else
    // call this.
    constexpr int ReadNice = 10;
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, 0);
    if (errno == 0 && nice < ReadNice)
        setpriority(PRIO_PROCESS, 0, ReadNice);
}

void ZBLibraryGuard::willWrite()
{
    // A read fills caches on its own thread, which is the one place that may.
    if (t_flag || s_readerCount.load(std::memory_order_acquire) == 0)
        return;
    std::lock_guard lock(s_readersMutex);
    for (Reader *reader : s_readers)
        reader->holdForWrite();
}

bool ZBLibraryGuard::cancelled()
{
    return t_flag && t_flag->load(std::memory_order_relaxed);
}

const std::atomic<bool> *ZBLibraryGuard::currentFlag()
{
    return t_flag;
}

void ZBLibraryGuard::addReader(Reader *reader)
{
    std::lock_guard lock(s_readersMutex);
    s_readers.push_back(reader);
    s_readerCount.store(int(s_readers.size()), std::memory_order_release);
}

void ZBLibraryGuard::removeReader(Reader *reader)
{
    std::lock_guard lock(s_readersMutex);
    s_readers.erase(std::remove(s_readers.begin(), s_readers.end(), reader), s_readers.end());
    s_readerCount.store(int(s_readers.size()), std::memory_order_release);
}
