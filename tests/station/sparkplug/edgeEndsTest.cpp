// The rules of Sparkplug about a session's begin and end, each under its public name: CONNECT and
// will, subscriptions, NDEATH.

#include "plantDay.h"

#include <set>

namespace {

const char NODE_DEATH[] = "spBv1.0/works/NDEATH/station";

void hasWill(const Told& told)
{
    EXPECT_FALSE(told.message.topic.isEmpty());
    EXPECT_FALSE(told.message.payload.isEmpty());
}

void isNodeDeathKind(const Told& told)
{
    EXPECT_EQ(QLatin1String("NDEATH"), told.kind);
}

void hasNodeDeathTopic(const Told& told)
{
    EXPECT_EQ(QLatin1String(NODE_DEATH), told.message.topic);
}

void isQos1(const Told& told)
{
    EXPECT_EQ(1, told.message.qos);
}

void hasOnlyBirthSequence(const Told& told)
{
    ASSERT_EQ(1u, told.payload.metrics.size());
    ASSERT_TRUE(told.payload.metrics[0].name);
    EXPECT_EQ(QLatin1String("bdSeq"), *told.payload.metrics[0].name);
}

void hasNoSeq(const Told& told)
{
    EXPECT_FALSE(told.payload.seq);
}

/// The number in a birth or a death.
quint64 birthSequence(const Told& told)
{
    const ReceivedMetric* const metric = told.payload.named("bdSeq");
    EXPECT_NE(nullptr, metric);
    if (metric == nullptr) return 999;
    EXPECT_EQ(4u, metric->type.value_or(0));
    EXPECT_EQ(11, metric->valueField);
    return metric->bits;
}

/// The births of a session, and its CONNECT, have one number with this death.
void matchesItsSession(const Told& death)
{
    int found = 0;
    for (const Told& told : plantDay()) {
        if (told.session != death.session || !(isNodeBirth(told) || isConnect(told))) continue;
        ++found;
        EXPECT_EQ(birthSequence(told), birthSequence(death));
    }
    EXPECT_GT(found, 0);
}

/// Counts CONNECTs that left; one that did not is given its number again.
void expectCountedConnects()
{
    std::vector<quint64> numbers;
    for (const Told& told : plantDay()) {
        if (isConnect(told)) numbers.push_back(birthSequence(told));
    }
    // 253 was the last one; the first CONNECT of the day did not leave.
    EXPECT_EQ((std::vector<quint64>{254, 254, 255, 0}), numbers);
}

/// What the session asked for ahead of this birth, and was granted.
std::set<QString> grantedAhead(const Told& birth)
{
    std::set<QString> topics;
    if (!birth.isGranted) return topics;
    for (const Told& told : plantDay()) {
        if (&told == &birth) break;
        if (told.session != birth.session || told.what != Told::SUBSCRIBE) continue;
        for (const QString& topic : told.topics)
            topics.insert(topic);
    }
    return topics;
}

void isBehindNodeSubscription(const Told& birth)
{
    EXPECT_EQ(1u, grantedAhead(birth).count(QLatin1String("spBv1.0/works/NCMD/station")));
}

void isBehindDeviceSubscription(const Told& birth)
{
    EXPECT_EQ(1u, grantedAhead(birth).count(QLatin1String("spBv1.0/works/DCMD/station/+")));
}

/// Each DISCONNECT of a session with births stands straight behind its NDEATH.
void expectDeathAheadOfDisconnect()
{
    const std::vector<Told>& day = plantDay();
    int found = 0;
    for (size_t i = 1; i < day.size(); ++i) {
        if (day[i].what != Told::LEAVE) continue;
        ++found;
        EXPECT_TRUE(isNodeDeath(day[i - 1])) << day[i - 1].message.topic.toStdString();
    }
    EXPECT_EQ(2, found) << "the primary host offline, and the stop";
}

} // namespace

KEPT(message_flow_edge_node_birth_publish_will_message, isConnect, hasWill)
KEPT(payloads_ndeath_will_message, isConnect, isNodeDeathKind)
KEPT(message_flow_edge_node_birth_publish_will_message_topic, isConnect, hasNodeDeathTopic)
KEPT(message_flow_edge_node_birth_publish_will_message_payload, isConnect, isReadable)
KEPT(message_flow_edge_node_birth_publish_will_message_qos, isConnect, isQos1)
KEPT(payloads_ndeath_will_message_qos, isAnyNodeDeath, isQos1)
KEPT(message_flow_edge_node_birth_publish_will_message_will_retained, isConnect, isUnretained)
KEPT(payloads_ndeath_will_message_retain, isAnyNodeDeath, isUnretained)
KEPT(topics_ndeath_payload, isAnyNodeDeath, hasOnlyBirthSequence)
KEPT(topics_ndeath_seq, isAnyNodeDeath, hasNoSeq)
KEPT(payloads_ndeath_seq, isAnyNodeDeath, hasNoSeq)
KEPT(topics_ndeath_topic, isAnyNodeDeath, hasNodeDeathTopic)
KEPT(payloads_ndeath_bdseq, isNodeDeath, matchesItsSession)
KEPT(message_flow_edge_node_ncmd_subscribe, isNodeBirth, isBehindNodeSubscription)

TEST(Sparkplug, message_flow_edge_node_birth_publish_will_message_payload_bdSeq)
{
    expectCountedConnects();
}

TEST(Sparkplug, topics_nbirth_bdseq_increment)
{
    expectCountedConnects();
    EdgeBench bench;
    bench.beBorn();
    EXPECT_EQ(0u, birthSequence(bench.all("NBIRTH").front())) << "a node without memory";
}

TEST(Sparkplug, message_flow_device_dcmd_subscribe)
{
    everyOne(isDeviceBirth, isBehindDeviceSubscription);

    EdgeBench::Setup setup;
    setup.takesCommands = false;
    EdgeBench bench(setup);
    bench.beBorn();
    ASSERT_EQ(1u, bench.session.subscriptions.size());
    EXPECT_EQ(QStringList(QLatin1String("spBv1.0/works/NCMD/station")),
              bench.session.subscriptions[0].topics);
}

TEST(Sparkplug, operational_behavior_edge_node_intentional_disconnect_ndeath)
{
    expectDeathAheadOfDisconnect();
}

TEST(Sparkplug, payloads_ndeath_will_message_publisher)
{
    expectDeathAheadOfDisconnect();
}

TEST(Sparkplug, payloads_ndeath_will_message_publisher_disconnect_mqtt311)
{
    EdgeBench bench;
    bench.beBorn();
    bench.node.leave();
    EXPECT_TRUE(bench.session.told.back().is("NDEATH"));
    EXPECT_EQ(0, bench.session.leaves) << "its acknowledgement is awaited";
    bench.acknowledge();
    EXPECT_EQ(1, bench.session.leaves);
    EXPECT_TRUE(bench.node.isOver());
}

TEST(Sparkplug, operational_behavior_edge_node_intentional_disconnect_packet)
{
    EdgeBench bench;
    bench.beBorn();
    bench.stand("oven", 1, true);
    bench.node.leave();
    const size_t before = bench.mark();
    bench.read("oven", "temperature", 5);
    bench.stand("mill", 1, true);
    bench.command("NCMD", QString(), rebirthBytes());
    bench.passMs(1001);
    const std::vector<Told> after = bench.since(before);
    ASSERT_EQ(1u, after.size());
    EXPECT_EQ(Told::LEAVE, after[0].what) << "a broker that acknowledges nothing is left, too";
    EXPECT_TRUE(bench.node.isOver());
    bench.passMs(60000);
    EXPECT_EQ(1, bench.session.connects) << "no session follows";
}
