#include "broker/drivenSession.h"

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

/// Addresses may have changed since.
TEST(SessionLookups, AnAnswerThatCameBetweenTwoTriesIsNotUsed)
{
    HeldNames names;
    std::atomic<int> answers{0};
    const auto counting = [&answers, held = names.resolve()](const QByteArray& name) {
        const HostLookup::Found found = held(name);
        ++answers;
        return found;
    };
    DrivenSession driven(DrivenSession::named(), counting);
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.session.drop();
    names.answer();
    driven.until([&] { return answers == 1; });
    for (int tries = 1; names.begun() < 2; ++tries) { // its thread may not have told it yet
        ASSERT_LT(tries, 10000);
        driven.session.connect(driven.address("plant"), DrivenSession::will());
        driven.session.drop();
        ::poll(nullptr, 0, 1);
    }
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.untilTold("ended unsent nobody knows plant");
    driven.until([&] { return answers == names.begun(); });
}
