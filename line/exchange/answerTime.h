#ifndef ANSWER_TIME_H
#define ANSWER_TIME_H

#include <QtGlobal>

/// How long a station's answer is waited for, in microseconds, learnt from the answers that came.
///
/// The estimate is that of TCP's retransmission timer: the mean plus four times the mean deviation,
/// both smoothed (RFC 6298, 2). It follows a gateway that is always late within a few answers, and
/// forgets one stall as fast.
class AnswerTime
{
public:
    enum { MOST_STRETCHED = 128 }; ///< longest time-out, as a multiple of the shortest
    enum {
        LONGEST = 10000000
    }; ///< the longest time-out; 8 times the shortest where that is longer

    /// @param shortest  the time-out as long as nothing is learnt
    explicit AnswerTime(qint64 shortest) : m_shortest(shortest), m_mean(-1), m_deviation(0) {}

    /// An answer began so long after its request had ended. Only of an answer that is surely that
    /// request's.
    void note(qint64 took);

    qint64 timeOut() const;

private:
    qint64 m_shortest;
    qint64 m_mean; ///< -1: no answer yet
    qint64 m_deviation;
};

#endif
