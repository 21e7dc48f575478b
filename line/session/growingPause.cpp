#include "session/growingPause.h"

#include <algorithm>
#include <utility>

int GrowingPause::take()
{
    return std::exchange(m_nextMs, std::min(2 * m_nextMs, int(LONGEST_MS)));
}
