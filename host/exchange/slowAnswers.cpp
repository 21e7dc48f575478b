#include "exchange/slowAnswers.h"

#include <utility>

void SlowAnswers::note(qint64 took)
{
    if (m_count == FEWEST_REMEMBERED) {
        m_before = std::exchange(m_lately, Slowest());
        m_count = 0;
    }
    ++m_count;
    if (took > m_lately.first) std::swap(took, m_lately.first);
    m_lately.second = qMax(m_lately.second, took);
}

qint64 SlowAnswers::secondSlowest() const
{
    return qMax(qMin(m_before.first, m_lately.first), qMax(m_before.second, m_lately.second));
}
