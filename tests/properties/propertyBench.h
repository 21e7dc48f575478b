#ifndef PROPERTY_BENCH_H
#define PROPERTY_BENCH_H

#include "benchHost.h"
#include "linkedDriver.h"

/// What comes back for a request.
enum class Reply { GOOD, EMPTY, DAMAGED, CUT, OTHER_STATION, RANDOM, KINDS };

const char* nameOf(Reply reply);
std::ostream& operator<<(std::ostream& out, Reply reply);

/// A host around a driver as new, for one run of a property.
class PropertyBench : public BenchHost
{
public:
    enum { MOST_QUEUED = 513, RECIPE_WORDS = 8192 };

    PropertyBench(int retryLimit, int mergeLimit);

    /// In one call; the values count up from `value`, in their low bits.
    void writeRun(const Units& units, int value, int id) const;

    /// Hands in an answer of this kind to the frame; `noise` chooses its bytes.
    /// @return a ReplyResult
    int answer(const FRAME_PRO& frame, Reply reply, unsigned noise);
};

/// An answer of this kind to the frame.
QByteArray replyTo(const FRAME_PRO& frame, Reply reply, unsigned noise);

#endif
