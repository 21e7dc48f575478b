// The rules of Sparkplug about NDATA, DDATA and DDEATH, each under its public name.

#include "plantDay.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace {

void hasNodeDataTopic(const Told& told)
{
    EXPECT_EQ(QLatin1String("spBv1.0/works/NDATA/station"), told.message.topic);
}

/// "oven-1" behind the topic of the kind.
void expectDeviceTopic(const Told& told, const char* kind)
{
    static const std::set<QString> devices = {QLatin1String("oven-1"), QLatin1String("oven-2"),
                                              QLatin1String("mill-1")};
    EXPECT_EQ(1u, devices.count(told.device));
    EXPECT_EQ(
        QString(QLatin1String("spBv1.0/works/%1/station/%2")).arg(QLatin1String(kind), told.device),
        told.message.topic);
}

void hasDeviceDataTopic(const Told& told)
{
    expectDeviceTopic(told, "DDATA");
}

void hasDeviceDeathTopic(const Told& told)
{
    expectDeviceTopic(told, "DDEATH");
}

/// DATA follows the NBIRTH of its session; that of a device its own DBIRTH, that of the node the
/// DBIRTHs of all devices that lived before a rebirth and did not die.
void isBehindItsBirths(bool (*which)(const Told&))
{
    int session = 0, found = 0;
    std::set<QString> alive, unborn;
    for (const Told& told : plantDay()) {
        if (isConnect(told)) alive.clear();
        if (isNodeBirth(told)) {
            session = told.session;
            unborn = std::exchange(alive, {});
        }
        if (isDeviceBirth(told)) alive.insert(told.device);
        if (isDeviceDeath(told)) alive.erase(told.device);
        if (isDeviceBirth(told) || isDeviceDeath(told)) unborn.erase(told.device);
        if (!which(told)) continue;
        ++found;
        ASSERT_EQ(session, told.session) << "no NBIRTH ahead of it";
        if (isDeviceData(told))
            ASSERT_EQ(1u, alive.count(told.device)) << told.message.topic.toStdString();
        else
            ASSERT_TRUE(unborn.empty()) << "no DBIRTH yet of " << unborn.begin()->toStdString();
    }
    EXPECT_GT(found, 0);
}

/// "DBIRTH oven-1"
std::vector<std::string> kindsOf(const std::vector<Told>& all)
{
    std::vector<std::string> kinds;
    for (const Told& told : all)
        kinds.push_back(
            QString(told.kind + QLatin1Char(' ') + told.device).trimmed().toStdString());
    return kinds;
}

struct Lived : EdgeBench
{
    Lived()
    {
        beBorn();
        take({reading("oven", "temperature", 20.5), reading("oven", "door", 1),
              reading("oven", "count", 1), standing("oven", 1, true)});
        take({reading("mill", "speed", -70000), standing("mill", 1, true)});
    }

    std::vector<Told> dataOf(const char* link, const char* tag, double value)
    {
        const size_t before = mark();
        read(link, tag, value);
        return since(before);
    }
};

quint64 aliasOf(const EdgeBench& bench, const char* device, const char* tag)
{
    quint64 alias = 0;
    for (const Told& birth : bench.all("DBIRTH")) {
        if (birth.device != QLatin1String(device)) continue;
        if (birth.payload.named(tag) != nullptr) alias = *birth.payload.named(tag)->alias;
    }
    EXPECT_NE(0u, alias);
    return alias;
}

} // namespace

KEPT(topics_ndata_topic, isNodeData, hasNodeDataTopic)
KEPT(topics_ddata_topic, isDeviceData, hasDeviceDataTopic)
KEPT(topics_ndata_mqtt, isNodeData, isQos0Unretained)
KEPT(payloads_ndata_qos, isNodeData, isQos0)
KEPT(payloads_ndata_retain, isNodeData, isUnretained)
KEPT(topics_ddata_mqtt, isDeviceData, isQos0Unretained)
KEPT(payloads_ddata_qos, isDeviceData, isQos0)
KEPT(payloads_ddata_retain, isDeviceData, isUnretained)
KEPT(payloads_ndata_seq, isNodeData, hasSeq)
COUNTED(topics_ndata_seq_num, isNodeData)
COUNTED(payloads_ndata_seq_inc, isNodeData)
KEPT(payloads_ddata_seq, isDeviceData, hasSeq)
COUNTED(topics_ddata_seq_num, isDeviceData)
COUNTED(payloads_ddata_seq_inc, isDeviceData)
COUNTED(payloads_sequence_num_incrementing, isNumbered)
KEPT(payloads_sequence_num_always_included, isNumbered, hasSeq)
KEPT(topics_ndata_timestamp, isNodeData, hasTimeOfSending)
KEPT(payloads_ndata_timestamp, isNodeData, hasTimeOfSending)
KEPT(topics_ddata_timestamp, isDeviceData, hasTimeOfSending)
KEPT(payloads_ddata_timestamp, isDeviceData, hasTimeOfSending)

KEPT(topics_ddeath_topic, isDeviceDeath, hasDeviceDeathTopic)
KEPT(topics_ddeath_mqtt, isDeviceDeath, isQos0Unretained)
KEPT(payloads_ddeath_seq, isDeviceDeath, hasSeq)
KEPT(payloads_ddeath_seq_number, isDeviceDeath, hasSeq)
COUNTED(topics_ddeath_seq_num, isDeviceDeath)
COUNTED(payloads_ddeath_seq_inc, isDeviceDeath)
KEPT(payloads_ddeath_timestamp, isDeviceDeath, hasTimeOfSending)

TEST(Sparkplug, payloads_ndata_order)
{
    isBehindItsBirths(isNodeData);

    Lived bench;
    bench.session.isFull = true;
    const size_t before = bench.mark();
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.command("NCMD", QString(), rebirthBytes());
    bench.session.isFull = false;
    bench.turn();
    EXPECT_EQ((std::vector<std::string>{"NBIRTH", "DBIRTH oven-1", "DBIRTH mill-1", "NDATA"}),
              kindsOf(bench.since(before)));
}

TEST(Sparkplug, payloads_ddata_order)
{
    isBehindItsBirths(isDeviceData);

    EdgeBench bench;
    bench.beBorn();
    bench.read("oven", "temperature", 20.5);
    EXPECT_TRUE(bench.all("DDATA").empty()) << "the oven is not born yet";
    bench.stand("oven", 1, true);
    bench.read("oven", "temperature", 21);
    EXPECT_EQ(1u, bench.all("DDATA").size());
    bench.stand("oven", 1, false);
    bench.read("oven", "temperature", 22);
    EXPECT_EQ(1u, bench.all("DDATA").size()) << "the oven is dead";
}

TEST(Sparkplug, topics_ndata_payload)
{
    Lived bench;
    bench.passMs(1000);
    const size_t before = bench.mark();
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.passMs(1000);
    std::vector<Told> news = bench.since(before);
    ASSERT_EQ(2u, news.size());
    EXPECT_EQ(4u, news[0].payload.metrics.at(0).alias.value_or(0)) << "Commands/Outcome";
    ASSERT_EQ(1u, news[1].payload.metrics.size()) << "what did not change is not told";
    EXPECT_EQ(3u, news[1].payload.metrics[0].alias.value_or(0)) << "Commands/Refused";
    EXPECT_EQ(1u, news[1].payload.metrics[0].bits);
}

TEST(Sparkplug, topics_ddata_payload)
{
    Lived bench;
    const size_t before = bench.mark();
    bench.take({bench.reading("oven", "temperature", 21), bench.reading("mill", "speed", 4),
                bench.reading("oven", "door", 1), bench.reading("oven", "count", 2)});
    const std::vector<Told> news = bench.since(before);
    ASSERT_EQ(2u, news.size()) << "one message a device";
    ASSERT_EQ(2u, news[0].payload.metrics.size()) << "the door did not change";
    EXPECT_EQ(aliasOf(bench, "oven-1", "temperature"), *news[0].payload.metrics[0].alias);
    EXPECT_EQ(21, news[0].payload.metrics[0].number(9));
    EXPECT_EQ(aliasOf(bench, "oven-1", "count"), *news[0].payload.metrics[1].alias);
    ASSERT_EQ(1u, news[1].payload.metrics.size());
    EXPECT_EQ(4, news[1].payload.metrics[0].number(3));
}

TEST(Sparkplug, operational_behavior_device_ddeath)
{
    Lived bench;
    const size_t before = bench.mark();
    bench.stand("mill", 1, false);
    bench.stand("mill", 1, false);
    std::vector<Told> news = bench.since(before);
    ASSERT_EQ(1u, news.size());
    EXPECT_TRUE(news[0].is("DDEATH"));
    EXPECT_EQ(QLatin1String("mill-1"), news[0].device);
    EXPECT_TRUE(news[0].payload.metrics.empty());

    bench.stand("mill", 1, true);
    news = bench.since(before + 1);
    ASSERT_EQ(1u, news.size());
    EXPECT_TRUE(news[0].is("DBIRTH"));
    EXPECT_EQ(3u, news[0].payload.metrics.size()) << "with all its metrics";
}

TEST(EdgeNode, ValuesOfOneMetricThatWaitedAreToldInTheirOrder)
{
    Lived bench;
    bench.session.isFull = true;
    const qint64 begin = bench.clock.wall();
    for (const double value : {1.0, 2.0, 3.0}) {
        bench.read("oven", "temperature", value);
        bench.passMs(10);
    }
    const size_t before = bench.mark();
    bench.session.isFull = false;
    bench.turn();
    const std::vector<Told> news = bench.since(before);
    ASSERT_EQ(1u, news.size());
    ASSERT_EQ(3u, news[0].payload.metrics.size());
    EXPECT_EQ(1, news[0].payload.metrics[0].number(9));
    EXPECT_EQ(2, news[0].payload.metrics[1].number(9));
    EXPECT_EQ(3, news[0].payload.metrics[2].number(9));
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(begin + 10 * qint64(i), news[0].payload.metrics[i].time) << "of the answer";
}

TEST(EdgeNode, AClockThatIsSetBackDoesNotTurnTheOrderOfAMetric)
{
    Lived bench;
    bench.session.isFull = true;
    bench.read("oven", "temperature", 1);
    bench.clock.setWall(bench.clock.wall() - 5000);
    bench.read("oven", "temperature", 2);
    const size_t before = bench.mark();
    bench.session.isFull = false;
    bench.turn();
    const std::vector<Told> news = bench.since(before);
    ASSERT_EQ(2u, news.size());
    EXPECT_EQ(1, news[0].payload.metrics.at(0).number(9));
    EXPECT_EQ(2, news[1].payload.metrics.at(0).number(9));
    for (const Told& told : news)
        EXPECT_LE(*told.payload.metrics[0].time, *told.payload.time) << "no value of the future";
}

TEST(EdgeNode, AMessageHasFiveHundredEntriesAtMost)
{
    Lived bench;
    std::vector<Sample> samples;
    for (int i = 0; i < 1200; ++i)
        samples.push_back(bench.reading("oven", "temperature", i));
    const size_t before = bench.mark();
    bench.take(samples);
    std::vector<size_t> sizes;
    for (const Told& told : bench.since(before))
        sizes.push_back(told.payload.metrics.size());
    EXPECT_EQ((std::vector<size_t>{500, 500, 200}), sizes);
}

TEST(EdgeNode, ADeathFollowsWhatItsDeviceStillTold)
{
    Lived bench;
    const size_t before = bench.mark();
    bench.take({bench.reading("mill", "speed", 1), bench.standing("mill", 1, false),
                bench.reading("mill", "speed", 1, BAD), bench.reading("oven", "count", 4)});
    const std::vector<Told> news = bench.since(before);
    ASSERT_EQ(3u, news.size());
    EXPECT_TRUE(news[0].is("DDATA"));
    EXPECT_EQ(QLatin1String("mill-1"), news[0].device);
    EXPECT_TRUE(news[1].is("DDEATH"));
    EXPECT_EQ(QLatin1String("oven-1"), news[2].device);
}

TEST(EdgeNode, AReadingWithoutAValueIsNeverNullInData)
{
    Lived bench;
    Sample unread = bench.reading("mill", "power", 0, BAD);
    unread.hasValue = false;
    const size_t before = bench.mark();
    bench.take({unread});
    unread.quality = STALE;
    bench.take({unread});
    EXPECT_TRUE(bench.since(before).empty()) << "it was never read";

    bench.read("mill", "power", 5);
    Sample bad = bench.reading("mill", "power", 0, BAD);
    bad.hasValue = false;
    bench.take({bad});
    const Told last = bench.session.told.back();
    ASSERT_EQ(1u, last.payload.metrics.size());
    EXPECT_EQ(5u, last.payload.metrics[0].bits) << "the last value";
    EXPECT_EQ(0, last.payload.metrics[0].quality.value_or(-1));
    EXPECT_FALSE(last.payload.metrics[0].isNull);
}

TEST(EdgeNode, AValueThatIsNoneOfItsTypeIsNotTold)
{
    Lived bench;
    EXPECT_TRUE(bench.dataOf("oven", "count", 70000).empty());
    EXPECT_TRUE(bench.dataOf("oven", "count", 1.5).empty());
    EXPECT_TRUE(bench.dataOf("oven", "count", -1).empty());
    EXPECT_TRUE(bench.dataOf("oven", "door", 2).empty());
    EXPECT_TRUE(bench.dataOf("oven", "temperature", 1e300).empty());
    EXPECT_EQ(1u, bench.dataOf("oven", "temperature", 1e30).size());
}
