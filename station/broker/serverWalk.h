#ifndef SERVER_WALK_H
#define SERVER_WALK_H

#include "broker/brokerAddress.h"

#include <vector>

/// Which server is tried next, and when: the next one of the list after each end of a session, with
/// pauses that grow each time that the whole list was tried without a good session.
///
///     list a, b, c:   a b c  1 s  a b c  2 s  a b c  4 s ... 30 s at most
///
/// A session that was good ends the growth: then the same server is tried again first, at once.
class ServerWalk
{
public:
    /// A session whose values flowed so long was good. One that ends earlier may be thrown out by
    /// another client of the same name: without pauses the two would never stop.
    enum { GOOD_SESSION_MS = 1000 };

    /// @param servers  at least one
    explicit ServerWalk(std::vector<BrokerAddress> servers);

    const BrokerAddress& server() const;

    /// The session with server() was as good as it can be, see GOOD_SESSION_MS.
    void wasGood();

    /// The session is over, or never came to be.
    /// @param isLeft  the server has to be left: its primary host is offline
    /// @return the pause before the next try, in milliseconds
    qint64 ended(bool isLeft);

private:
    std::vector<BrokerAddress> m_servers;
    size_t m_at = 0;
    size_t m_failed = 0; ///< tries in a row without a good session
    bool m_isGood = false;
};

#endif
