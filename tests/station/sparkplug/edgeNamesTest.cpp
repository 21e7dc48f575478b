// Names and aliases of devices and metrics.

#include "edgeBench.h"

#include "broker/strangeNames.h"
#include "sparkplug/edgeNames.h"

#include <gtest/gtest.h>

#include <set>

TEST(Sparkplug, case_sensitivity_sparkplug_ids)
{
    std::vector<EdgeDevice> devices;
    for (const char* const link : {"a/b", "a+b", "A_B", "a_b"})
        devices.push_back({QLatin1String(link), 1, {}});
    std::set<QString> ids;
    for (const QString& id : deviceIds(devices)) {
        EXPECT_FALSE(id.contains(QLatin1Char('/')) || id.contains(QLatin1Char('+')));
        EXPECT_TRUE(ids.insert(id.toCaseFolded()).second) << id.toStdString();
    }
}

TEST(EdgeNames, ADeviceIsNamedByItsLinkAndStation)
{
    const std::vector<EdgeDevice> devices = {{QLatin1String("plc"), 1, {}},
                                             {QLatin1String("plc"), 12, {}},
                                             {QLatin1String("%1"), 2, {}}};
    EXPECT_EQ((std::vector<QString>{QLatin1String("plc-1"), QLatin1String("plc-12"),
                                    QLatin1String("%1-2")}),
              deviceIds(devices));
}

TEST(EdgeNames, ALinkWhoseNameNoTopicCanHoldHasAnUnderscoreInItsId)
{
    const auto idOf = [](const char* link) {
        return deviceIds({{QLatin1String(link), 1, {}}}).front().toStdString();
    };
    EXPECT_EQ("mixer_1-1", idOf("mixer#1"));
    EXPECT_EQ("mixer_1-1", idOf("mixer+1"));
    EXPECT_EQ("mixer_1-1", idOf("mixer/1"));
    EXPECT_EQ("___-1", idOf("#+/"));
}

TEST(EdgeNames, LinksThatWouldShareAnIdAreNumberedAndTheirStationsStayTogether)
{
    std::vector<EdgeDevice> devices;
    for (const char* const link : {"oven#1", "oven+1", "oven/1", "OVEN_1", "oven_1-2"})
        for (const int station : {1, 2})
            devices.push_back({QLatin1String(link), station, {}});
    std::vector<std::string> ids;
    for (const QString& id : deviceIds(devices))
        ids.push_back(id.toStdString());
    EXPECT_EQ((std::vector<std::string>{"oven_1-3-1", "oven_1-3-2", "oven_1-4-1", "oven_1-4-2",
                                        "oven_1-5-1", "oven_1-5-2", "OVEN_1-1", "OVEN_1-2",
                                        "oven_1-2-1", "oven_1-2-2"}),
              ids);
}

TEST(EdgeNames, NoTwoDevicesShareAnIdWhateverTheirLinksAreNamed)
{
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        std::vector<EdgeDevice> devices;
        for (const QString& link : strangeNames(60, random))
            for (const int station : {1, 2, 12, 247})
                devices.push_back({link, station, {}});
        std::set<QString> ids;
        for (const QString& id : deviceIds(devices)) {
            ASSERT_TRUE(ids.insert(id.toCaseFolded()).second) << seed << ": " << id.toStdString();
            for (const char wildcard : {'#', '+', '/'})
                ASSERT_FALSE(id.contains(QLatin1Char(wildcard))) << seed << id.toStdString();
        }
    }
}

TEST(EdgeNode, NamesOfTagsAreThoseOfItsMetricsWhateverTheyHold)
{
    EdgeBench bench;
    EdgeDevice device{QLatin1String("mixer#1"), 1, {}};
    for (const char* const name : {"a+b", "a#b", "a/b", "#", "+"})
        device.tags.push_back(tagOf(name, 1, Tag::UINT16));
    bench.node.setDevices({device});
    bench.beBorn();
    bench.stand("mixer#1", 1, true);
    const Told birth = bench.session.told.back();
    EXPECT_EQ("spBv1.0/works/DBIRTH/station/mixer_1-1", birth.message.topic.toStdString());
    std::set<std::string> names;
    for (const ReceivedMetric& metric : birth.payload.metrics)
        names.insert(metric.name->toStdString());
    ASSERT_EQ((std::set<std::string>{"a+b", "a#b", "a/b", "#", "+"}), names);
    bench.read("mixer#1", "a#b", 7);
    const Told data = bench.session.told.back();
    EXPECT_EQ("spBv1.0/works/DDATA/station/mixer_1-1", data.message.topic.toStdString());
    EXPECT_EQ(birth.payload.named("a#b")->alias, data.payload.metrics.at(0).alias);
}

TEST(EdgeNames, AFolderIsNoMetricToo)
{
    const QString oven = QLatin1String("oven");
    EXPECT_EQ(QStringList(), metricNameProblems({{oven,
                                                  1,
                                                  {tagOf("pump/speed", 1, Tag::UINT16),
                                                   tagOf("pump/on", 1, Tag::BOOL),
                                                   tagOf("pumps", 1, Tag::BOOL)}}}));
    EXPECT_EQ(QStringList(QLatin1String(
                  "link oven, station 1: \"Pump\" is a metric and the folder of \"pump/speed\"")),
              metricNameProblems(
                  {{oven, 1, {tagOf("pump/speed", 1, Tag::UINT16), tagOf("Pump", 1, Tag::BOOL)}}}));
    EXPECT_EQ(1, metricNameProblems({{oven, 1, {tagOf("commands/outcome", 1, Tag::BOOL)}}}).size());
    EXPECT_EQ(1, metricNameProblems({{oven, 1, {tagOf("Commands", 1, Tag::BOOL)}}}).size());
    EXPECT_EQ(QStringList(), metricNameProblems({{oven, 1, {tagOf("a", 1, Tag::BOOL)}},
                                                 {oven, 2, {tagOf("A", 2, Tag::BOOL)}}}));
}

/// The alias of each tag of the last births, by "device tag".
static std::map<QString, quint64> aliases(const EdgeBench& bench)
{
    std::map<QString, quint64> found;
    for (const Told& birth : bench.all("DBIRTH")) {
        for (const ReceivedMetric& metric : birth.payload.metrics)
            found[birth.device + QLatin1Char(' ') + *metric.name] = *metric.alias;
    }
    return found;
}

TEST(EdgeNode, AliasesStayWhenDevicesAndTagsComeAndGo)
{
    EdgeBench bench;
    bench.beBorn();
    bench.take({bench.standing("oven", 1, true), bench.standing("mill", 1, true)});
    const std::map<QString, quint64> before = aliases(bench);
    std::vector<EdgeDevice> devices = plantDevices();
    devices.erase(devices.begin());
    devices.back().tags.erase(devices.back().tags.begin());
    bench.node.setDevices(devices);
    bench.turn();
    bench.node.setDevices(plantDevices());
    bench.turn();
    bench.stand("oven", 1, true);
    EXPECT_EQ(before, aliases(bench));
    EXPECT_EQ(7u, before.size()) << "five tags, and two devices that take commands";
}
