#ifndef FRAME_TRACE_H
#define FRAME_TRACE_H

#include "output/timeText.h"
#include "session/frameGatherer.h"

#include <cstdio>

/// Writes a line for each frame on the link: the time, ">" for sent or "<" for received, the bytes,
/// and their meaning. A line with "!" says that no answer came.
/// The meaning of bytes that answer no request says why they were dropped.
///
///      1.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers from 3000
///      1.256120 < 01 03 04 12 34 56 78 81 07  station 1: 2 registers 0x1234 0x5678
///      1.257003 < FF  stray: 1 byte, too few for an answer
///      1.258000 > 02 03 0B B8 00 02 46 39  station 2: read 2 holding registers from 3000
///      1.760000 ! station 2: no answer within 502 ms
///
/// A line is written when its frame is complete. Stray bytes are therefore written with the next
/// request. Where records are missing, a line says how many.
class FrameTrace
{
public:
    /// @param out  borrowed; gets UTF-8 and is flushed after each line
    explicit FrameTrace(std::FILE* out, const TimeText& times = TimeText());

    void add(const FrameRecord& record);

    /// Notes that `count` records were dropped here, because the program did not take them in time.
    void addHole(qint64 count);

    /// Writes the bytes still held. Call it at the end.
    void flush();

private:
    void write(const std::vector<GatheredFrame>& frames);
    void writeNoAnswer(qint64 time);

    std::FILE* m_out;
    const TimeText m_times;
    GatheredFrame m_unanswered; ///< the last request; without bytes: it was answered
    FrameGatherer m_gatherer;
};

#endif
