// The end of a session with births: what still goes out, and what does not.

#include "edgeBench.h"

#include <gtest/gtest.h>

namespace {

EdgeBench::Setup keeping(const char* primaryHost = "")
{
    EdgeBench::Setup setup;
    setup.primaryHost = primaryHost;
    setup.keepsHistory = true;
    return setup;
}

/// A node whose oven is born.
struct Leaving : EdgeBench
{
    explicit Leaving(const Setup& setup = keeping()) : EdgeBench(setup)
    {
        beBorn();
        if (*setup.primaryHost != '\0') state(true, 5);
        stand("oven", 1, true);
    }

    /// What was published behind a place, by kind; marks have none.
    std::string kindsSince(size_t first) const
    {
        std::string kinds;
        for (const Told& told : since(first))
            if (told.what == Told::PUBLISH)
                kinds += (kinds.empty() ? "" : " ") +
                         (told.kind.isEmpty() ? "mark" : told.kind.toStdString());
        return kinds;
    }
};

} // namespace

TEST(EdgeFarewell, TellsWhatWaitsWithItsMark)
{
    Leaving bench;
    bench.session.isFull = true;
    bench.read("oven", "temperature", 21);
    bench.commitRows();
    bench.session.isFull = false;
    const size_t before = bench.mark();
    bench.node.leave();
    EXPECT_EQ("DDATA mark NDEATH", bench.kindsSince(before));
}

TEST(EdgeFarewell, WaitsForTheAcknowledgementOfItsDeath)
{
    Leaving bench;
    bench.read("oven", "temperature", 21);
    bench.commitRows();
    bench.node.leave();
    const std::vector<RecordedSession::Published> sent = bench.session.published;
    ASSERT_LE(2u, sent.size());
    bench.node.delivered(sent[sent.size() - 2].request); // of the mark
    bench.turn();
    EXPECT_FALSE(bench.node.isOver());
    EXPECT_EQ(0, bench.session.leaves);
    bench.node.delivered(sent.back().request);
    bench.turn();
    EXPECT_TRUE(bench.node.isOver());
    EXPECT_EQ(1, bench.session.leaves);
}

TEST(EdgeFarewell, ToAPrimaryHostThatIsOfflineTellsNoValueMore)
{
    Leaving bench(keeping("scada"));
    bench.session.isFull = true;
    bench.read("oven", "temperature", 21);
    bench.session.isFull = false;
    const size_t before = bench.mark();
    bench.state(false, 6);
    EXPECT_EQ("NDEATH", bench.kindsSince(before));
}

TEST(EdgeFarewell, ToAPrimaryHostThatIsOfflineTellsNoValueMoreAlsoWhenTheStationEnds)
{
    Leaving bench(keeping("scada"));
    bench.session.isFull = true;
    bench.read("oven", "temperature", 21);
    bench.commitRows();
    bench.session.isFull = false;
    const size_t before = bench.mark();
    bench.session.send(QLatin1String("spBv1.0/STATE/scada"), R"({"online":false,"timestamp":6})");
    bench.node.leave();
    EXPECT_EQ("NDEATH", bench.kindsSince(before));
    bench.acknowledge();
    EXPECT_TRUE(bench.node.isOver());
    EXPECT_EQ(1, bench.ledger.behind()) << "it stays owed";
}

TEST(EdgeFarewell, AheadOfBirthsThatAreDueTellsNoDataOfTheOldOnes)
{
    Leaving bench;
    bench.session.isFull = true;
    bench.command("NCMD", QString(), rebirthBytes());
    bench.read("oven", "temperature", 21);
    bench.session.isFull = false;
    const size_t before = bench.mark();
    bench.node.leave();
    EXPECT_EQ("NDEATH", bench.kindsSince(before));
}

/// The links end ahead of the node: a write that they could not finish has ended by then, and its
/// device is about to die.
TEST(EdgeFarewell, TellsTheEndsOfWritesAheadOfTheDeathOfTheirDevice)
{
    Leaving bench;
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("count", 0, 10, 12));
    ASSERT_EQ(1u, bench.commands.writes.size());
    const size_t before = bench.mark();
    bench.node.take({bench.standing("oven", 1, false)});
    bench.commands.end(0, WriteEnd::FAILED, QByteArray(), "the station stopped");
    bench.node.leave();
    EXPECT_EQ("DDATA DDEATH NDEATH", bench.kindsSince(before));
    EXPECT_EQ(QLatin1String("oven-1"), bench.since(before)[0].device);
    const auto metrics = bench.since(before)[0].payload.metrics;
    ASSERT_EQ(1u, metrics.size());
    EXPECT_TRUE(metrics[0].text.contains(QLatin1String("the station stopped")));
}

TEST(EdgeFarewell, TellsTheEndsOfWritesToDeadDevicesByTheNode)
{
    Leaving bench;
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("count", 0, 10, 12));
    bench.stand("oven", 1, false);
    bench.commands.end(0, WriteEnd::FAILED, QByteArray(), "no answer");
    bench.passMs(3000);
    const size_t before = bench.mark();
    bench.node.leave();
    EXPECT_EQ("NDATA NDEATH", bench.kindsSince(before));
    const auto metrics = bench.since(before)[0].payload.metrics;
    ASSERT_EQ(1u, metrics.size());
    EXPECT_TRUE(metrics[0].text.contains(QLatin1String("no answer")));
}

TEST(EdgeFarewell, ExecutesNoCommandMore)
{
    Leaving bench;
    bench.node.leave();
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_TRUE(bench.commands.refusals.empty());
    EXPECT_EQ(0u, bench.node.standing().commands);
}
