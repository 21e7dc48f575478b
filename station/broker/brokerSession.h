#ifndef BROKER_SESSION_H
#define BROKER_SESSION_H

#include "broker/brokerAddress.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// A message from or to a broker.
struct BrokerMessage
{
    QString topic;
    QByteArray payload;
    int qos = 0; ///< 0 or 1
    bool isRetained = false;
};

/// Told what happens on a session, by the thread that drives it.
///
///             connect()             connected()
///     CLOSED -----------> WAITING --------------> OPEN
///        ^                   |                     |
///        +---- ended() ------+------- ended() -----+      leave(), drop(): no ended()
class SessionListener
{
public:
    virtual ~SessionListener() = default;

    /// The broker said yes.
    virtual void connected() = 0;

    /// The session is over: refused, lost, or never begun.
    /// @param reason       in words
    /// @param connectSent  whether any byte of the CONNECT can have left this machine
    virtual void ended(const QString& reason, bool connectSent) = 0;

    /// The broker granted all topics of a subscribe(), or refused one of them.
    virtual void subscribed(int request, bool isGranted) = 0;

    /// The broker has taken over a message with QoS 1.
    virtual void delivered(int request) = 0;

    virtual void received(const BrokerMessage& message) = 0;
};

/// One MQTT 3.1.1 connection at a time, with a clean session. It never connects by itself. One
/// thread uses it; no function waits.
class BrokerSession
{
public:
    virtual ~BrokerSession() = default;

    /// Begins a session; the answer comes to the listener. Only while CLOSED.
    virtual void connect(const BrokerAddress& server, const BrokerMessage& will) = 0;

    /// Whether any byte of the session's CONNECT can have left this machine, as ended() tells it.
    /// Who gives up waiting asks it ahead of drop().
    virtual bool isConnectSent() const = 0;

    /// @return the request's number, which subscribed() tells; 0: there is no session
    virtual int subscribe(const QStringList& topics) = 0;

    /// Puts the message behind all others in the queue of the socket.
    /// @return the request's number, which delivered() tells for QoS 1; 0: there is no session
    virtual int publish(const BrokerMessage& message) = 0;

    /// Whether the system took everything that was published: more can follow without a queue that
    /// grows.
    virtual bool isDrained() const = 0;

    /// Sends DISCONNECT and closes; the broker forgets the will.
    virtual void leave() = 0;

    /// Closes without a DISCONNECT; the broker publishes the will.
    virtual void drop() = 0;
};

#endif
