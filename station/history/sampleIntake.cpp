#include "history/sampleIntake.h"

namespace {

enum { MOST_ROWS = 1000000 }; // of a second, and of a thread that was held up

} // namespace

SampleIntake::SampleIntake(qint64 overrideMs, const StationClock& clock, RowListener* listener)
    : m_intake({overrideMs, MOST_ROWS}, clock)
{
    m_intake.setRowListener(listener);
}

void SampleIntake::start(HistoryIntake::LinksNow links)
{
    m_thread.start([this, links = std::move(links)] {
        m_intake.look(links());
        m_intake.take();
    });
}

void SampleIntake::tagChanged(const LinkValues& link, int tag, const TagReading& reading)
{
    m_intake.tagChanged(link, tag, reading);
}
