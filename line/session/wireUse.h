#ifndef WIRE_USE_H
#define WIRE_USE_H

#include <QtGlobal>

/// The share of the time in which the wire was in use. Times are microseconds of one clock.
class WireUse
{
public:
    /// @param since  from when on the share is taken
    explicit WireUse(qint64 since);

    /// The wire is taken from one time to another, which may lie ahead. What an earlier call
    /// covered, and whatever lies before its end, does not count again.
    void add(qint64 from, qint64 until);

    /// 0 to 1.
    double share(qint64 now) const;

private:
    qint64 m_since;
    qint64 m_lastUntil;
    qint64 m_busy = 0;
};

#endif
