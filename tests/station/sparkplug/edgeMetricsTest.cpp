// The rules of Sparkplug about metrics wherever they stand, each under its public name.

#include "plantDay.h"

#include "plant/plantSettings.h"
#include "sparkplug/edgeNames.h"
#include "timeZone.h"

#include <map>
#include <set>

namespace {

/// bdSeq and the control of rebirth.
bool isControl(const ReceivedMetric& metric)
{
    return metric.name && (*metric.name == QLatin1String("bdSeq") ||
                           *metric.name == QLatin1String("Node Control/Rebirth"));
}

void hasNamesThatDifferByMore(const Told& told)
{
    std::set<QString> seen;
    for (const ReceivedMetric& metric : told.payload.metrics)
        EXPECT_TRUE(seen.insert(metric.name.value_or(QString()).toCaseFolded()).second);
}

void hasTypes(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics) {
        EXPECT_GT(metric.type.value_or(0), 0u);
        EXPECT_LE(metric.type.value_or(99), 15u);
    }
}

void hasNoTypes(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics)
        EXPECT_FALSE(metric.type);
}

/// A time of the recorded day, in milliseconds, and none of the future.
void hasMetricTimes(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics) {
        ASSERT_TRUE(metric.time);
        EXPECT_GE(*metric.time, 1700000000000);
        EXPECT_LE(*metric.time, told.wall);
    }
}

void hasNamesOrAliases(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics)
        EXPECT_TRUE((metric.name && !metric.name->isEmpty()) || metric.alias);
}

void hasNamesAndAliases(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics) {
        EXPECT_TRUE(metric.name);
        EXPECT_EQ(isControl(metric), !metric.alias) << metric.name->toStdString();
    }
}

void hasAliasesAlone(const Told& told)
{
    for (const ReceivedMetric& metric : told.payload.metrics) {
        EXPECT_TRUE(metric.alias);
        EXPECT_FALSE(metric.name);
    }
}

void hasQualities(const Told& told)
{
    static const std::set<qint32> codes = {0, 192, 500};
    for (const ReceivedMetric& metric : told.payload.metrics) {
        if (isControl(metric)) continue;
        EXPECT_EQ(3u, metric.qualityType.value_or(0));
        EXPECT_EQ(1u, codes.count(metric.quality.value_or(-1)));
        EXPECT_EQ(1u, metric.keys);
        EXPECT_EQ(1u, metric.properties);
    }
}

void isInOrderOfTimes(const Told& told)
{
    qint64 last = 0;
    for (const ReceivedMetric& metric : told.payload.metrics) {
        if (metric.isHistorical) continue;
        EXPECT_LE(last, metric.time.value_or(0));
        last = metric.time.value_or(0);
    }
}

/// Each NBIRTH with its DBIRTHs.
void expectOneMetricAnAlias()
{
    std::map<quint64, QString> names;
    int births = 0;
    for (const Told& told : plantDay()) {
        if (isNodeBirth(told)) names.clear();
        if (!isBirth(told)) continue;
        ++births;
        for (const ReceivedMetric& metric : told.payload.metrics) {
            if (!metric.alias) continue;
            const QString name = told.device + QLatin1Char(' ') + *metric.name;
            const auto known = names.emplace(*metric.alias, name);
            EXPECT_EQ(name, known.first->second) << "alias " << *metric.alias;
        }
    }
    EXPECT_GT(births, 10);
}

/// Whatever DATA names was in the last birth of the node or the device.
void expectNothingNewInData(bool (*which)(const Told&))
{
    std::map<QString, std::set<quint64>> born;
    int found = 0;
    for (const Told& told : plantDay()) {
        if (isNodeBirth(told)) born.clear();
        if (isBirth(told)) {
            std::set<quint64>& aliases = born[told.device];
            aliases.clear();
            for (const ReceivedMetric& metric : told.payload.metrics)
                aliases.insert(metric.alias.value_or(0));
        }
        if (!which(told)) continue;
        ++found;
        for (const ReceivedMetric& metric : told.payload.metrics)
            EXPECT_EQ(1u, born[told.device].count(*metric.alias)) << told.device.toStdString();
    }
    EXPECT_GT(found, 0);
}

/// A live entry differs in value or quality from what its birth or the last entry said.
void expectChangesOnly(bool (*which)(const Told&))
{
    std::map<quint64, std::pair<quint64, qint32>> last;
    std::map<quint64, QString> texts;
    int found = 0;
    for (const Told& told : plantDay()) {
        if (!isBirth(told) && !isData(told)) continue;
        for (const ReceivedMetric& metric : told.payload.metrics) {
            if (!metric.alias || metric.isHistorical) continue;
            const std::pair<quint64, qint32> now(metric.bits, metric.quality.value_or(-1));
            const bool isSame = last.count(*metric.alias) != 0 && last[*metric.alias] == now &&
                                texts[*metric.alias] == metric.text;
            if (which(told)) {
                ++found;
                EXPECT_FALSE(isSame && !metric.isNull) << "alias " << *metric.alias;
            }
            last[*metric.alias] = now;
            texts[*metric.alias] = metric.text;
        }
    }
    EXPECT_GT(found, 0);
}

/// Only the kinds that are allowed, a device id where there has to be one and nowhere else.
void hasAllowedTopic(const Told& told)
{
    static const std::set<QString> ofNode = {QLatin1String("NBIRTH"), QLatin1String("NDATA"),
                                             QLatin1String("NDEATH")};
    static const std::set<QString> ofDevice = {QLatin1String("DBIRTH"), QLatin1String("DDATA"),
                                               QLatin1String("DDEATH")};
    const QStringList levels = told.message.topic.split(QLatin1Char('/'));
    ASSERT_GE(levels.size(), 4);
    EXPECT_EQ(QLatin1String("spBv1.0"), levels[0]);
    EXPECT_EQ(QLatin1String("works"), levels[1]);
    EXPECT_EQ(QLatin1String("station"), levels[3]);
    EXPECT_EQ(1u, (levels.size() == 4 ? ofNode : ofDevice).count(levels[2]));
    EXPECT_LE(levels.size(), 5);
}

bool isBelowSparkplug(const Told& told)
{
    return told.what == Told::PUBLISH && told.message.topic.startsWith(QLatin1String("spBv1.0"));
}

bool hasAliasData(const Told& told)
{
    return isData(told);
}

/// The times of a plant in Tokyo are those of one anywhere else.
void expectUtc(bool (*which)(const Told&))
{
    const TimeZone here("JST-9");
    EdgeBench bench;
    bench.beBorn();
    bench.take({bench.reading("oven", "count", 1), bench.standing("oven", 1, true)});
    bench.read("oven", "count", 2);
    int found = 0;
    for (const Told& told : bench.session.told) {
        if (!which(told)) continue;
        ++found;
        EXPECT_EQ(1700000000000, *told.payload.time); // the clock of the bench
        for (const ReceivedMetric& metric : told.payload.metrics)
            EXPECT_EQ(1700000000000, *metric.time);
    }
    EXPECT_GT(found, 2);
}

} // namespace

KEPT(payloads_metric_datatype_req, isBirth, hasTypes)
KEPT(payloads_metric_datatype_not_req, isData, hasNoTypes)
KEPT(payloads_name_birth_data_requirement, isNumbered, hasMetricTimes)
KEPT(payloads_name_requirement, isSparkplug, hasNamesOrAliases)
KEPT(payloads_alias_birth_requirement, isBirth, hasNamesAndAliases)
KEPT(payloads_alias_data_cmd_requirement, hasAliasData, hasAliasesAlone)
KEPT(operational_behavior_data_publish_nbirth_order, isNumbered, isInOrderOfTimes)
KEPT(operational_behavior_data_publish_dbirth_order, isDeviceBirth, isInOrderOfTimes)
KEPT(topic_structure, isBelowSparkplug, hasAllowedTopic)
KEPT(topic_structure_namespace_device_id_associated_message_types, isBelowSparkplug,
     hasAllowedTopic)
KEPT(topic_structure_namespace_device_id_non_associated_message_types, isBelowSparkplug,
     hasAllowedTopic)

TEST(EdgeNode, EachEntryOfBirthsAndDataHasItsQuality)
{
    everyOne(isBirth, hasQualities);
    everyOne(isData, hasQualities);
}

TEST(Sparkplug, payloads_alias_uniqueness)
{
    expectOneMetricAnAlias();
}

TEST(Sparkplug, topics_nbirth_metric_reqs)
{
    expectNothingNewInData(isNodeData);
}

TEST(Sparkplug, operational_behavior_data_publish_nbirth)
{
    expectNothingNewInData(isNodeData);
}

TEST(Sparkplug, topics_dbirth_metric_reqs)
{
    expectNothingNewInData(isDeviceData);
}

TEST(Sparkplug, operational_behavior_data_publish_dbirth)
{
    expectNothingNewInData(isDeviceData);
}

TEST(Sparkplug, principles_rbe_recommended)
{
    expectChangesOnly(isData);
}

TEST(Sparkplug, operational_behavior_data_publish_nbirth_change)
{
    expectChangesOnly(isNodeData);
}

TEST(Sparkplug, operational_behavior_data_publish_dbirth_change)
{
    expectChangesOnly(isDeviceData);
}

TEST(Sparkplug, payloads_metric_timestamp_in_utc)
{
    expectUtc(isNumbered);
}

TEST(Sparkplug, payloads_timestamp_in_UTC)
{
    expectUtc(isSparkplug);
}

TEST(Sparkplug, case_sensitivity_metric_names)
{
    everyOne(isBirth, hasNamesThatDifferByMore);
    const std::vector<EdgeDevice> devices = {
        {QLatin1String("oven"), 1, {tagOf("Door", 1, Tag::BOOL), tagOf("door", 1, Tag::BOOL)}}};
    EXPECT_EQ(QStringList(QLatin1String(
                  "link oven, station 1: \"Door\" and \"door\" differ by case alone")),
              metricNameProblems(devices));
}

TEST(Sparkplug, topic_structure_namespace_unique_edge_node_descriptor)
{
    everyOne(isConnect, [](const Told& told) { EXPECT_TRUE(told.isAlone); });

    PlantSettings settings;
    settings.group = QLatin1String("works");
    settings.node = QLatin1String("station");
    EXPECT_EQ("kakb-works-station", sparkplugClientId(settings).toStdString())
        << "a broker keeps one client of a name";
}
