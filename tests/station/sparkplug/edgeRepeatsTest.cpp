// What follows births: nothing that they have told. A host that knows the rules alone looks at each
// message, and the test at what came behind the last birth.

#include "bornBench.h"
#include "plantHost.h"

namespace {

struct RepeatBench : BornBench
{
    /// The PLCs answer again, and tell what they told before.
    void answerAgain()
    {
        for (auto& one : std::map<std::pair<QString, QString>, Sample>(present)) {
            Sample& sample = one.second;
            sample.time = clock.wall();
            take({sample});
        }
    }

    /// The messages behind the last birth, while time passes and the same values come again:
    /// "DDATA oven-1".
    std::vector<std::string> behindBirths()
    {
        passMs(100);
        answerAgain();
        passMs(3000);
        size_t last = mark();
        while (last > 0 && !session.told[last - 1].isBirth())
            --last;
        std::vector<std::string> texts;
        for (const Told& told : since(last))
            texts.push_back(told.kind.toStdString() + ' ' + told.device.toStdString());
        return texts;
    }

    void expectNoRuleBroken()
    {
        PlantHost host;
        for (const Told& told : session.told)
            host.take(told);
        EXPECT_EQ(std::vector<std::string>(), host.broken);
    }

    void connectAgain()
    {
        for (int i = 0; i < 10 && session.state != RecordedSession::WAITING; ++i)
            passMs(500);
        accept();
        grant();
    }

    using Texts = std::vector<std::string>;
};

} // namespace

TEST(EdgeRepeats, OfTheFirstBirthsAreNone)
{
    RepeatBench bench;
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.read("oven", "temperature", 21);
    EXPECT_EQ(RepeatBench::Texts{"DDATA oven-1"}, bench.behindBirths()) << "that is news";
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfBirthsThatWereAskedForAreNone)
{
    RepeatBench bench;
    bench.read("oven", "temperature", 21);
    bench.read("oven", "door", 1, STALE);
    bench.command("NCMD", QString(), QByteArray("garbage")); // a figure of the node
    bench.command("NCMD", QString(), rebirthBytes());
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfValuesThatWaitedForTheSocketAreNone)
{
    RepeatBench bench;
    bench.session.isFull = true;
    bench.read("oven", "temperature", 22);
    bench.read("oven", "temperature", 23);
    bench.read("mill", "speed", 5, BAD);
    bench.command("NCMD", QString(), rebirthBytes());
    bench.session.isFull = false;
    bench.turn();
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
    EXPECT_EQ(23, entry(bench.all("DBIRTH")[2], "temperature").number(9));
    // Without a history the 22, which no message told, is dropped: a figure of the node.
    EXPECT_EQ(RepeatBench::Texts{"NDATA "}, bench.behindBirths());
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfANewConfigurationsBirthsAreNone)
{
    RepeatBench bench;
    std::vector<EdgeDevice> devices = plantDevices();
    devices[0].tags.push_back(tagOf("fan", 1, Tag::BOOL));
    bench.session.isFull = true;
    bench.read("oven", "temperature", 24);
    bench.node.setDevices(devices);
    bench.session.isFull = false;
    bench.turn();
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfTheNextSessionsBirthsAreNone)
{
    RepeatBench bench;
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.read("oven", "temperature", 24);
    bench.cut();
    bench.read("oven", "temperature", 25);
    bench.read("mill", "speed", 5, STALE);
    bench.passMs(50);
    bench.connectAgain();
    EXPECT_EQ(2u, bench.all("NBIRTH").size());
    EXPECT_EQ(25, entry(bench.all("DBIRTH")[2], "temperature").number(9));
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfADeviceThatIsBornLateAreNone)
{
    RepeatBench bench;
    bench.stand("oven", 1, false);
    bench.read("oven", "temperature", 26);
    bench.read("oven", "count", 7);
    bench.stand("oven", 1, true);
    EXPECT_EQ(26, entry(bench.all("DBIRTH")[2], "temperature").number(9));
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.expectNoRuleBroken();
}

TEST(EdgeRepeats, OfAnOutcomeThatTheBirthsHaveToldAreNone)
{
    RepeatBench bench;
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("nothing", 0, 10, 1));
    EXPECT_EQ("DDATA", bench.session.told.back().kind.toStdString());
    bench.passMs(2000);
    bench.command("NCMD", QString(), rebirthBytes());
    EXPECT_FALSE(entry(bench.all("DBIRTH")[2], "Commands/Outcome").isNull);
    EXPECT_EQ(RepeatBench::Texts(), bench.behindBirths());
    bench.expectNoRuleBroken();
}
