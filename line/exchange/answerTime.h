#ifndef ANSWER_TIME_H
#define ANSWER_TIME_H

#include <QtGlobal>

/// The time-out of one station, in microseconds, learnt from the station's answers.
///
/// The estimate is the estimate of TCP's retransmission timer: the mean plus four times the mean
/// deviation, both smoothed (RFC 6298, 2). Within a few answers it adapts to a gateway that is
/// always late. It forgets a single stall equally fast.
class AnswerTime
{
public:
    enum { MOST_STRETCHED = 128 }; ///< upper limit of the time-out, as a multiple of the shortest
    enum {
        LONGEST = 10000000 ///< upper limit, or 8 times the shortest where that is longer
    };

    /// @param shortest  lower limit of the time-out, and the time-out before the first answer
    explicit AnswerTime(qint64 shortest) : m_shortest(shortest), m_mean(-1), m_deviation(0) {}

    /// Learns from an answer. Call it only for an answer that surely belongs to the request: the
    /// answer to another request would spoil the estimate.
    /// @param took  from the end of the request to the start of the answer
    void note(qint64 took);

    /// The time from the end of a request to the latest start of its answer.
    qint64 timeOut() const;

private:
    qint64 m_shortest;
    qint64 m_mean;      ///< of the times learnt; -1: no answer yet
    qint64 m_deviation; ///< mean deviation from m_mean
};

#endif
