// The rules of Sparkplug about births, each under its public name.

#include "bornBench.h"
#include "plantDay.h"

#include <set>

namespace {

void hasNodeBirthTopic(const Told& told)
{
    EXPECT_EQ(QLatin1String("spBv1.0/works/NBIRTH/station"), told.message.topic);
}

void hasDeviceBirthTopic(const Told& told)
{
    static const std::set<QString> topics = {QLatin1String("spBv1.0/works/DBIRTH/station/oven-1"),
                                             QLatin1String("spBv1.0/works/DBIRTH/station/oven-2"),
                                             QLatin1String("spBv1.0/works/DBIRTH/station/mill-1")};
    EXPECT_EQ(1u, topics.count(told.message.topic));
}

void isBehindAcceptance(const Told& told)
{
    EXPECT_TRUE(told.isAccepted);
}

/// The first PUBLISH of each session that published anything.
void expectNodeBirthFirst()
{
    std::set<int> seen;
    for (const Told& told : plantDay()) {
        if (told.what != Told::PUBLISH || !seen.insert(told.session).second) continue;
        EXPECT_TRUE(isNodeBirth(told)) << told.message.topic.toStdString();
    }
    EXPECT_EQ(3u, seen.size());
}

void hasSeqZero(const Told& told)
{
    ASSERT_TRUE(told.payload.seq) << "0 has to be on the wire";
    EXPECT_EQ(0u, *told.payload.seq);
}

/// A value, or is_null and no value.
void expectWholeMetric(const ReceivedMetric& metric)
{
    ASSERT_TRUE(metric.name);
    ASSERT_TRUE(metric.type);
    EXPECT_EQ(metric.isNull ? 0 : 1, metric.valueFields) << metric.name->toStdString();
}

void hasWholeMetrics(const Told& told)
{
    EXPECT_FALSE(told.payload.metrics.empty());
    for (const ReceivedMetric& metric : told.payload.metrics)
        expectWholeMetric(metric);
}

void hasBirthSequence(const Told& told)
{
    EXPECT_NE(nullptr, told.payload.named("bdSeq"));
}

/// The number of the will of the same session.
void hasBirthSequenceOfWill(const Told& told)
{
    const ReceivedMetric* const metric = told.payload.named("bdSeq");
    ASSERT_NE(nullptr, metric);
    EXPECT_EQ(4u, *metric->type);
    int found = 0;
    for (const Told& connect : plantDay()) {
        if (!isConnect(connect) || connect.session != told.session) continue;
        ++found;
        EXPECT_EQ(connect.payload.named("bdSeq")->bits, metric->bits);
    }
    EXPECT_EQ(1, found);
}

const ReceivedMetric& rebirthMetric(const Told& told)
{
    static const ReceivedMetric none;
    const ReceivedMetric* const metric = told.payload.named("Node Control/Rebirth");
    EXPECT_NE(nullptr, metric);
    return metric != nullptr ? *metric : none;
}

void hasRebirth(const Told& told)
{
    EXPECT_TRUE(rebirthMetric(told).name);
}

void hasBooleanRebirth(const Told& told)
{
    EXPECT_EQ(11u, rebirthMetric(told).type.value_or(0));
    EXPECT_EQ(14, rebirthMetric(told).valueField);
}

void hasFalseRebirth(const Told& told)
{
    hasBooleanRebirth(told);
    EXPECT_EQ(0u, rebirthMetric(told).bits);
}

void hasRebirthWithoutAlias(const Told& told)
{
    hasRebirth(told);
    EXPECT_FALSE(rebirthMetric(told).alias);
}

/// The NBIRTH of its session that stands before it.
const Told* nodeBirthAhead(const Told& told)
{
    const Told* birth = nullptr;
    for (const Told& other : plantDay()) {
        if (&other == &told) break;
        if (other.session == told.session && isNodeBirth(other)) birth = &other;
    }
    return birth;
}

void isBehindNodeBirth(const Told& told)
{
    EXPECT_NE(nullptr, nodeBirthAhead(told));
}

void matchesNodeBirthTopic(const Told& told)
{
    const Told* const birth = nodeBirthAhead(told);
    ASSERT_NE(nullptr, birth);
    const QStringList own = told.message.topic.split(QLatin1Char('/'));
    const QStringList node = birth->message.topic.split(QLatin1Char('/'));
    EXPECT_EQ(node[1], own[1]);
    EXPECT_EQ(node[3], own[3]);
}

} // namespace

KEPT(message_flow_edge_node_birth_publish_connect, isBirth, isBehindAcceptance)
KEPT(topics_nbirth_topic, isNodeBirth, hasNodeBirthTopic)
KEPT(message_flow_edge_node_birth_publish_nbirth_topic, isNodeBirth, hasNodeBirthTopic)
KEPT(topics_nbirth_mqtt, isNodeBirth, isQos0Unretained)
KEPT(payloads_nbirth_qos, isNodeBirth, isQos0)
KEPT(message_flow_edge_node_birth_publish_nbirth_qos, isNodeBirth, isQos0)
KEPT(payloads_nbirth_retain, isNodeBirth, isUnretained)
KEPT(message_flow_edge_node_birth_publish_nbirth_retained, isNodeBirth, isUnretained)
KEPT(message_flow_edge_node_birth_publish_nbirth_payload, isNodeBirth, isReadable)
KEPT(topics_nbirth_seq_num, isNodeBirth, hasSeqZero)
KEPT(payloads_nbirth_seq, isNodeBirth, hasSeqZero)
KEPT(payloads_sequence_num_req_nbirth, isNodeBirth, hasSeqZero)
KEPT(message_flow_edge_node_birth_publish_nbirth_payload_seq, isNodeBirth, hasSeqZero)
KEPT(topics_nbirth_timestamp, isNodeBirth, hasTimeOfSending)
KEPT(payloads_nbirth_timestamp, isNodeBirth, hasTimeOfSending)
KEPT(topics_nbirth_metrics, isNodeBirth, hasWholeMetrics)
KEPT(topics_nbirth_bdseq_included, isNodeBirth, hasBirthSequence)
KEPT(payloads_nbirth_bdseq, isNodeBirth, hasBirthSequence)
KEPT(message_flow_edge_node_birth_publish_nbirth_payload_bdseq, isNodeBirth, hasBirthSequenceOfWill)
KEPT(topics_nbirth_bdseq_matching, isNodeBirth, hasBirthSequenceOfWill)
KEPT(payloads_nbirth_bdseq_repeat, isNodeBirth, hasBirthSequenceOfWill)
KEPT(topics_nbirth_rebirth_metric, isNodeBirth, hasFalseRebirth)
KEPT(payloads_nbirth_rebirth_req, isNodeBirth, hasFalseRebirth)
KEPT(operational_behavior_data_commands_rebirth_name, isNodeBirth, hasRebirth)
KEPT(operational_behavior_data_commands_rebirth_datatype, isNodeBirth, hasBooleanRebirth)
KEPT(operational_behavior_data_commands_rebirth_value, isNodeBirth, hasFalseRebirth)
KEPT(operational_behavior_data_commands_rebirth_name_aliases, isNodeBirth, hasRebirthWithoutAlias)

KEPT(message_flow_device_birth_publish_nbirth_wait, isDeviceBirth, isBehindNodeBirth)
KEPT(topics_dbirth_topic, isDeviceBirth, hasDeviceBirthTopic)
KEPT(message_flow_device_birth_publish_dbirth_topic, isDeviceBirth, hasDeviceBirthTopic)
KEPT(message_flow_device_birth_publish_dbirth_match_edge_node_topic, isDeviceBirth,
     matchesNodeBirthTopic)
KEPT(topics_dbirth_mqtt, isDeviceBirth, isQos0Unretained)
KEPT(payloads_dbirth_qos, isDeviceBirth, isQos0)
KEPT(message_flow_device_birth_publish_dbirth_qos, isDeviceBirth, isQos0)
KEPT(payloads_dbirth_retain, isDeviceBirth, isUnretained)
KEPT(message_flow_device_birth_publish_dbirth_retained, isDeviceBirth, isUnretained)
KEPT(message_flow_device_birth_publish_dbirth_payload, isDeviceBirth, isReadable)
KEPT(payloads_dbirth_seq, isDeviceBirth, hasSeq)
COUNTED(topics_dbirth_seq, isDeviceBirth)
COUNTED(payloads_dbirth_seq_inc, isDeviceBirth)
COUNTED(message_flow_device_birth_publish_dbirth_payload_seq, isDeviceBirth)
KEPT(topics_dbirth_timestamp, isDeviceBirth, hasTimeOfSending)
KEPT(payloads_dbirth_timestamp, isDeviceBirth, hasTimeOfSending)
KEPT(topics_dbirth_metrics, isDeviceBirth, hasWholeMetrics)

TEST(Sparkplug, principles_birth_certificates_order)
{
    expectNodeBirthFirst();
}

TEST(Sparkplug, payloads_dbirth_order)
{
    BornBench bench;
    bench.session.isFull = true; // values wait while the births are asked for
    bench.read("oven", "temperature", 21);
    bench.command("NCMD", QString(), rebirthBytes());
    bench.read("mill", "speed", 3);
    const size_t before = bench.mark();
    bench.session.isFull = false;
    bench.turn();
    bench.read("oven", "temperature", 22);
    const std::vector<Told> after = bench.since(before);
    ASSERT_EQ(4u, after.size());
    EXPECT_TRUE(after[0].is("NBIRTH"));
    EXPECT_TRUE(after[1].is("DBIRTH"));
    EXPECT_TRUE(after[2].is("DBIRTH"));
    EXPECT_TRUE(after[3].is("DDATA"));
}

TEST(Sparkplug, operational_behavior_data_publish_nbirth_values)
{
    EdgeBench bench;
    bench.beBorn();
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.passMs(1000);
    bench.command("NCMD", QString(), rebirthBytes());
    const std::vector<Told> births = bench.all("NBIRTH");
    ASSERT_EQ(2u, births.size());
    EXPECT_EQ(0u, entry(births[0], "Commands/Refused").bits);
    EXPECT_TRUE(entry(births[0], "Commands/Outcome").isNull) << "no command has ended yet";
    EXPECT_EQ(2u, entry(births[1], "Commands/Refused").bits);
    EXPECT_FALSE(entry(births[1], "Commands/Outcome").isNull);
    EXPECT_EQ(0u, entry(births[1], "Buffer/Dropped").bits);
    EXPECT_EQ(0u, entry(births[1], "Buffer/Behind").bits);
}

TEST(Sparkplug, operational_behavior_data_publish_dbirth_values)
{
    BornBench bench;
    bench.read("oven", "temperature", -3.25, STALE);
    bench.command("NCMD", QString(), rebirthBytes());
    const std::vector<Told> births = bench.all("DBIRTH");
    ASSERT_EQ(4u, births.size());
    EXPECT_EQ(20.5, entry(births[0], "temperature").number(9));
    EXPECT_EQ(1u, entry(births[0], "door").bits);
    EXPECT_TRUE(entry(births[0], "count").isNull) << "it was never read";
    EXPECT_EQ(0, entry(births[0], "count").quality.value_or(-1));
    EXPECT_EQ(-70000, entry(births[1], "speed").number(3));
    EXPECT_EQ(-3.25, entry(births[2], "temperature").number(9));
    EXPECT_EQ(500, entry(births[2], "temperature").quality.value_or(-1));
    EXPECT_EQ(192, entry(births[2], "door").quality.value_or(-1));
}
