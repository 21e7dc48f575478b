#ifndef SECONDS_THREAD_H
#define SECONDS_THREAD_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// A thread that does something once a second until its end.
class SecondsThread
{
public:
    SecondsThread() = default;
    ~SecondsThread();
    SecondsThread(const SecondsThread&) = delete;
    SecondsThread& operator=(const SecondsThread&) = delete;

    /// The first turn comes at once.
    void start(std::function<void()> turn);

    /// Waits for the end of the turn. @return whether it was started
    bool stop();

private:
    void run(const std::function<void()>& turn);

    std::mutex m_mutex;
    std::condition_variable m_end;
    bool m_isEnding = false; ///< guarded by m_mutex
    std::thread m_thread;
};

#endif
