// What an edge node subscribes to, in each session: these topics and no others. That it asks for
// QoS 1 is on the wire, see PlantSubscriptions.

#include "edgeBench.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

struct Subscribing
{
    const char* what;
    bool takesCommands;
    const char* primaryHost;
    std::vector<std::string> topics;
};

const char* const OF_NODE = "spBv1.0/works/NCMD/station";
const char* const OF_DEVICES = "spBv1.0/works/DCMD/station/+";
const char* const OF_HOST = "spBv1.0/STATE/scada";

const std::vector<Subscribing>& setups()
{
    static const std::vector<Subscribing> all = {
        {"alone", false, "", {OF_NODE}},
        {"with commands", true, "", {OF_NODE, OF_DEVICES}},
        {"with a primary host", false, "scada", {OF_NODE, OF_HOST}},
        {"with both", true, "scada", {OF_NODE, OF_DEVICES, OF_HOST}}};
    return all;
}

EdgeBench::Setup benchSetup(const Subscribing& wanted)
{
    EdgeBench::Setup setup;
    setup.takesCommands = wanted.takesCommands;
    setup.primaryHost = wanted.primaryHost;
    return setup;
}

std::vector<std::string> sorted(const QStringList& topics)
{
    std::vector<std::string> texts;
    for (const QString& topic : topics)
        texts.push_back(topic.toStdString());
    std::sort(texts.begin(), texts.end());
    return texts;
}

/// What a session was asked for, in order: "CONNECT", "SUBSCRIBE", or the kind of a message.
std::vector<std::string> asked(const EdgeBench& bench, int session)
{
    std::vector<std::string> texts;
    for (const Told& told : bench.session.told) {
        if (told.session != session) continue;
        if (told.what == Told::CONNECT) texts.push_back("CONNECT");
        if (told.what == Told::SUBSCRIBE) texts.push_back("SUBSCRIBE");
        if (told.what == Told::PUBLISH) texts.push_back(told.kind.toStdString());
    }
    return texts;
}

/// One session, with all that happens in one, until it is cut.
void live(EdgeBench& bench, const Subscribing& wanted)
{
    for (int i = 0; i < 10 && bench.session.state != RecordedSession::WAITING; ++i)
        bench.passMs(500); // the pause ahead of it
    bench.accept();
    bench.passMs(100);
    EXPECT_EQ((std::vector<std::string>{"CONNECT", "SUBSCRIBE"}),
              asked(bench, bench.session.connects))
        << wanted.what << ": no birth ahead of the broker's answer";
    bench.grant();
    if (*wanted.primaryHost != '\0') bench.state(true, bench.clock.wall());
    bench.take({bench.standing("oven", 1, true), bench.reading("oven", "temperature", 20)});
    bench.command("NCMD", QString(), rebirthBytes());
    bench.node.setDevices({plantDevices().front()});
    bench.turn();
    bench.node.setDevices(plantDevices());
    bench.take({bench.standing("mill", 1, true), bench.standing("oven", 1, false)});
    bench.passMs(5000);
    bench.cut();
}

/// The topics of each SUBSCRIBE of a session.
std::vector<std::vector<std::string>> subscriptions(const EdgeBench& bench, int session)
{
    std::vector<std::vector<std::string>> all;
    for (const Told& told : bench.session.told)
        if (told.session == session && told.what == Told::SUBSCRIBE)
            all.push_back(sorted(told.topics));
    return all;
}

} // namespace

TEST(EdgeSubscriptions, AreThoseOfItsSettingsOnceASessionAheadOfItsBirths)
{
    for (const Subscribing& wanted : setups()) {
        EdgeBench bench(benchSetup(wanted));
        std::vector<std::string> expected = wanted.topics;
        std::sort(expected.begin(), expected.end());
        for (int session = 1; session <= 3; ++session) {
            live(bench, wanted);
            EXPECT_EQ(std::vector<std::vector<std::string>>{expected},
                      subscriptions(bench, session))
                << wanted.what << ", session " << session;
            const std::vector<std::string> all = asked(bench, session);
            ASSERT_LT(3u, all.size()) << wanted.what;
            EXPECT_EQ("NBIRTH", all[2]) << wanted.what;
        }
    }
}
