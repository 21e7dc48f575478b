#ifndef REPLY_TIMES_H
#define REPLY_TIMES_H

#include <QtGlobal>

#include <array>

/// How long replies took, in microseconds: any number of them in the same memory.
class ReplyTimes
{
public:
    /// One reply's time. A negative one means that none came, and does not count.
    void add(qint64 time);

    /// Takes back a time that was added.
    void remove(qint64 time);

    qint64 count() const
    {
        return m_count;
    }

    /// The time within which `percent` of the replies came, at most 2 % off. 0 without any.
    qint64 percentile(double percent) const;

private:
    enum {
        STEP_BITS = 5, ///< each doubling of the time is divided into 32 equal buckets
        STEPS = 1 << STEP_BITS,
        BUCKETS = (63 - STEP_BITS + 1) * STEPS ///< up to the longest time that 63 bits hold
    };

    static int bucketOf(qint64 time);
    static qint64 middleOf(int bucket);

    std::array<qint64, BUCKETS> m_counts = {};
    qint64 m_count = 0;
};

#endif
