// The simulated PLC that a host starts itself. After its end, another program may get its terminal.

#include "links/simulatedPlc.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

namespace {

const char* const HAS_ENDED = "the simulated PLC has ended";

std::string openingFailure(SimulatedPlc& plc)
{
    try {
        plc.open(LineSettings());
    } catch (const LinkError& error) {
        return error.what();
    }
    return "it was opened";
}

/// Also returns when Qt has already collected the child's status.
void waitUntilAChildHasEnded()
{
    siginfo_t ended = {};
    waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT);
}

} // namespace

TEST(SimulatedPlc, IsOpenedOnlyOnce)
{
    SimulatedPlc plc(QString::fromLatin1(KAKB_SIMULATOR_FILE), QStringList());
    EXPECT_EQ("it was opened", openingFailure(plc));
    EXPECT_EQ(HAS_ENDED, openingFailure(plc));
}

TEST(SimulatedPlc, IsNotOpenedAfterItsEnd)
{
    // The terminal can be opened although its program has ended.
    SimulatedPlc plc(QString::fromLatin1("/bin/sh"),
                     {QString::fromLatin1("-c"), QString::fromLatin1("echo /dev/ptmx")});
    waitUntilAChildHasEnded();
    EXPECT_EQ(HAS_ENDED, openingFailure(plc));
}
