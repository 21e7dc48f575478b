#include "history/secondsThread.h"

#include <chrono>

namespace {

const std::chrono::seconds BETWEEN_TURNS(1);

} // namespace

SecondsThread::~SecondsThread()
{
    stop();
}

void SecondsThread::start(std::function<void()> turn)
{
    m_thread = std::thread([this, turn = std::move(turn)] { run(turn); });
}

bool SecondsThread::stop()
{
    if (!m_thread.joinable()) return false;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_end.notify_all();
    m_thread.join();
    return true;
}

void SecondsThread::run(const std::function<void()>& turn)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_isEnding) {
        lock.unlock();
        turn();
        lock.lock();
        m_end.wait_for(lock, BETWEEN_TURNS, [this] { return m_isEnding; });
    }
}
