#include "machine/ownSimulator.h"
#include "machine/simulatorScript.h"

#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

namespace {

class OwnSimulatorTest : public testing::Test
{
protected:
    std::unique_ptr<OwnSimulator> simulator()
    {
        return std::make_unique<OwnSimulator>(script.program(), QStringList(), [this] { ++ends; });
    }

    std::string failureOf(OwnSimulator& own) const
    {
        try {
            own.open(LineSettings());
        } catch (const LinkError& error) {
            return error.what();
        }
        return std::string();
    }

    static void onAnotherThread(const std::function<void()>& work)
    {
        const std::unique_ptr<QThread> thread(QThread::create(work));
        thread->start();
        thread->wait();
    }

    static bool isThere(pid_t process)
    {
        return ::kill(process, 0) == 0; // also true of one that nobody has waited for
    }

    SimulatorScript script;
    int ends = 0;
};

} // namespace

TEST_F(OwnSimulatorTest, IsStartedOnceAndOpened)
{
    const auto own = simulator();
    EXPECT_NE(nullptr, own->open(LineSettings()));
    EXPECT_EQ(1u, script.started().size());
    EXPECT_EQ(0, ends);
}

TEST_F(OwnSimulatorTest, IsStartedAgainByAnotherThreadAndNothingOfTheFirstStays)
{
    const auto own = simulator();
    own->open(LineSettings());
    ::kill(script.started().at(0), SIGKILL);
    onAnotherThread([&] { EXPECT_NE(nullptr, own->open(LineSettings())); });
    ASSERT_EQ(2u, script.started().size());
    EXPECT_FALSE(isThere(script.started()[0]));
    EXPECT_TRUE(isThere(script.started()[1]));
    EXPECT_EQ(1, ends);
}

TEST_F(OwnSimulatorTest, TellsAnEndOnceHoweverOftenTheNextOneDoesNotStart)
{
    const auto own = simulator();
    own->open(LineSettings());
    ::kill(script.started().at(0), SIGKILL);
    script.write("exit 1");
    for (int tries = 0; tries < 3; ++tries)
        EXPECT_EQ(script.program().toStdString() + ": it does not start, or ended at once",
                  failureOf(*own));
    EXPECT_EQ(1, ends);
    EXPECT_EQ(4u, script.started().size());
    script.becomePlc();
    EXPECT_EQ("", failureOf(*own));
    EXPECT_EQ(1, ends);
    own->open(LineSettings());
    EXPECT_EQ(2, ends);
}

TEST_F(OwnSimulatorTest, ThatCannotBeOpenedHasNotEnded)
{
    script.write("echo /dev/null; exec cat");
    const auto own = simulator();
    EXPECT_NE("", failureOf(*own));
    EXPECT_NE("", failureOf(*own));
    EXPECT_EQ(2u, script.started().size());
    script.becomePlc();
    EXPECT_EQ("", failureOf(*own));
    EXPECT_EQ(0, ends);
}

TEST_F(OwnSimulatorTest, LeavesNoProcessBehind)
{
    auto own = simulator();
    own->open(LineSettings());
    onAnotherThread([&] { own->open(LineSettings()); });
    own.reset();
    ASSERT_EQ(2u, script.started().size());
    for (const pid_t process : script.started())
        EXPECT_FALSE(isThere(process));
}

TEST_F(OwnSimulatorTest, ThatDoesNotStartAtFirstIsAnError)
{
    script.write("exit 1");
    EXPECT_THROW(simulator(), LinkError);
}
