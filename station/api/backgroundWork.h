#ifndef BACKGROUND_WORK_H
#define BACKGROUND_WORK_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// Work that may wait for the disk, on one thread of its own, so that it never stops the HTTP
/// thread. Any thread hands in work, which is done in that order. What waits when the object ends
/// is dropped.
class BackgroundWork
{
public:
    enum { MOST_WAITING = 100 };

    BackgroundWork();
    ~BackgroundWork();
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;

    /// @param work  must not throw, and must not own this object
    /// @return false: too much waits already; the work will not be done
    bool add(std::function<void()> work);

private:
    void run();

    std::mutex m_mutex;
    std::condition_variable m_news;
    std::deque<std::function<void()>> m_waiting; ///< guarded by m_mutex
    bool m_isEnding = false;                     ///< guarded by m_mutex
    std::thread m_thread;                        ///< the last member: it uses the others
};

#endif
