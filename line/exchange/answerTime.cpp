#include "exchange/answerTime.h"

enum { MEAN_WEIGHT = 8, DEVIATION_WEIGHT = 4, DEVIATIONS = 4, LEAST_STRETCHED = 8 };

void AnswerTime::note(qint64 took)
{
    if (m_mean < 0) {
        m_mean = took;
        m_deviation = took / 2;
        return;
    }
    m_deviation += (qAbs(took - m_mean) - m_deviation) / DEVIATION_WEIGHT;
    m_mean += (took - m_mean) / MEAN_WEIGHT;
}

qint64 AnswerTime::timeOut() const
{
    const qint64 longest = qMin<qint64>(MOST_STRETCHED * m_shortest,
                                        qMax<qint64>(LEAST_STRETCHED * m_shortest, LONGEST));
    return qBound(m_shortest, m_mean + DEVIATIONS * m_deviation, longest);
}
