#include "api/backgroundWork.h"

BackgroundWork::BackgroundWork() : m_thread([this] { run(); }) {}

BackgroundWork::~BackgroundWork()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_news.notify_one();
    m_thread.join();
}

bool BackgroundWork::add(std::function<void()> work)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_waiting.size() >= MOST_WAITING) return false;
        m_waiting.push_back(std::move(work));
    }
    m_news.notify_one();
    return true;
}

void BackgroundWork::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_news.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
        if (m_isEnding) return;
        const std::function<void()> work = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        work();
        lock.lock();
    }
}
