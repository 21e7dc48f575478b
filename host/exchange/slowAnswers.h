#ifndef SLOW_ANSWERS_H
#define SLOW_ANSWERS_H

#include <QtGlobal>

/// How slow the last answers were, in microseconds. The slowest one alone may be chance, so the
/// second slowest counts; and what is long ago is forgotten.
class SlowAnswers
{
public:
    enum { FEWEST_REMEMBERED = 256 }; ///< and twice as many at most

    void note(qint64 took);

    /// 0 before the second answer.
    qint64 secondSlowest() const;

private:
    struct Slowest
    {
        qint64 first = 0;
        qint64 second = 0;
    };

    Slowest m_before;
    Slowest m_lately;
    int m_count = 0;
};

#endif
