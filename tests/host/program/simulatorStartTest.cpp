#include "program/simulatorStart.h"

#include <gtest/gtest.h>

// The program and the arguments of the simulated PLC that the host starts.

namespace {

Tag tagOf(int station)
{
    Tag tag;
    tag.station = station;
    return tag;
}

LineSettings lineOf(int baud)
{
    LineSettings line;
    line.baud = baud;
    return line;
}

std::string argumentsText(const LinkOptions& options, int baud, const std::vector<Tag>& tags)
{
    return simulatorArguments(options, lineOf(baud), tags).join(QLatin1Char(' ')).toStdString();
}

TEST(SimulatorStart, UsesTheSpeedOfTheLine)
{
    EXPECT_EQ("--station 1 --demo-signals --baud 9600",
              argumentsText(LinkOptions(), 9600, {tagOf(1)}));
    EXPECT_EQ("--station 1 --demo-signals --baud 115200",
              argumentsText(LinkOptions(), 115200, {tagOf(1)}));
}

TEST(SimulatorStart, EachStationOfTheTagsIsServedOnce)
{
    EXPECT_EQ("--station 2 --station 7 --demo-signals --baud 38400",
              argumentsText(LinkOptions(), 38400, {tagOf(7), tagOf(2), tagOf(7)}));
}

TEST(SimulatorStart, UsersArgumentsComeLast)
{
    LinkOptions options;
    options.simulatorArguments = " --drop 0.1   --echo ";
    EXPECT_EQ("--station 1 --demo-signals --baud 38400 --drop 0.1 --echo",
              argumentsText(options, 38400, {tagOf(1)}));
}

TEST(SimulatorStart, UsersProgramReplacesTheCompanion)
{
    LinkOptions options;
    options.simulator = "/opt/other-sim";
    EXPECT_EQ("/opt/other-sim", simulatorProgram(options).toStdString());
}

} // namespace
