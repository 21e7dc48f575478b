#include "machine/machineTest.h"
#include "machine/simulatorScript.h"

#include <csignal>

// The pauses between the starts of a simulated PLC that ends, or does not start. The link's thread
// is real: a busy machine can make each pause longer, and none shorter.

namespace {

enum : qint64 { MS = 1000, FIRST_PAUSE_MS = 20 };

qint64 nowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

} // namespace

class OwnSimulatorPausesTest : public MachineTest
{
protected:
    OwnSimulatorPausesTest()
        : ofScript{clock, events, {&news}, QString::fromUtf8(KAKB_DRIVER_FILE), script.program()},
          plc(configured(), ofScript, copies, audit)
    {
        plc.start();
        EXPECT_TRUE(news.await([&] { return areAllGood(plc); }));
    }

    LinkConfig configured()
    {
        LinkConfig simulated = config(QLatin1String("sim"), tags({"MW100"}));
        simulated.pauseMs = FIRST_PAUSE_MS;
        return simulated;
    }

    void killLast()
    {
        ASSERT_FALSE(script.starts().empty());
        ::kill(script.starts().back().process, SIGKILL);
    }

    bool awaitStarts(size_t count)
    {
        return news.await([&] { return script.starts().size() >= count; });
    }

    SimulatorScript script;
    const LinkSurroundings ofScript;
    MachineLink plc;
};

TEST_F(OwnSimulatorPausesTest, AreTwiceAsLongEachTimeUntilOneAnswers)
{
    enum { RESTARTS = 7 };
    script.write("exit 1");
    const qint64 end = nowUs();
    killLast();
    ASSERT_TRUE(awaitStarts(1 + RESTARTS));
    const std::vector<SimulatorScript::Start> starts = script.starts();
    qint64 before = end;
    qint64 pause = FIRST_PAUSE_MS * MS;
    for (size_t restart = 1; restart <= RESTARTS; ++restart, pause *= 2) {
        EXPECT_GE(starts[restart].time - before, pause) << "restart " << restart;
        before = starts[restart].time;
    }

    script.becomePlc();
    ASSERT_TRUE(awaitStarts(2 + RESTARTS));
    EXPECT_GE(script.starts().back().time - before, pause) << "the longest one";
    ASSERT_TRUE(news.await([&] { return areAllGood(plc); }));
    const qint64 secondEnd = nowUs();
    killLast();
    ASSERT_TRUE(awaitStarts(3 + RESTARTS));
    EXPECT_GE(script.starts().back().time - secondEnd, FIRST_PAUSE_MS * MS);
    EXPECT_LT(script.starts().back().time - secondEnd, pause) << "the first pause again";
}
