#ifndef WIRE_USE_H
#define WIRE_USE_H

#include <QtGlobal>

/// Measures the share of time in which the wire is in use. Times are microseconds of one clock.
class WireUse
{
public:
    /// @param since  start of the measured time
    explicit WireUse(qint64 since);

    /// The wire is in use. `until` may lie in the future. Time before the end of an earlier call
    /// does not count again.
    void add(qint64 from, qint64 until);

    /// The share from the start to `now`, 0 to 1.
    double share(qint64 now) const;

private:
    qint64 m_since;
    qint64 m_lastUntil;
    qint64 m_busy = 0;
};

#endif
