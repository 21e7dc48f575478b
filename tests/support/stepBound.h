#ifndef STEP_BOUND_H
#define STEP_BOUND_H

#include <gtest/gtest.h>

#include <QtGlobal>

/// Keeps a bench with a virtual clock from hanging: a session that always has something to do at
/// the present time never lets the clock go on. The bound is 20 times what the longest queue of
/// jobs takes (502 steps).
class StepBound
{
public:
    enum { MOST_STEPS_AT_ONCE = 10000 };

    /// Fails the test at the first step too many.
    /// @return false from then on
    bool allowsStepAt(qint64 now)
    {
        if (m_isExceeded) return false;
        m_steps = now == m_now ? m_steps + 1 : 0;
        m_now = now;
        m_isExceeded = m_steps >= MOST_STEPS_AT_ONCE;
        if (m_isExceeded)
            ADD_FAILURE() << "the clock stands still at " << now
                          << " us: " << int(MOST_STEPS_AT_ONCE)
                          << " steps, and the next one is due at once";
        return !m_isExceeded;
    }

private:
    qint64 m_now = -1;
    int m_steps = 0;
    bool m_isExceeded = false;
};

#endif
