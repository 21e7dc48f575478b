#include "history/history.h"

History::History(const Settings& settings, const StationClock& clock)
    : m_cap(settings.capBytes),
      m_intake({settings.overrideMs, m_cap.waitingRows}, clock),
      m_reader(settings.file),
      m_writer(settings.file, m_cap, m_intake, m_reader, clock)
{
}

History::~History()
{
    stop();
}

void History::stop()
{
    m_writer.hurry();
    if (!m_thread.stop()) return;
    m_intake.close();
    m_writer.turn();
}

void History::setRowListener(RowListener* listener)
{
    m_intake.setRowListener(listener);
}

void History::start(HistoryIntake::LinksNow links)
{
    m_thread.start([this, links = std::move(links)] {
        m_intake.look(links());
        m_writer.turn();
    });
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

LogPosition History::position() const
{
    return m_writer.position();
}

std::vector<LoggedRow> History::rowsBehind(qint64 sequence, qint64 last, int most)
{
    return m_reader.rowsBehind(sequence, last, most);
}

qint64 History::oldestSequence()
{
    return m_reader.oldestSequence();
}
