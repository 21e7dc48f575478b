#include "http/guessLimit.h"

#include <algorithm>

namespace {

enum { MOST_GUESSES = 10, MOST_NETWORKS = 1000, IPV6_NETWORK_BITS = 64 };
const qint64 GUESS_US = 5000000;

/// One customer has a whole IPv6 network.
QString networkOf(const QHostAddress& peer)
{
    if (peer.protocol() != QAbstractSocket::IPv6Protocol) return peer.toString();
    Q_IPV6ADDR bytes = peer.toIPv6Address();
    std::fill(&bytes.c[IPV6_NETWORK_BITS / 8], &bytes.c[sizeof bytes.c], quint8(0));
    return QHostAddress(bytes).toString();
}

} // namespace

qint64 GuessLimit::wait(const QHostAddress& peer, qint64 now) const
{
    const auto found = m_paidOff.find(networkOf(peer));
    if (found == m_paidOff.end()) return 0;
    const qint64 until = found->second - (MOST_GUESSES - 1) * GUESS_US;
    return until <= now ? 0 : (until - now + 999) / 1000;
}

void GuessLimit::wrong(const QHostAddress& peer, qint64 now)
{
    if (peer.isLoopback()) return;
    qint64& paidOff = m_paidOff[networkOf(peer)];
    paidOff = std::max(paidOff, now) + GUESS_US;
    if (m_paidOff.size() <= MOST_NETWORKS) return;
    // The network with the fewest guesses left to pay off loses the least.
    m_paidOff.erase(
        std::min_element(m_paidOff.begin(), m_paidOff.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; }));
}
