#ifndef RECORDED_SESSION_H
#define RECORDED_SESSION_H

#include "broker/brokerSession.h"

#include <vector>

/// A session that keeps what is asked of it, in order. What a broker would answer is for the test
/// to tell the listener.
class RecordedSession : public BrokerSession
{
public:
    struct Step
    {
        enum Kind { CONNECT, SUBSCRIBE, PUBLISH, LEAVE, DROP };

        Kind kind = CONNECT;
        BrokerAddress server;  ///< CONNECT
        BrokerMessage message; ///< CONNECT: the will; PUBLISH
        QStringList topics;    ///< SUBSCRIBE
        int request = 0;       ///< SUBSCRIBE, PUBLISH
    };

    std::vector<Step> steps;
    bool connectIsSent = true; ///< answer to isConnectSent()
    bool drained = true;       ///< answer to isDrained()

    void connect(const BrokerAddress& server, const BrokerMessage& will) override
    {
        m_isOpen = true;
        steps.push_back({Step::CONNECT, server, will, {}, 0});
    }

    bool isConnectSent() const override
    {
        return connectIsSent;
    }

    int subscribe(const QStringList& topics) override
    {
        if (!m_isOpen) return 0;
        steps.push_back({Step::SUBSCRIBE, {}, {}, topics, ++m_lastRequest});
        return m_lastRequest;
    }

    int publish(const BrokerMessage& message) override
    {
        if (!m_isOpen) return 0;
        steps.push_back({Step::PUBLISH, {}, message, {}, ++m_lastRequest});
        return m_lastRequest;
    }

    bool isDrained() const override
    {
        return drained;
    }

    void leave() override
    {
        m_isOpen = false;
        steps.push_back({Step::LEAVE, {}, {}, {}, 0});
    }

    void drop() override
    {
        m_isOpen = false;
        steps.push_back({Step::DROP, {}, {}, {}, 0});
    }

    /// The session ends by itself; the test tells its listener.
    void cut()
    {
        m_isOpen = false;
    }

    bool isOpen() const
    {
        return m_isOpen;
    }

    /// Everything of a kind, in order.
    std::vector<Step> all(Step::Kind kind) const
    {
        std::vector<Step> found;
        for (const Step& step : steps) {
            if (step.kind == kind) found.push_back(step);
        }
        return found;
    }

private:
    bool m_isOpen = false;
    int m_lastRequest = 0;
};

#endif
