#include "broker/serverWalk.h"

#include <algorithm>

namespace {

enum { FIRST_PAUSE_MS = 1000, LONGEST_PAUSE_MS = 30000 };

/// @param rounds  whole lists that were tried in vain, from 1
qint64 pauseBehind(size_t rounds)
{
    qint64 pause = FIRST_PAUSE_MS;
    for (size_t i = 1; i < rounds && pause < LONGEST_PAUSE_MS; ++i)
        pause *= 2;
    return std::min<qint64>(pause, LONGEST_PAUSE_MS);
}

} // namespace

ServerWalk::ServerWalk(std::vector<BrokerAddress> servers) : m_servers(std::move(servers)) {}

const BrokerAddress& ServerWalk::server() const
{
    return m_servers[m_at];
}

void ServerWalk::wasGood()
{
    m_isGood = true;
    m_failed = 0;
}

qint64 ServerWalk::ended(bool isLeft)
{
    if (!m_isGood) ++m_failed;
    if (!m_isGood || isLeft) m_at = (m_at + 1) % m_servers.size();
    m_isGood = false;
    const bool isRoundOver = m_failed > 0 && m_failed % m_servers.size() == 0;
    return isRoundOver ? pauseBehind(m_failed / m_servers.size()) : 0;
}
