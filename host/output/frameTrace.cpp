#include "output/frameTrace.h"

#include "session/frameMeaning.h"
#include "wire/frameShape.h"
#include "wire/timeUnits.h"

FrameTrace::FrameTrace(std::FILE* out, const TimeText& times) : m_out(out), m_times(times) {}

void FrameTrace::write(const std::vector<GatheredFrame>& frames)
{
    for (const GatheredFrame& frame : frames) {
        if (isSent(frame)) m_unanswered = frame;
        if (frame.kind == GatheredFrame::ANSWER) m_unanswered = GatheredFrame();
        std::fprintf(m_out, "%s %c %s  %s\n", qUtf8Printable(m_times.columnText(frame.time)),
                     isSent(frame) ? '>' : '<', frame.bytes.toHex(' ').toUpper().constData(),
                     frameMeaning(frame).toUtf8().constData());
        std::fflush(m_out);
    }
}

/// An attempt that ends at its fence is told twice, as the end of the fence and of the request. One
/// frame was sent, so one line is written.
void FrameTrace::writeNoAnswer(qint64 time)
{
    if (m_unanswered.bytes.isEmpty()) return;
    std::fprintf(m_out, "%s ! station %d: no answer within %lld ms\n",
                 qUtf8Printable(m_times.columnText(time)), frameByte(m_unanswered.bytes, 0),
                 static_cast<long long>((time - m_unanswered.time) / MILLISECOND));
    std::fflush(m_out);
    m_unanswered = GatheredFrame();
}

void FrameTrace::add(const FrameRecord& record)
{
    if (record.direction == FrameRecord::NO_ANSWER) {
        flush();
        return writeNoAnswer(record.time);
    }
    write(m_gatherer.add(record));
}

void FrameTrace::addHole(qint64 count)
{
    write(m_gatherer.flushAtHole());
    m_unanswered = GatheredFrame();
    std::fprintf(m_out, "%lld frames missed: the output was blocked\n",
                 static_cast<long long>(count));
    std::fflush(m_out);
}

void FrameTrace::flush()
{
    write(m_gatherer.flush());
}
