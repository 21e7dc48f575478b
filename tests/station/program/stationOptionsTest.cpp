#include "program/stationOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// A parsed command line.
struct Parsed
{
    explicit Parsed(std::vector<std::string> words)
    {
        words.insert(words.begin(), "kakb-station");
        std::vector<char*> arguments;
        for (std::string& word : words)
            arguments.push_back(word.data());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        status = parseStationOptions(int(arguments.size()), arguments.data(), options);
        errors = testing::internal::GetCapturedStderr();
        output = testing::internal::GetCapturedStdout();
    }

    StationOptions options;
    std::optional<StationStatus> status;
    std::string output, errors;
};

std::string problemOf(const std::vector<std::string>& words)
{
    const Parsed parsed(words);
    EXPECT_EQ(STATION_USAGE, parsed.status);
    EXPECT_EQ("", parsed.output);
    return parsed.errors;
}

} // namespace

TEST(StationOptions, WithoutAnyTheDefaultsHold)
{
    const Parsed parsed({});
    EXPECT_FALSE(parsed.status);
    EXPECT_FALSE(parsed.options.listen);
    EXPECT_EQ(500, parsed.options.timeoutMs);
    EXPECT_EQ(3, parsed.options.attempts);
    EXPECT_EQ(500, parsed.options.pauseMs);
    EXPECT_FALSE(parsed.options.paceMs);
    EXPECT_FALSE(parsed.options.allowsWrites);
}

TEST(StationOptions, TakeEachOption)
{
    const Parsed parsed({"--listen",
                         "[::1]:0",
                         "--tags",
                         "t.csv",
                         "--link",
                         "tcp:",
                         "--pace",
                         "250ms",
                         "--timeout-ms",
                         "10",
                         "--attempts",
                         "20",
                         "--pause-ms",
                         "30000",
                         "--check",
                         "--state",
                         "st",
                         "--no-history",
                         "--token-file",
                         "tok",
                         "--allow-writes",
                         "--host-name",
                         "a",
                         "--host-name",
                         "b",
                         "--driver",
                         "d.so"});
    ASSERT_FALSE(parsed.status) << parsed.errors;
    const StationOptions& options = parsed.options;
    EXPECT_EQ(0, options.listen->port);
    EXPECT_EQ("t.csv", options.tags.toStdString());
    EXPECT_EQ("tcp:", options.link.toStdString());
    EXPECT_EQ(250, options.paceMs);
    EXPECT_EQ(10, options.timeoutMs);
    EXPECT_EQ(20, options.attempts);
    EXPECT_EQ(30000, options.pauseMs);
    EXPECT_TRUE(options.isCheck);
    EXPECT_EQ("st", options.state.toStdString());
    EXPECT_TRUE(options.hasNoHistory);
    EXPECT_EQ("tok", options.tokenFile.toStdString());
    EXPECT_TRUE(options.allowsWrites);
    EXPECT_EQ("a b", options.hostNames.join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ("d.so", options.driver.toStdString());
}

TEST(StationOptions, AMistakeIsOneSentenceThatBeginsWithTheProgram)
{
    const std::vector<std::string> lines[] = {{"--listen", "8480"},
                                              {"--pace", "3"},
                                              {"--timeout-ms", "9"},
                                              {"--attempts", "21"},
                                              {"--pause-ms", "30001"},
                                              {"--host-name", "a b"},
                                              {"--timeout-ms", "nan"},
                                              {"--nothing"},
                                              {"word"},
                                              {"--config"}};
    for (const std::vector<std::string>& words : lines) {
        const std::string problem = problemOf(words);
        EXPECT_EQ(0U, problem.find("kakb-station: ")) << problem;
        EXPECT_EQ(problem.size() - 1, problem.find('\n')) << problem;
    }
}

TEST(StationOptions, AnUnknownWordIsNamed)
{
    EXPECT_EQ("kakb-station: there is no option \"--nothing\" (kakb-station --help says more)\n",
              problemOf({"--nothing"}));
}

TEST(StationOptions, TheOneLinkIsDescribedByOptionsOrByAFile)
{
    for (const char* const option :
         {"--tags", "--link", "--pace", "--timeout-ms", "--attempts", "--pause-ms"}) {
        const std::string value = std::string(option) == "--pace" ? "1s" : "15";
        EXPECT_EQ(std::string("kakb-station: ") + option +
                      " describes the one link of a station without --config (kakb-station --help "
                      "says more)\n",
                  problemOf({"--config", "a.toml", option, value}));
    }
}

TEST(StationOptions, TheHelpHasTheExitStatuses)
{
    const Parsed parsed({"--help"});
    EXPECT_EQ(STATION_DONE, parsed.status);
    int status = 0;
    for (const char* const meaning : STATION_STATUS_MEANINGS)
        EXPECT_NE(std::string::npos,
                  parsed.output.find("\n  " + std::to_string(status++) + "  " + meaning));
}

TEST(StationOptions, TakeTheBrokersAndWhatIsPublished)
{
    const Parsed parsed({"--mqtt", "mqtt://10.0.0.1:1884", "--mqtt", "mqtts://broker.example",
                         "--mqtt-group", "plant 1", "--mqtt-node", "mixer", "--mqtt-dialect",
                         "json,sparkplug", "--mqtt-primary-host", "scada", "--mqtt-commands"});
    EXPECT_FALSE(parsed.status) << parsed.errors;
    ASSERT_EQ(2U, parsed.options.mqttServers.size());
    EXPECT_EQ("10.0.0.1", parsed.options.mqttServers[0].host.toStdString());
    EXPECT_EQ(1884, parsed.options.mqttServers[0].port);
    EXPECT_FALSE(parsed.options.mqttServers[0].isEncrypted);
    EXPECT_EQ("broker.example", parsed.options.mqttServers[1].host.toStdString());
    EXPECT_EQ(8883, parsed.options.mqttServers[1].port);
    EXPECT_TRUE(parsed.options.mqttServers[1].isEncrypted);
    EXPECT_EQ("plant 1", parsed.options.mqttGroup.toStdString());
    EXPECT_EQ("mixer", parsed.options.mqttNode.toStdString());
    EXPECT_EQ("json sparkplug", parsed.options.mqttDialects.join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ("scada", parsed.options.mqttPrimaryHost.toStdString());
    EXPECT_TRUE(parsed.options.takesMqttCommands);
}

TEST(StationOptions, RefuseIdsAndDialectsThatATopicCannotHave)
{
    for (const char* const id : {"", "a/b", "a+", "#", "a\nb"}) {
        EXPECT_NE("", problemOf({"--mqtt-group", id})) << id;
        EXPECT_NE("", problemOf({"--mqtt-node", id})) << id;
        EXPECT_NE("", problemOf({"--mqtt-primary-host", id})) << id;
    }
    EXPECT_NE("", problemOf({"--mqtt-dialect", "xml"}));
    EXPECT_NE("", problemOf({"--mqtt-dialect", ""}));
    EXPECT_NE("", problemOf({"--mqtt", "http://broker"}));
}
