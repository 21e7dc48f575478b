#include "session/replyTimes.h"

#include <algorithm>
#include <cmath>

namespace {

const qint64 USUAL_LONGEST = 1000000; // microseconds

} // namespace

ReplyTimes::ReplyTimes() : m_counts(std::size_t(bucketOf(USUAL_LONGEST)) + 1) {}

void ReplyTimes::add(qint64 time)
{
    if (time < 0) return;
    const auto bucket = std::size_t(bucketOf(time));
    if (bucket >= m_counts.size()) m_counts.resize(bucket + 1);
    ++m_counts[bucket];
    ++m_count;
}

void ReplyTimes::remove(qint64 time)
{
    if (time < 0) return;
    --m_counts[std::size_t(bucketOf(time))];
    --m_count;
}

qint64 ReplyTimes::percentile(double percent) const
{
    if (m_count == 0) return 0;
    const double share = std::ceil(percent * double(m_count) / 100);
    const qint64 rank = std::clamp(qint64(share), qint64(1), m_count);
    int bucket = 0;
    for (qint64 passed = m_counts[0]; passed < rank; passed += m_counts[std::size_t(bucket)]) {
        ++bucket;
    }
    return middleOf(bucket);
}

/// A bucket holds one time below 64, two times from 64 to 127, four from 128 to 255, and so on.
int ReplyTimes::bucketOf(qint64 time)
{
    int shift = 0;
    while ((time >> shift) >= 2 * STEPS)
        ++shift;
    return shift * STEPS + int(time >> shift);
}

qint64 ReplyTimes::middleOf(int bucket)
{
    if (bucket < 2 * STEPS) return bucket;
    const int shift = bucket / STEPS - 1;
    const qint64 first = qint64(bucket - shift * STEPS) << shift;
    return first + (qint64(1) << shift) / 2;
}
