#ifndef REPLY_TIMES_H
#define REPLY_TIMES_H

#include <QtGlobal>

#include <vector>

/// A histogram of reply times in microseconds. Its size does not depend on the number of replies:
/// it grows with the logarithm of the longest one, and not at all up to one second.
class ReplyTimes
{
public:
    ReplyTimes();

    /// Adds a reply's time. A negative time means that no reply came and does not count.
    void add(qint64 time);

    /// Removes a time that was added.
    void remove(qint64 time);

    qint64 count() const
    {
        return m_count;
    }

    /// The time within which `percent` (0 to 100) of the replies came, with an error of at most
    /// 2 %. 0 when there are no replies.
    qint64 percentile(double percent) const;

private:
    enum {
        STEP_BITS = 5, ///< each doubling of the time is divided into 32 equal buckets
        STEPS = 1 << STEP_BITS
    };

    static int bucketOf(qint64 time);
    static qint64 middleOf(int bucket);

    /// Up to the bucket of the longest time so far, one second at least: the memory of many links
    /// would creep up as one after the other meets a slow reply.
    std::vector<qint64> m_counts;
    qint64 m_count = 0;
};

#endif
