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

TEST(EdgeFarewell, ExecutesNoCommandMore)
{
    Leaving bench;
    bench.node.leave();
    bench.command("DCMD", QLatin1String("oven-1"), commandBytes("count", 0, 10, 12));
    EXPECT_TRUE(bench.commands.writes.empty());
    EXPECT_TRUE(bench.commands.refusals.empty());
    EXPECT_EQ(0u, bench.node.standing().commands);
}
