#include "simulatorOptions.h"

#include <gtest/gtest.h>

namespace {

SimulatorOptions parsed(std::vector<std::string> words)
{
    words.insert(words.begin(), "kakb-sim");
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(&word[0]);
    CLI::App app("", "kakb-sim");
    return parseOptions(app, int(arguments.size()), arguments.data());
}

} // namespace

TEST(SimulatorOptions, DefaultIsOneStationWithoutPacingOrFaults)
{
    const SimulatorOptions options = parsed({});
    EXPECT_EQ(std::vector<int>{1}, options.stations);
    EXPECT_EQ(0, options.line.baud);
    EXPECT_EQ(-1, options.tcpPort);
    EXPECT_EQ(FaultRates{}, options.faults.rates);
    EXPECT_TRUE(options.signals.empty());
}

TEST(SimulatorOptions, StationsAreGivenSinglyInAListOrInARange)
{
    const SimulatorOptions options =
        parsed({"--station", "9", "--station", "247,3", "--stations", "2-4"});
    EXPECT_EQ((std::vector<int>{2, 3, 4, 9, 247}), options.stations);
}

TEST(SimulatorOptions, StationsMixNumbersAndRanges)
{
    EXPECT_EQ(std::vector<int>{7}, parsed({"--stations", "7"}).stations);
    EXPECT_EQ((std::vector<int>{1, 3, 7}), parsed({"--stations", "7,1,3"}).stations);
    EXPECT_EQ((std::vector<int>{1, 3, 4, 5, 247}),
              parsed({"--stations", "1,3-5,4,247", "--stations", "5"}).stations);
}

TEST(SimulatorOptions, MemoryAtTheStartIsLoadedAndSet)
{
    const MemorySettings memory =
        parsed({"--stations", "1-2", "--load", "old", "--set", "MW100=5", "--set", "2:MX12.3=1"})
            .memory;
    EXPECT_EQ("old", memory.loadFile);
    ASSERT_EQ(2u, memory.assigned.size());
    EXPECT_EQ(1, memory.assigned[0].place.station);
    EXPECT_EQ(3050, memory.assigned[0].place.number);
    EXPECT_EQ(5, memory.assigned[0].value);
    EXPECT_EQ(2, memory.assigned[1].place.station);
    EXPECT_EQ(3099, memory.assigned[1].place.number);
}

TEST(SimulatorOptions, RefusalsAndControlSocketAreGivenByName)
{
    const SimulatorOptions options =
        parsed({"--stations", "1-2", "--refuse", "MW500..MW600:3:write", "--refuse", "2:QW8",
                "--control", "socket"});
    EXPECT_EQ("socket", options.controlPath);
    ASSERT_EQ(2u, options.faults.refusals.size());
    EXPECT_EQ(3, options.faults.refusals[0].code);
    EXPECT_EQ(2, options.faults.refusals[1].station);
}

TEST(SimulatorOptions, EachFaultHasItsRate)
{
    for (int kind = 0; kind < FAULT_KINDS; ++kind) {
        const std::string option = std::string("--") + faultName(static_cast<Fault>(kind));
        EXPECT_EQ(0.25, parsed({option, "0.25"}).faults.rates[std::size_t(kind)]) << option;
    }
}

TEST(SimulatorOptions, SilentStationHasAShareOrIsAlwaysSilent)
{
    const SimulatorOptions options =
        parsed({"--stations", "1-5", "--silent", "2", "--silent", "3:0.25,5:0"});
    EXPECT_EQ((std::map<int, double>{{2, 1.0}, {3, 0.25}, {5, 0.0}}),
              options.faults.silentStations);
}

TEST(SimulatorOptions, DuplicateComesAtOnceOrAfterATime)
{
    const FaultSettings atOnce = parsed({"--duplicate", "0.1"}).faults;
    EXPECT_EQ(0.1, atOnce.rates[FAULT_DUPLICATE]);
    EXPECT_EQ(0, atOnce.duplicateAfterNs);
    const FaultSettings after = parsed({"--duplicate", "1:2.5"}).faults;
    EXPECT_EQ(1, after.rates[FAULT_DUPLICATE]);
    EXPECT_EQ(2500000, after.duplicateAfterNs);
}

TEST(SimulatorOptions, LateHasAShareAndALongestTime)
{
    const FaultSettings faults = parsed({"--late", "0.25:60000"}).faults;
    EXPECT_EQ(0.25, faults.lateShare);
    EXPECT_EQ(60000000000, faults.longestLatenessNs);
    EXPECT_EQ(0, parsed({}).faults.lateShare);
}

TEST(SimulatorOptions, StallComesOnceOrPeriodically)
{
    const StallSettings once = parsed({"--stall", "0.3"}).faults.stall;
    EXPECT_EQ(300000000, once.lengthNs);
    EXPECT_EQ(0, once.everyNs);
    EXPECT_EQ(std::nullopt, once.station);
    EXPECT_EQ(0, once.serviceNs);
    const StallSettings often = parsed({"--stations", "1-3", "--stall", "3599.9:3600",
                                        "--stall-station", "3", "--service-ms", "60000"})
                                    .faults.stall;
    EXPECT_EQ(3599900000000, often.lengthNs);
    EXPECT_EQ(3600000000000, often.everyNs);
    EXPECT_EQ(3, often.station);
    EXPECT_EQ(60000000000, often.serviceNs);
    EXPECT_EQ(0, parsed({}).faults.stall.lengthNs);
}

TEST(SimulatorOptions, EchoIsOffByDefault)
{
    EXPECT_FALSE(parsed({}).echo);
    EXPECT_TRUE(parsed({"--echo"}).echo);
}

TEST(SimulatorOptions, TimesAreConvertedToNanoseconds)
{
    const SimulatorOptions options = parsed({"--turnaround-us", "10000000", "--delay-ms", "60000"});
    EXPECT_EQ(10000000000, options.line.turnaroundNs);
    EXPECT_EQ(60000000000, options.faults.delayNs);
}

TEST(SimulatorOptions, SerialPortDefaultsTo38400Baud)
{
    EXPECT_EQ(38400, parsed({"--serial", "/dev/ttyS0"}).line.baud);
    EXPECT_EQ(9600, parsed({"--serial", "/dev/ttyS0", "--baud", "9600"}).line.baud);
}

TEST(SimulatorOptions, RatesMayAddUpToOne)
{
    std::vector<std::string> words;
    for (int kind = 0; kind < FAULT_KINDS; ++kind) {
        words.push_back(std::string("--") + faultName(static_cast<Fault>(kind)));
        words.push_back("0.1");
    }
    EXPECT_NO_THROW(parsed(words));
}

TEST(SimulatorOptions, ValuesAtTheirLimitsAreAccepted)
{
    const std::vector<std::string> rows[] = {
        {"--station", "1"},
        {"--station", "247"},
        {"--stations", "1-247"},
        {"--tcp", "0"},
        {"--tcp", "65535"},
        {"--baud", "300"},
        {"--baud", "4000000"},
        {"--turnaround-us", "0"},
        {"--turnaround-us", "10000000"},
        {"--seed", "0"},
        {"--seed", "4294967295"},
        {"--drop", "0"},
        {"--drop", "1"},
        {"--exception-code", "1"},
        {"--exception-code", "255"},
        {"--delay-ms", "0"},
        {"--delay-ms", "60000"},
        {"--fault-exchanges", "0"},
        {"--fault-exchanges", "2000000000"},
        {"--silent", "1:0"},
        {"--silent", "1:1"},
        {"--duplicate", "0:0"},
        {"--duplicate", "1:60000"},
        {"--late", "0:0"},
        {"--late", "1:60000"},
        {"--stall", "0.1"},
        {"--stall", "3599.9:3600"},
        {"--stall", "1", "--service-ms", "0"},
        {"--stall", "1", "--service-ms", "60000"},
    };
    for (const std::vector<std::string>& row : rows)
        EXPECT_NO_THROW(parsed(row)) << row[0] << ' ' << row.back();
}

TEST(SimulatorOptions, LinkSeedAndEndAreGivenByName)
{
    const SimulatorOptions options =
        parsed({"--link-path", "link", "--seed", "4294967295", "--report", "report", "--dump",
                "dump", "--until-stdin-ends", "--demo-signals", "--signal", "1:MW:3007:counter"});
    EXPECT_EQ("link", options.linkPath);
    EXPECT_EQ(4294967295u, options.seed);
    EXPECT_EQ("report", options.reportFile);
    EXPECT_EQ("dump", options.dumpFile);
    EXPECT_TRUE(options.untilStdinEnds);
    EXPECT_EQ(demoSignals({1}).size() + 1, options.signals.size());
    EXPECT_EQ(3007, options.signals.back().place.number);
    EXPECT_FALSE(parsed({}).untilStdinEnds);
}

TEST(SimulatorOptions, DemoIsSignalsOrATankOnEachStation)
{
    EXPECT_EQ(demoSignals({1, 2}).size(),
              parsed({"--stations", "1-2", "--demo", "signals"}).signals.size());
    const SimulatorOptions tank = parsed({"--stations", "1-2", "--demo", "tank"});
    EXPECT_EQ((std::vector<int>{1, 2}), tank.tankStations);
    EXPECT_TRUE(tank.signals.empty());
    EXPECT_TRUE(parsed({}).tankStations.empty());
    EXPECT_THROW(parsed({"--demo", "pump"}), CLI::ParseError);
    EXPECT_THROW(parsed({"--demo", "tank", "--demo", "signals"}), CLI::ParseError);
    EXPECT_THROW(parsed({"--demo", "tank", "--demo-signals"}), CLI::ParseError);
}

TEST(SimulatorOptions, TheLinkDecidesHowTheLineIsPaced)
{
    const SimulatorOptions network = parsed({"--tcp", "502", "--bind", "::1"});
    EXPECT_EQ(502, network.tcpPort);
    EXPECT_EQ("::1", network.bindAddress);
    EXPECT_TRUE(network.line.isNetwork);
    EXPECT_FALSE(network.line.isSerialPort);
    EXPECT_TRUE(parsed({"--tcp", "0"}).line.isNetwork);
    const SimulatorOptions serial = parsed({"--serial", "/dev/ttyS0"});
    EXPECT_TRUE(serial.line.isSerialPort);
    EXPECT_FALSE(serial.line.isNetwork);
    const SimulatorOptions terminal = parsed({"--baud", "9600", "--trickle"});
    EXPECT_FALSE(terminal.line.isSerialPort);
    EXPECT_FALSE(terminal.line.isNetwork);
    EXPECT_TRUE(terminal.line.byteByByte);
    EXPECT_EQ(9600, terminal.line.baud);
}

TEST(SimulatorOptions, InvalidOptionsAreUsageErrors)
{
    const std::vector<std::string> rows[] = {
        {"--station", "0"},
        {"--station", "248"},
        {"--stations", "0-2"},
        {"--stations", "4-2"},
        {"--stations", "1-248"},
        {"--stations", "1-2x"},
        {"--stations", ""},
        {"--stations", "1,"},
        {"--stations", "248"},
        {"--stations", "1,3-2"},
        {"--set", "MW100"},
        {"--set", "MW101=1"},
        {"--set", "2:MW100=1"}, // is not served
        {"--refuse", "MW600..MW500"},
        {"--refuse", "2:MW500"},
        {"--tcp", "-1"},
        {"--tcp", "65536"},
        {"--tcp", "0", "--serial", "/dev/ttyS0"},
        {"--tcp", "0", "--link-path", "x"},
        {"--bind", "127.0.0.1"},
        {"--baud", "299"},
        {"--baud", "4000001"},
        {"--trickle"},
        {"--turnaround-us", "-1"},
        {"--turnaround-us", "10000001"},
        {"--seed", "-1"},
        {"--seed", "4294967296"},
        {"--signal", "1:IW:0:wave"},
        {"--signal", "2:IW:0:ramp"},
        {"--drop", "-0.1"},
        {"--drop", "1.1"},
        {"--drop", "nan"},
        {"--exception", "-nan"},
        {"--delay", "inf"},
        {"--drop", "0.6", "--delay", "0.6"},
        {"--exception-code", "0"},
        {"--exception-code", "256"},
        {"--delay-ms", "-1"},
        {"--delay-ms", "60001"},
        {"--silent", "0"},
        {"--silent", "2"}, // is not served
        {"--station", "2", "--silent", "1"},
        {"--silent", "1:1.1"},
        {"--silent", "1:-0.1"},
        {"--silent", "1:nan"},
        {"--silent", "1:"},
        {"--silent", "1:0.5x"},
        {"--silent", "01"},
        {"--silent", "x"},
        {"--fault-exchanges", "-1"},
        {"--fault-exchanges", "2000000001"},
        {"--duplicate", "-0.1"},
        {"--duplicate", "1.1"},
        {"--duplicate", "nan"},
        {"--duplicate", ""},
        {"--duplicate", "0.1:"},
        {"--duplicate", ":5"},
        {"--duplicate", "0.1:-1"},
        {"--duplicate", "0.1:60001"},
        {"--duplicate", "0.1:5:5"},
        {"--duplicate", "0.6", "--delay", "0.6"},
        {"--late", "0.1"},
        {"--late", ""},
        {"--late", "-0.1:5"},
        {"--late", "1.1:5"},
        {"--late", "0.1:-1"},
        {"--late", "0.1:inf"},
        {"--late", "0.1:60001"},
        {"--stall", "0.09"},
        {"--stall", "3600.1"},
        {"--stall", "1e"},
        {"--stall", ""},
        {"--stall", "1:"},
        {"--stall", "1:1"}, // no time between stalls
        {"--stall", "2:1"},
        {"--stall", "1:3601"},
        {"--stall-station", "1"}, // without --stall
        {"--service-ms", "5"},
        {"--stall", "1", "--stall-station", "2"}, // is not served
        {"--stall", "1", "--stall-station", "0"},
        {"--stall", "1", "--service-ms", "-1"},
        {"--stall", "1", "--service-ms", "60001"},
        {"--no-such-option"},
    };
    for (const std::vector<std::string>& row : rows)
        EXPECT_THROW(parsed(row), CLI::ParseError) << row[0] << ' ' << row.back();
}

TEST(SimulatorOptions, UsageErrorsNameOptionAndReason)
{
    struct
    {
        std::vector<std::string> words;
        const char* what;
    } const rows[] = {
        {{"--stations", "4-2"},
         "--stations: '4-2' is neither a station, 1 to 247, nor A-B with A <= B"},
        {{"--signal", "2:IW:0:ramp"}, "--signal: there is no station 2"},
        {{"--silent", "2"}, "--silent: there is no station 2"},
        {{"--silent", "1:"}, "--silent: '1:' is not STATION or STATION:SHARE"},
        {{"--silent", "1:2"}, "--silent: 2 is not from 0 to 1"},
        {{"--duplicate", "x"}, "--duplicate: 'x' is not SHARE or SHARE:AFTER-MS"},
        {{"--duplicate", "1:60001"}, "--duplicate: 60001 is not from 0 to 60000"},
        {{"--late", "0.1"}, "--late: '0.1' is not SHARE:UP-TO-MS"},
        {{"--late", "2:1"}, "--late: 2 is not from 0 to 1"},
        {{"--stall", "x"}, "--stall: 'x' is not SECONDS or SECONDS:EVERY"},
        {{"--stall", "1:1"}, "--stall: '1:1': EVERY has to be more than SECONDS"},
        {{"--stall", "1", "--stall-station", "2"}, "--stall-station: there is no station 2"},
        {{"--drop", "0.6", "--delay", "0.6"}, "the fault rates are more than 1 together"},
        {{"--drop", "nan"}, "--drop: nan is not a number"},
    };
    for (const auto& row : rows) {
        try {
            parsed(row.words);
            ADD_FAILURE() << "taken: " << row.words[0] << ' ' << row.words[1];
        } catch (const CLI::ParseError& error) {
            EXPECT_STREQ(row.what, error.what());
        }
    }
}
