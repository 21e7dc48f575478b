#ifndef REPLY_TIMES_H
#define REPLY_TIMES_H

#include <QtGlobal>

#include <vector>

/// A histogram of reply times in microseconds. Its size does not depend on the number of replies:
/// it grows with the logarithm of the longest one.
class ReplyTimes
{
public:
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

    std::vector<qint64> m_counts; ///< up to the bucket of the longest time so far
    qint64 m_count = 0;
};

#endif
