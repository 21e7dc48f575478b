#include "http/connectionLimits.h"

QString ConnectionLimits::refusal(const QHostAddress& peer) const
{
    if (m_count >= MOST)
        return QStringLiteral("the station has its most connections, %1").arg(int(MOST));
    const auto ofPeer = m_ofPeers.find(peer.toString());
    if (!peer.isLoopback() && ofPeer != m_ofPeers.end() && ofPeer->second >= MOST_OF_A_PEER)
        return QStringLiteral("the address has its most connections, %1").arg(int(MOST_OF_A_PEER));
    return QString();
}

void ConnectionLimits::opened(const QHostAddress& peer)
{
    ++m_count;
    ++m_ofPeers[peer.toString()];
}

void ConnectionLimits::closed(const QHostAddress& peer)
{
    const auto ofPeer = m_ofPeers.find(peer.toString());
    if (ofPeer == m_ofPeers.end()) return;
    --m_count;
    if (--ofPeer->second == 0) m_ofPeers.erase(ofPeer);
}
