#include "output/frameTrace.h"

#include "output/frameMeaning.h"
#include "wire/frameShape.h"
#include "wire/timeUnits.h"
#include "wire/unfitBytes.h"

namespace {

/// Says also why the bytes were dropped.
QString strayMeaning(const GatheredFrame& frame)
{
    if (frame.bytes == frame.request) return QLatin1String("echo of the request");
    const QLatin1String stray("stray: ");
    const QString why = describeUnfit(frame.request, frame.bytes);
    const QString words = replyMeaning(frame.bytes, frame.request);
    if (why.isEmpty()) return stray + words;
    return hasRightChecksum(frame.bytes) ? stray + words + QLatin1String(": ") + why : stray + why;
}

QString meaning(const GatheredFrame& frame)
{
    if (frame.kind == GatheredFrame::REQUEST) return requestMeaning(frame.bytes);
    if (frame.kind == GatheredFrame::FENCE)
        return requestMeaning(frame.bytes) + QLatin1String(", a fence");
    return frame.kind == GatheredFrame::STRAY ? strayMeaning(frame)
                                              : replyMeaning(frame.bytes, frame.request);
}

} // namespace

FrameTrace::FrameTrace(std::FILE* out) : m_out(out) {}

void FrameTrace::write(const std::vector<GatheredFrame>& frames)
{
    for (const GatheredFrame& frame : frames) {
        std::fprintf(m_out, "%5lld.%06lld %c %s  %s\n", static_cast<long long>(frame.time / SECOND),
                     static_cast<long long>(frame.time % SECOND), isSent(frame) ? '>' : '<',
                     frame.bytes.toHex(' ').toUpper().constData(),
                     meaning(frame).toUtf8().constData());
        std::fflush(m_out);
    }
}

void FrameTrace::add(const FrameRecord& record)
{
    write(m_gatherer.add(record));
}

void FrameTrace::addHole(qint64 count)
{
    write(m_gatherer.flushAtHole());
    std::fprintf(m_out, "%lld frames missed: the output was blocked\n",
                 static_cast<long long>(count));
    std::fflush(m_out);
}

void FrameTrace::flush()
{
    write(m_gatherer.flush());
}
