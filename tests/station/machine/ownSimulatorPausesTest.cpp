#include "machine/machineTest.h"
#include "machine/simulatorScript.h"

#include <csignal>
#include <ctime>

// The pauses between the starts of a simulated PLC that ends, or does not start. The link's thread
// is real: a busy machine can make each pause longer, and none shorter.

namespace {

enum { FIRST_PAUSE_MS = 20 };

/// On the clock of the script's starts, which shows hundredths of a second.
enum { SHOWN_MS = 10 };

qint64 nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
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

    /// From the end of a PLC that has answered to the next start.
    qint64 pauseBehindAnAnswer()
    {
        EXPECT_TRUE(news.await([&] { return areAllGood(plc); }));
        const size_t count = script.starts().size();
        const qint64 end = nowMs();
        killLast();
        if (!awaitStarts(count + 1)) return qint64(News::PATIENCE_S) * 1000;
        const qint64 pause = script.starts()[count].time - end;
        EXPECT_GE(pause, FIRST_PAUSE_MS - SHOWN_MS);
        return pause;
    }

    SimulatorScript script;
    const LinkSurroundings ofScript;
    MachineLink plc;
};

TEST_F(OwnSimulatorPausesTest, AreTwiceAsLongEachTimeUntilOneAnswers)
{
    enum { RESTARTS = 7, TRIES = 3 };
    script.write("exit 1");
    const qint64 end = nowMs();
    killLast();
    ASSERT_TRUE(awaitStarts(1 + RESTARTS));
    const std::vector<SimulatorScript::Start> starts = script.starts();
    qint64 before = end;
    qint64 pause = FIRST_PAUSE_MS;
    for (size_t restart = 1; restart <= RESTARTS; ++restart, pause *= 2) {
        EXPECT_GE(starts[restart].time - before, pause - SHOWN_MS) << "restart " << restart;
        before = starts[restart].time;
    }

    script.becomePlc();
    ASSERT_TRUE(awaitStarts(2 + RESTARTS));
    EXPECT_GE(script.starts()[1 + RESTARTS].time - before, pause - SHOWN_MS) << "the longest one";
    qint64 shortest = pause;
    for (int tries = 0; tries < TRIES && shortest >= pause; ++tries)
        shortest = std::min(shortest, pauseBehindAnAnswer());
    EXPECT_LT(shortest, pause) << "the first pause again";
}
