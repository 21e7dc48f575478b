// The simulated PLC that a host has for itself: its terminal is another program's once it is gone.

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

/// Gone too when Qt has noticed before.
void waitUntilAChildHasEnded()
{
    siginfo_t ended = {};
    waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT);
}

} // namespace

TEST(SimulatedPlc, IsOpenedOnce)
{
    SimulatedPlc plc(QString::fromLatin1(KAKB_SIMULATOR_FILE), QStringList());
    EXPECT_EQ("it was opened", openingFailure(plc));
    EXPECT_EQ(HAS_ENDED, openingFailure(plc));
}

TEST(SimulatedPlc, IsNotOpenedWhenItHasEndedBefore)
{
    // A terminal that can be opened, by a program that is gone.
    SimulatedPlc plc(QString::fromLatin1("/bin/sh"),
                     {QString::fromLatin1("-c"), QString::fromLatin1("echo /dev/ptmx")});
    waitUntilAChildHasEnded();
    EXPECT_EQ(HAS_ENDED, openingFailure(plc));
}
