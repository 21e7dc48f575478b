#ifndef CONNECTION_LIMITS_H
#define CONNECTION_LIMITS_H

#include <QHostAddress>
#include <QString>

#include <map>

/// How many connections the station holds. One thread uses it.
class ConnectionLimits
{
public:
    enum { MOST = 64, MOST_OF_A_PEER = 10 };

    /// Why one more connection of the peer is refused, as a sentence; empty: it is not. This
    /// machine itself counts only in all: behind a proxy everybody comes from it.
    QString refusal(const QHostAddress& peer) const;

    void opened(const QHostAddress& peer);
    void closed(const QHostAddress& peer);

    int count() const
    {
        return m_count;
    }

private:
    int m_count = 0;
    std::map<QString, int> m_ofPeers; ///< by the peer's address
};

#endif
