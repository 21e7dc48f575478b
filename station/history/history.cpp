#include "history/history.h"

#include <chrono>

namespace {

const std::chrono::seconds BETWEEN_COMMITS(1);
} // namespace

History::History(const Settings& settings, const StationClock& clock)
    : m_cap(settings.capBytes),
      m_intake({settings.overrideMs, m_cap.waitingRows}, clock),
      m_reader(settings.file),
      m_writer(settings.file, m_cap, m_intake, m_reader, clock)
{
}

History::~History()
{
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_end.notify_all();
    m_thread.join();
    m_writer.turn();
}

void History::start(LinksNow links)
{
    m_thread = std::thread([this, links = std::move(links)] { run(links); });
}

void History::run(const LinksNow& links)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_isEnding) {
        lock.unlock();
        m_intake.look(links());
        m_writer.turn();
        lock.lock();
        m_end.wait_for(lock, BETWEEN_COMMITS, [this] { return m_isEnding; });
    }
}

void History::tagChanged(const LinkValues& link, int tag, const TagReading& reading)
{
    m_intake.tagChanged(link, tag, reading);
}

std::vector<History::Bucket> History::buckets(const Query& query)
{
    return m_reader.buckets(query);
}

std::vector<History::Row> History::rows(const Query& query, qint64 after, int most)
{
    return m_reader.rows(query, after, most);
}

History::Standing History::standing() const
{
    return m_writer.standing();
}
