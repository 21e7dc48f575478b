// Births that are asked for, and those of a new configuration.

#include "bornBench.h"

TEST(Sparkplug, operational_behavior_data_commands_rebirth_action_1)
{
    BornBench bench;
    bench.session.isFull = true;
    bench.command("NCMD", QString(), rebirthBytes());
    const size_t before = bench.mark();
    bench.read("oven", "temperature", 23);
    bench.session.isFull = false;
    bench.turn();
    for (const Told& told : bench.since(before))
        EXPECT_FALSE(told.isData()) << told.message.topic.toStdString();
    EXPECT_EQ(23, entry(bench.all("DBIRTH")[2], "temperature").number(9)) << "the births tell it";
}

TEST(Sparkplug, operational_behavior_data_commands_rebirth_action_2)
{
    BornBench bench;
    bench.stand("mill", 1, false);
    const size_t before = bench.mark();
    bench.command("NCMD", QString(), rebirthBytes());
    const std::vector<Told> after = bench.since(before);
    ASSERT_EQ(2u, after.size()) << "a device that does not answer has no birth";
    EXPECT_TRUE(after[0].is("NBIRTH"));
    EXPECT_EQ(QLatin1String("oven-1"), after[1].device);
    EXPECT_EQ(4u, after[1].payload.metrics.size());
}

TEST(Sparkplug, operational_behavior_data_commands_rebirth_action_3)
{
    BornBench bench;
    bench.command("NCMD", QString(), rebirthBytes());
    const std::vector<Told> births = bench.all("NBIRTH");
    ASSERT_EQ(2u, births.size());
    EXPECT_EQ(births[0].payload.named("bdSeq")->bits, births[1].payload.named("bdSeq")->bits);
    EXPECT_EQ(1, bench.session.connects);
    EXPECT_TRUE(bench.all("NDEATH").empty());
}

namespace {

struct RebirthText
{
    const char* what;
    QByteArray payload;
};

const std::vector<RebirthText>& noRebirths()
{
    static const std::vector<RebirthText> all = {
        {"false", rebirthBytes(false)},
        {"no value", commandBytes("Node Control/Rebirth", 0, 0, 0, 11)},
        {"null", commandBytes("Node Control/Rebirth", 0, 7, 1, 11)},
        {"a number", commandBytes("Node Control/Rebirth", 0, 10, 1, 3)},
        {"truth that is declared as a number", commandBytes("Node Control/Rebirth", 0, 14, 1, 3)},
        {"another spelling", commandBytes("Node Control/rebirth", 0, 14, 1, 11)}};
    return all;
}

} // namespace

TEST(EdgeNode, OnlyATrueRebirthBringsTheBirths)
{
    for (const RebirthText& no : noRebirths()) {
        BornBench bench;
        bench.command("NCMD", QString(), no.payload);
        EXPECT_EQ(1u, bench.all("NBIRTH").size()) << no.what;
    }
}

TEST(EdgeNode, ARetainedRebirthIsOld)
{
    BornBench bench;
    bench.command("NCMD", QString(), rebirthBytes(), true);
    EXPECT_EQ(1u, bench.all("NBIRTH").size());
}

TEST(EdgeNode, RebirthsThatAreAskedForAheadOfTheFirstBirthsAreThose)
{
    EdgeBench bench;
    bench.turn();
    bench.accept();
    bench.command("NCMD", QString(), rebirthBytes());
    bench.grant();
    EXPECT_EQ(1u, bench.all("NBIRTH").size());
}

TEST(EdgeNode, ManyRebirthsBehindAFullSocketAreOne)
{
    BornBench bench;
    bench.session.isFull = true;
    for (int i = 0; i < 100; ++i)
        bench.command("NCMD", QString(), rebirthBytes());
    EXPECT_EQ(1u, bench.all("NBIRTH").size());
    bench.session.isFull = false;
    bench.turn();
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
}

TEST(EdgeNode, BirthsTellTheFiguresOfTheirMoment)
{
    BornBench bench;
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.command("NCMD", QString(), rebirthBytes());
    ASSERT_EQ(2u, bench.all("NBIRTH").size());
    EXPECT_EQ(1u, entry(bench.all("NBIRTH")[1], "Commands/Refused").bits);
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.session.isFull = true;
    bench.command("NCMD", QString(), rebirthBytes());
    bench.passMs(3000);
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.session.isFull = false;
    bench.turn();
    ASSERT_EQ(3u, bench.all("NBIRTH").size());
    EXPECT_EQ(3u, entry(bench.all("NBIRTH")[2], "Commands/Refused").bits);
    const size_t before = bench.mark();
    bench.passMs(3000);
    EXPECT_TRUE(bench.since(before).empty()) << "that is no news";
}

TEST(EdgeNode, ANewConfigurationIsBornAnewInTheSameSession)
{
    BornBench bench;
    bench.node.setDevices(plantDevices());
    bench.turn();
    EXPECT_EQ(1u, bench.all("NBIRTH").size()) << "nothing changed";

    std::vector<EdgeDevice> devices = plantDevices();
    devices.pop_back();
    devices[0].tags.push_back(tagOf("fan", 1, Tag::BOOL));
    bench.passMs(40);
    const size_t before = bench.mark();
    bench.node.setDevices(devices);
    bench.turn();
    const std::vector<Told> after = bench.since(before);
    ASSERT_EQ(3u, after.size());
    EXPECT_TRUE(after[0].is("DDEATH")) << "the mill is gone";
    EXPECT_TRUE(after[1].is("NBIRTH"));
    EXPECT_EQ(0u, after[1].payload.named("bdSeq")->bits);
    EXPECT_TRUE(entry(after[2], "fan").isNull);
    EXPECT_EQ(bench.clock.wall(), entry(after[2], "fan").time) << "as old as its birth";
    EXPECT_EQ(bench.clock.wall() - 40, entry(after[2], "temperature").time);
    EXPECT_EQ(20.5, entry(after[2], "temperature").number(9)) << "what stays is known";
}

TEST(EdgeNode, SamplesThatAreAheadOfTheirConfigurationAreNotLost)
{
    BornBench bench;
    bench.take({bench.reading("press", "force", 9), bench.standing("press", 3, true)});
    std::vector<EdgeDevice> devices = plantDevices();
    devices.push_back({QLatin1String("press"), 3, {tagOf("force", 3, Tag::UINT16)}});
    bench.node.setDevices(devices);
    bench.turn();
    const Told last = bench.session.told.back();
    EXPECT_EQ(QLatin1String("press-3"), last.device);
    EXPECT_EQ(9u, entry(last, "force").bits);
}
