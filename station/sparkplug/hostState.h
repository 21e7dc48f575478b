#ifndef HOST_STATE_H
#define HOST_STATE_H

#include "broker/brokerAddress.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

/// What the primary host says of itself, at each server.
///
/// A host has one session and one row of times at each server, so the times of two servers are
/// never compared. They are kept over reconnects; whether the host is online has to be told anew on
/// each connection, by its retained STATE.
class HostState
{
public:
    enum News {
        NOTHING, ///< no STATE
        OLD,     ///< its time is before that of another one; it does not count
        ONLINE,
        OFFLINE
    };

    /// @param host  its id; empty: there is no primary host
    explicit HostState(const QString& host);

    bool isWanted() const
    {
        return !m_topic.isEmpty();
    }
    const QString& topic() const
    {
        return m_topic;
    }

    /// Takes what came on topic(). There has to be a primary host.
    News told(const BrokerAddress& server, const QByteArray& payload);

private:
    QString m_topic;
    QHash<QString, qint64> m_times; ///< of the last STATE that counted, by server
};

/// A STATE as it was sent.
struct HostStatement
{
    bool isOnline = false;
    qint64 time = 0; ///< ms since 1970
};

/// Empty: the bytes are no STATE. Takes any bytes.
std::optional<HostStatement> hostStatement(const QByteArray& payload);

#endif
