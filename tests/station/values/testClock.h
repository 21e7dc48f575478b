#ifndef TEST_CLOCK_H
#define TEST_CLOCK_H

#include "values/stationClock.h"

/// A clock that the test moves.
class TestClock : public StationClock
{
public:
    qint64 steady() const override
    {
        return m_steady;
    }
    qint64 wall() const override
    {
        return m_wall;
    }

    void passMs(qint64 ms)
    {
        m_steady += ms * 1000;
        m_wall += ms;
    }

    /// Somebody sets the clock.
    void setWall(qint64 wall)
    {
        m_wall = wall;
    }

private:
    qint64 m_steady = 5000000;
    qint64 m_wall = 1700000000000;
};

#endif
