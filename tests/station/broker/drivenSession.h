#ifndef DRIVEN_SESSION_H
#define DRIVEN_SESSION_H

#include "broker/mosquittoSession.h"

#include "broker/barePeer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

/// The system's clock, on a machine that may sleep.
class SleepingClock : public SystemClock
{
public:
    qint64 steady() const override
    {
        return SystemClock::steady() + m_slept;
    }
    void sleepMs(qint64 ms)
    {
        m_slept += ms * 1000;
    }

private:
    qint64 m_slept = 0;
};

/// A session with a peer of its own, driven by the test's thread; what it tells is noted in words.
class DrivenSession : public SessionListener
{
public:
    explicit DrivenSession(const ClientSettings& settings = named(),
                           const HostLookup::Resolve& resolve = HostLookup::bySystem)
        : session(settings, clock, resolve)
    {
        session.setListener(*this);
    }

    static ClientSettings named()
    {
        ClientSettings settings;
        settings.clientId = QLatin1String("press");
        return settings;
    }

    BrokerAddress address(const char* host = "127.0.0.1") const
    {
        BrokerAddress address;
        address.host = QLatin1String(host);
        address.port = peer.port();
        return address;
    }

    static BrokerMessage will()
    {
        return {QLatin1String("plant/death"), "17", 1, false};
    }

    /// Drives both ends until the condition holds. One that never holds fails the test.
    void until(const std::function<bool()>& isDone)
    {
        enum { LIMIT_US = 20000000, TURN_MS = 10 };
        const qint64 limit = clock.steady() + LIMIT_US;
        while (!isDone()) {
            ASSERT_LT(clock.steady(), limit) << told.join('\n').toStdString();
            pollfd awaited = session.awaited();
            ::poll(&awaited, 1, session.due() <= clock.steady() ? 0 : TURN_MS);
            session.drive(awaited.revents);
            if (isPeerReading) peer.read();
        }
    }

    void untilTold(const char* text)
    {
        until([&] { return hasTold(text); });
    }

    bool hasTold(const char* text) const
    {
        return std::any_of(told.begin(), told.end(),
                           [text](const QByteArray& one) { return one.contains(text); });
    }

    /// A session that the peer has accepted.
    void open()
    {
        session.connect(address(), will());
        until([&] { return !peer.taken().isEmpty(); });
        peer.send(QByteArray::fromHex("20020000"));
        untilTold("connected");
    }

    void connected() override
    {
        note("connected");
    }
    void ended(const QString& reason, bool connectSent) override
    {
        note("ended " + QByteArray(connectSent ? "sent " : "unsent ") + reason.toUtf8());
    }
    void subscribed(int request, bool isGranted) override
    {
        note("subscribed " + QByteArray::number(request) + (isGranted ? " yes" : " no"));
    }
    void delivered(int request) override
    {
        note("delivered " + QByteArray::number(request));
    }
    void received(const BrokerMessage& message) override
    {
        note("received " + message.topic.toUtf8() + " " + message.payload +
             (message.isRetained ? " retained" : ""));
    }

    BarePeer peer;
    bool isPeerReading = true;
    QByteArrayList told;
    std::function<void(const QByteArray&)> react; ///< called with what is told
    SleepingClock clock;
    MosquittoSession session;

private:
    void note(const QByteArray& text)
    {
        told << text;
        if (react) react(text);
    }
};

#endif
