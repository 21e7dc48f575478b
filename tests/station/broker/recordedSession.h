#ifndef RECORDED_SESSION_H
#define RECORDED_SESSION_H

#include "broker/brokerSession.h"

#include <limits>
#include <utility>
#include <vector>

/// A broker's session that keeps what was asked of it. The test is the broker: nothing answers
/// unless the test says so.
class RecordedSession : public BrokerSession
{
public:
    enum State { CLOSED, WAITING, OPEN };

    struct Subscription
    {
        int request = 0;
        QStringList topics;
        bool isAnswered = false;
    };

    struct Published
    {
        int request = 0;
        BrokerMessage message;
        bool isDelivered = false; ///< with QoS 1: acknowledged
    };

    /// Set it before the first connect().
    SessionListener* listener = nullptr;

    State state = CLOSED;
    size_t most = std::numeric_limits<size_t>::max(); ///< published messages that the system takes
    bool isFull = false;                              ///< the system takes no more for now
    bool connectIsSent = true;                        ///< what isConnectSent() tells
    int connects = 0, leaves = 0, drops = 0;
    BrokerAddress server; ///< of the last connect()
    BrokerMessage will;   ///< of the last connect()

    // Of the last session.
    std::vector<Subscription> subscriptions;
    std::vector<Published> published;

    // What the broker does.

    void accept()
    {
        state = OPEN;
        listener->connected();
    }

    /// The session is refused, or lost.
    void end(const char* reason, bool connectSent = true)
    {
        state = CLOSED;
        listener->ended(QLatin1String(reason), connectSent);
    }

    /// Answers each subscription that has no answer yet.
    void grant(bool isGranted = true)
    {
        for (size_t at = 0; at < subscriptions.size() && state == OPEN; ++at) {
            if (std::exchange(subscriptions[at].isAnswered, true)) continue;
            listener->subscribed(subscriptions[at].request, isGranted);
        }
    }

    /// Acknowledges what was published with QoS 1 and is not acknowledged yet.
    void acknowledge()
    {
        for (size_t at = 0; at < published.size() && state == OPEN; ++at) {
            if (published[at].message.qos == 0) continue;
            if (std::exchange(published[at].isDelivered, true)) continue;
            listener->delivered(published[at].request);
        }
    }

    void send(const QString& topic, const QByteArray& payload, bool isRetained = false)
    {
        listener->received({topic, payload, 0, isRetained});
    }

    // What the station asks for.

    void connect(const BrokerAddress& address, const BrokerMessage& last) override
    {
        state = WAITING;
        ++connects;
        server = address;
        will = last;
        subscriptions.clear();
        published.clear();
    }

    bool isConnectSent() const override
    {
        return connectIsSent;
    }

    int subscribe(const QStringList& topics) override
    {
        if (state != OPEN) return 0;
        subscriptions.push_back({++m_request, topics, false});
        return m_request;
    }

    int publish(const BrokerMessage& message) override
    {
        if (state != OPEN) return 0;
        published.push_back({++m_request, message, false});
        return m_request;
    }

    bool isDrained() const override
    {
        return !isFull && published.size() < most;
    }

    void leave() override
    {
        state = CLOSED;
        ++leaves;
    }

    void drop() override
    {
        state = CLOSED;
        ++drops;
    }

private:
    int m_request = 0;
};

#endif
