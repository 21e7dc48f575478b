// Names and aliases of devices and metrics.

#include "edgeBench.h"

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
