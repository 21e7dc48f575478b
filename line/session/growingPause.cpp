#include "session/growingPause.h"

#include <algorithm>
#include <utility>

int GrowingPause::take()
{
    return std::exchange(m_nextMs, std::max(m_firstMs, std::min(2 * m_nextMs, m_longestMs)));
}
