#ifndef MOSQUITTO_CLIENT_H
#define MOSQUITTO_CLIENT_H

#include "broker/brokerSession.h"
#include "broker/tlsContext.h"

#include <poll.h>

#include <deque>
#include <memory>

/// How a client shows itself to its brokers.
struct ClientSettings
{
    QString clientId;
    QString user; ///< empty: none
    QByteArray password;
    TlsFiles tls;
    int keepAliveS = 30;
};

/// What happened on a connection.
struct ClientEvent
{
    enum Kind { CONNECTED, ENDED, SUBSCRIBED, DELIVERED, RECEIVED };

    Kind kind = ENDED;
    int request = 0;        ///< SUBSCRIBED, DELIVERED
    bool isGranted = false; ///< SUBSCRIBED
    QString reason;         ///< ENDED
    BrokerMessage message;  ///< RECEIVED
};

/// One connection of the MQTT library to one IP address, from its beginning to its end. The library
/// gets a new client for each connection: an old one would repeat what its last session had not
/// finished.
///
///              TCP there              TLS done, if any           CONNACK 0
///     DIALLING ---------> GREETING ----------------------------> OPEN
///         |                  |  CONNECT leaves behind TLS         |
///         +----------------> +----------------------------------> +--> OVER
///
/// Invariants:
/// - The library's callbacks only note events. So nobody is called from the middle of the library,
///   and who reads the events may destroy the client.
/// - No byte leaves before GREETING, and none of MQTT before TLS is done: only flush() writes.
/// - ENDED is the last event.
class MosquittoClient
{
public:
    /// @param address  the IP address of the server
    /// @throws TlsError; std::runtime_error: no CONNECT can hold the client id or the user
    MosquittoClient(const ClientSettings& settings, const BrokerAddress& server,
                    const QString& address, const BrokerMessage& will);
    ~MosquittoClient();

    /// What to wait for; its descriptor is negative when there is nothing.
    pollfd awaited() const;

    /// Reads, writes and goes on as far as the descriptor allows.
    void drive(short found);

    /// Looks after the keep-alive; once a second.
    void lookAfter();

    /// Whether the TCP connection was made.
    bool isReached() const;
    bool isConnectSent() const;
    bool isOver() const;
    int keepAliveS() const; ///< as the broker was told

    int subscribe(const QStringList& topics);
    int publish(const BrokerMessage& message);
    bool isDrained() const;

    /// Sends DISCONNECT, as far as the system takes it.
    void disconnect();

    /// Gives up before the broker has ended it.
    void giveUp(const QString& reason);

    std::deque<ClientEvent>& events();

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

#endif
