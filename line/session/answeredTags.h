#ifndef ANSWERED_TAGS_H
#define ANSWERED_TAGS_H

#include "plan/tag.h"
#include "session/memoryRun.h"
#include "session/sessionSink.h"

#include <vector>

/// Takes the tags' values from the frames of answered exchanges, whatever the driver's cache shows:
/// the cache shows a written value before the PLC has confirmed it, and goes on showing it when a
/// read in between brings the old value again.
///
///     write handed in     read of the PLC     echo of the write
///   -------+--------------------+--------------------+---------->
///     cache:  new                 new                   new
///     told:                       old (tagRead)         new (tagRead)
///
/// A tag is told only when one exchange holds it as a whole, so a value of two words is never made
/// of words of two times.
class AnsweredTags
{
public:
    explicit AnsweredTags(SessionSink& sink) : m_sink(sink) {}

    void set(const std::vector<Tag>& tags);

    /// Tells the tags whose values an accepted exchange has shown.
    void tell(const FINISHED_EXCHANGE& finished);

    /// Whether a write changes a part of a tag, or a tag as a whole.
    enum Touched { NO_TAG, WHOLE_TAGS, PARTS_OF_TAGS };
    Touched touchedBy(const FRAME_PRO& write) const;

private:
    struct Span
    {
        int station;
        MemoryRun::Table table;
        int from; ///< see MemoryRun
        int until;
        int tag;
        bool isBit;
    };

    std::vector<Span>::const_iterator firstTouched(const MemoryRun& run) const;
    void takeBytes(const Span& span, const MemoryRun& run);
    static bool isTouched(const Span& span, const MemoryRun& run);

    SessionSink& m_sink;
    std::vector<Span> m_spans; ///< ascending by station, table and place
    QByteArray m_bytes;        ///< the value that is told
};

#endif
