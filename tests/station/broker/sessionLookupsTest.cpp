#include "broker/drivenSession.h"
#include "values/testClock.h"

#include <unistd.h>

#include <atomic>
#include <future>

// Servers of names that do not answer.

namespace {

/// A lookup that waits until the test ends it; it finds nothing.
class HeldNames
{
public:
    ~HeldNames()
    {
        answer();
        while (m_state->begun != m_state->ended)
            ::poll(nullptr, 0, 1);
    }

    HostLookup::Resolve resolve() const
    {
        return [state = m_state, isAnswered = m_isAnswered](const QByteArray& name) {
            ++state->begun;
            isAnswered.wait();
            ++state->ended;
            return HostLookup::Found{QStringList(), QString::fromUtf8("nobody knows " + name)};
        };
    }

    void answer()
    {
        if (!std::exchange(m_wasAnswered, true)) m_answer.set_value();
    }

    int begun() const
    {
        return m_state->begun;
    }

private:
    struct State
    {
        std::atomic<int> begun{0}, ended{0};
    };

    const std::shared_ptr<State> m_state = std::make_shared<State>();
    std::promise<void> m_answer;
    const std::shared_future<void> m_isAnswered = m_answer.get_future().share();
    bool m_wasAnswered = false;
};

/// A session whose first try was given up before its lookup had an answer, and that has one now.
class SlowLookup : public SessionListener
{
public:
    explicit SlowLookup(HeldNames& names)
        : session(DrivenSession::named(), clock, names.resolve()),
          address(*brokerAddress(QLatin1String("mqtt://plant")))
    {
        session.setListener(*this);
        session.connect(address, DrivenSession::will());
        const pollfd lookup = {::dup(session.awaited().fd), POLLIN, 0};
        session.drop();
        names.answer();
        pollfd answered = lookup;
        EXPECT_EQ(1, ::poll(&answered, 1, PATIENCE_MS));
        ::close(lookup.fd);
    }

    void driveUntilEnded()
    {
        for (int turns = 0; turns < PATIENCE_MS && reason.isEmpty(); ++turns) {
            pollfd awaited = session.awaited();
            ::poll(&awaited, 1, 1);
            session.drive(awaited.revents);
        }
        EXPECT_FALSE(reason.isEmpty());
    }

    void connected() override {}
    void ended(const QString& why, bool) override
    {
        reason = why;
    }
    void subscribed(int, bool) override {}
    void delivered(int) override {}
    void received(const BrokerMessage&) override {}

    enum { PATIENCE_MS = 20000 };

    TestClock clock;
    MosquittoSession session;
    const BrokerAddress address;
    QString reason;
};

} // namespace

/// The lookup of the system may wait for minutes, or for ever: each try to connect must not leave
/// another thread behind.
TEST(SessionLookups, ANameIsLookedUpOnceAtATimeHoweverOftenASessionIsTried)
{
    enum { TRIES = 20 };
    HeldNames names;
    DrivenSession driven(DrivenSession::named(), names.resolve());
    for (int i = 0; i < TRIES; ++i) {
        driven.session.connect(driven.address("plant"), DrivenSession::will());
        driven.session.drive(0);
        driven.session.drop();
    }
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.until([&] { return names.begun() > 0; });
    names.answer();
    driven.untilTold("ended unsent nobody knows plant");
    EXPECT_EQ(1, names.begun());
}

TEST(SessionLookups, AnotherNameDoesNotWaitForOneThatNobodyAnswers)
{
    HeldNames names;
    DrivenSession driven(DrivenSession::named(), names.resolve());
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.until([&] { return names.begun() == 1; });
    driven.session.drop();
    driven.session.connect(driven.address("spare"), DrivenSession::will());
    driven.until([&] { return names.begun() == 2; });
    driven.session.drop();
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    names.answer();
    driven.untilTold("ended unsent nobody knows plant");
}

/// Servers of names that take longer than the patience of a try.
TEST(SessionLookups, AnAnswerThatComesBetweenTwoTriesIsUsed)
{
    HeldNames names;
    SlowLookup slow(names);
    slow.clock.passMs(30000);
    slow.session.connect(slow.address, DrivenSession::will());
    slow.session.drive(0);
    EXPECT_EQ(QLatin1String("nobody knows plant"), slow.reason);
    EXPECT_EQ(1, names.begun());
}

/// Addresses change.
TEST(SessionLookups, AnAnswerThatCameLongAgoIsNotUsed)
{
    HeldNames names;
    SlowLookup slow(names);
    slow.clock.passMs(60001);
    slow.session.connect(slow.address, DrivenSession::will());
    slow.driveUntilEnded();
    EXPECT_EQ(2, names.begun());
}
