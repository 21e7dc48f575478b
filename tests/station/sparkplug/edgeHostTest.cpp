// The rules of Sparkplug about a primary host and several servers, each under its public name.

#include "plantDay.h"

#include "sparkplug/hostState.h"

namespace {

EdgeBench::Setup withHost(int servers = 1)
{
    EdgeBench::Setup setup;
    setup.servers = servers;
    setup.primaryHost = "scada";
    return setup;
}

/// Waits for its primary host.
struct Waiting : EdgeBench
{
    explicit Waiting(int servers = 1) : EdgeBench(withHost(servers))
    {
        beBorn();
    }

    void say(const char* topic, const char* payload)
    {
        session.send(QLatin1String(topic), payload);
        turn();
    }
    bool isBorn() const
    {
        return node.standing().state == PlantStanding::BORN;
    }
};

const char STATE_TOPIC[] = "spBv1.0/STATE/scada";

void subscribesToState(const Told& told)
{
    EXPECT_TRUE(told.topics.contains(QLatin1String(STATE_TOPIC)));
}

bool isSubscription(const Told& told)
{
    return told.what == Told::SUBSCRIBE;
}

QString triedAt(const EdgeBench& bench)
{
    return bench.session.server.host;
}

} // namespace

KEPT(operational_behavior_primary_application_state_with_multiple_servers_state_subs,
     isSubscription, subscribesToState)

TEST(Sparkplug, operational_behavior_primary_application_state_with_multiple_servers_single_server)
{
    everyOne(isConnect, [](const Told& told) { EXPECT_TRUE(told.isAlone); });
}

TEST(Sparkplug, message_flow_edge_node_birth_publish_phid_wait)
{
    Waiting bench;
    bench.passMs(60000);
    EXPECT_FALSE(bench.isBorn());
    EXPECT_TRUE(bench.session.published.empty());
    EXPECT_EQ(1, bench.session.connects) << "there is no other server";
    bench.state(true, 5);
    EXPECT_TRUE(bench.isBorn());
}

TEST(Sparkplug, operational_behavior_edge_node_birth_sequence_wait)
{
    Waiting bench;
    bench.state(true, 5);
    bench.cut();
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    EXPECT_FALSE(bench.isBorn()) << "each session waits anew";
    bench.state(true, 5);
    EXPECT_TRUE(bench.isBorn());
}

TEST(Sparkplug, message_flow_edge_node_birth_publish_phid_wait_id)
{
    Waiting bench;
    for (const char* const topic : {"spBv1.0/STATE/scada2", "spBv1.0/STATE/scad",
                                    "spBv1.0/STATE/Scada", "STATE/scada", "spBv1.0/STATE/x/scada"})
        bench.say(topic, R"({"online":true,"timestamp":5})");
    EXPECT_FALSE(bench.isBorn());
    bench.say(STATE_TOPIC, R"({"online":true,"timestamp":5})");
    EXPECT_TRUE(bench.isBorn());
}

TEST(Sparkplug, message_flow_edge_node_birth_publish_phid_wait_online)
{
    Waiting bench;
    for (const char* const state :
         {R"({"online":"true","timestamp":5})", R"({"online":1,"timestamp":5})",
          R"({"timestamp":5})", "ONLINE", "true", "", R"({"online":true,"timestamp":5)"})
        bench.say(STATE_TOPIC, state);
    EXPECT_FALSE(bench.isBorn());
    bench.say(STATE_TOPIC, R"({"online":true,"timestamp":5})");
    EXPECT_TRUE(bench.isBorn());
}

TEST(Sparkplug, message_flow_edge_node_birth_publish_phid_wait_timestamp)
{
    Waiting bench(1);
    bench.state(false, 1000);
    bench.passMs(5000);
    bench.accept();
    bench.grant();
    bench.state(true, 999);
    EXPECT_FALSE(bench.isBorn()) << "older than the last one";
    bench.state(true, 1000);
    EXPECT_TRUE(bench.isBorn()) << "equal counts as later";

    Waiting first;
    first.state(true, 0);
    EXPECT_TRUE(first.isBorn()) << "the first one always counts";
}

TEST(Sparkplug, message_flow_edge_node_birth_publish_phid_offline)
{
    Waiting bench;
    bench.state(true, 5);
    bench.stand("oven", 1, true);
    const size_t before = bench.mark();
    bench.state(false, 6);
    ASSERT_EQ(1u, bench.since(before).size());
    EXPECT_TRUE(bench.since(before)[0].is("NDEATH"));
    bench.acknowledge();
    bench.passMs(5000);
    const std::vector<Told> after = bench.since(before);
    ASSERT_EQ(3u, after.size());
    EXPECT_EQ(Told::LEAVE, after[1].what);
    EXPECT_EQ(Told::CONNECT, after[2].what);
}

TEST(Sparkplug, operational_behavior_edge_node_termination_host_offline)
{
    Waiting bench;
    bench.state(true, 5);
    bench.state(false, 5);
    EXPECT_EQ(1u, bench.all("NDEATH").size()) << "equal counts as later";
    bench.acknowledge();
    EXPECT_EQ(1, bench.session.leaves);
    EXPECT_FALSE(bench.isBorn());
}

TEST(Sparkplug, operational_behavior_edge_node_termination_host_offline_timestamp)
{
    Waiting bench;
    bench.state(true, 5);
    bench.state(false, 4);
    bench.passMs(5000);
    EXPECT_TRUE(bench.isBorn());
    EXPECT_TRUE(bench.all("NDEATH").empty());
}

TEST(Sparkplug, operational_behavior_edge_node_termination_host_offline_reconnect)
{
    Waiting bench(3);
    EXPECT_EQ(QLatin1String("broker1"), triedAt(bench));
    bench.state(true, 5);
    bench.passMs(3000);
    bench.state(false, 6);
    bench.acknowledge();
    bench.passMs(1000);
    EXPECT_EQ(QLatin1String("broker2"), triedAt(bench));
    EXPECT_EQ(2, bench.session.connects);
}

TEST(Sparkplug, operational_behavior_primary_application_state_with_multiple_servers_walk)
{
    Waiting bench(2);
    bench.state(false, 6);
    EXPECT_TRUE(bench.session.told.back().what == Told::CONNECT);
    EXPECT_EQ(QLatin1String("broker2"), triedAt(bench)) << "before births, too";
    EXPECT_TRUE(bench.all("NDEATH").empty()) << "nothing was born";
    EXPECT_EQ(2, bench.sequence.given);
    EXPECT_EQ(0, bench.sequence.back) << "the first broker has seen a CONNECT";
    bench.accept();
    bench.grant();
    bench.state(true, 1);
    EXPECT_TRUE(bench.isBorn()) << "the times of two servers are not compared";
}

TEST(EdgeNode, TheLastTimeOfAServerIsKeptWhileAnotherIsTried)
{
    Waiting bench(2);
    bench.state(false, 1000);
    bench.accept();
    bench.grant();
    bench.state(false, 2); // of broker2
    while (bench.session.connects < 3)
        bench.passMs(1000);
    ASSERT_EQ(QLatin1String("broker1"), triedAt(bench));
    bench.accept();
    bench.grant();
    bench.state(true, 999);
    EXPECT_FALSE(bench.isBorn()) << "older than what broker1 told before";
    bench.state(true, 1000);
    EXPECT_TRUE(bench.isBorn());
}

TEST(EdgeNode, AServerThatKnowsNothingOfThePrimaryHostIsLeftForTheNext)
{
    Waiting bench(2);
    bench.passMs(9999);
    EXPECT_EQ(1, bench.session.connects);
    bench.passMs(1);
    EXPECT_EQ(2, bench.session.connects);
    EXPECT_EQ(QLatin1String("broker2"), triedAt(bench));
}

TEST(EdgeNode, ALossOfThePrimaryHostIsNotTakenBackByItsReturnInTheSameTurn)
{
    Waiting bench;
    bench.state(true, 5);
    bench.session.send(QLatin1String(STATE_TOPIC), R"({"online":false,"timestamp":6})");
    bench.session.send(QLatin1String(STATE_TOPIC), R"({"online":true,"timestamp":7})");
    bench.turn();
    EXPECT_EQ(1u, bench.all("NDEATH").size());
}

/// A value that waits for the socket at the farewell is older than those that come behind it.
TEST(EdgeNode, WhatComesDuringAFarewellIsNotWrittenOverByWhatWaited)
{
    Waiting bench;
    bench.state(true, 5);
    bench.stand("oven", 1, true);
    bench.session.isFull = true;
    bench.read("oven", "temperature", 1);
    bench.state(false, 6);
    bench.read("oven", "temperature", 2);
    bench.session.isFull = false;
    bench.acknowledge();
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    bench.state(true, 7);
    EXPECT_EQ(2, bench.all("DBIRTH").back().payload.named("temperature")->number(9));
}

TEST(EdgeNode, WithoutAPrimaryHostNothingIsWaitedFor)
{
    EdgeBench bench;
    bench.beBorn();
    EXPECT_EQ(1u, bench.all("NBIRTH").size());
    bench.state(false, 7);
    EXPECT_TRUE(bench.all("NDEATH").empty());
}

TEST(HostState, IsAnObjectWithATruthAndAWholeNumber)
{
    for (const char* const text :
         {R"({"online":true,"timestamp":"5"})", R"({"online":true,"timestamp":-1})",
          R"({"online":true,"timestamp":1.5})", R"({"online":true,"timestamp":1e300})",
          R"({"online":true,"online":true,"timestamp":5})", R"([true,5])", "OFFLINE", "{}"})
        EXPECT_FALSE(hostStatement(text)) << text;
    const std::optional<HostStatement> state =
        hostStatement(R"({"timestamp":1795305860123,"online":false,"more":[1]})");
    ASSERT_TRUE(state);
    EXPECT_FALSE(state->isOnline);
    EXPECT_EQ(1795305860123, state->time);
    EXPECT_FALSE(hostStatement(QByteArray(100000, ' ') + R"({"online":true,"timestamp":5})"));
}

/// The clock of the host was set back: who reads that nothing is known of it would look elsewhere.
TEST(EdgeNode, AnOlderStateOfThePrimaryHostIsNamedAsTheTrouble)
{
    Waiting bench;
    bench.state(true, 2000);
    ASSERT_TRUE(bench.isBorn());
    bench.passMs(2000);
    bench.cut();
    bench.accept();
    bench.grant();
    bench.passMs(10000);
    EXPECT_EQ("nothing is known of the primary host", bench.node.standing().trouble.toStdString());
    bench.state(true, 1000);
    EXPECT_EQ("the primary host's STATE has an older time than one before it",
              bench.node.standing().trouble.toStdString());
    bench.state(true, 2000);
    EXPECT_EQ("", bench.node.standing().trouble.toStdString());
}

TEST(EdgeNode, AServerWhoseStateIsOlderIsLeftForThatReason)
{
    Waiting bench(2);
    bench.state(true, 2000);
    bench.passMs(2000);
    bench.cut();
    ASSERT_EQ(QLatin1String("broker1"), triedAt(bench));
    bench.accept();
    bench.grant();
    bench.state(true, 1000);
    bench.passMs(10000);
    EXPECT_EQ(QLatin1String("broker2"), triedAt(bench));
    EXPECT_EQ("the primary host's STATE has an older time than one before it",
              bench.node.standing().trouble.toStdString());
}
