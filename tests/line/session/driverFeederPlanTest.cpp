#include "sessionBench.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

// The driver's order of requests on the line: neighbours in the plan must be neighbours there.

namespace {

enum { SECOND = SessionBench::SECOND };

/// The function and the number of registers. Replies of the same kind look alike.
using Kind = std::pair<int, int>;

Kind kindOf(const QByteArray& request)
{
    return Kind(request.at(1), static_cast<unsigned char>(request.at(4)) * 256 +
                                   static_cast<unsigned char>(request.at(5)));
}

std::vector<Tag> oneWordBlocks()
{
    std::vector<Tag> tags;
    for (int i = 0; i < 7; ++i)
        tags.push_back(tagOf("MW", 3000 + 200 * i));
    for (int i = 0; i < 2; ++i) {
        tags.push_back(tagOf("IW", 100 * i));
        tags.push_back(tagOf("QW", 100 * i));
    }
    return tags;
}

} // namespace

class DriverFeederPlanTest : public testing::Test
{
protected:
    /// Polls for a second to get into step, then for ten seconds that are recorded.
    void pollInStep(const std::vector<Tag>& tags)
    {
        bench.poll(tags);
        bench.run(SECOND);
        bench.sent.clear();
        bench.fences.clear();
        bench.run(10 * SECOND);
        ASSERT_GT(bench.sent.size(), 500u);
    }

    std::set<Kind> kindsSent() const
    {
        std::set<Kind> kinds;
        for (const QByteArray& request : bench.sent)
            kinds.insert(kindOf(request));
        return kinds;
    }

    SessionBench bench;
};

TEST_F(DriverFeederPlanTest, ConsecutiveRequestsDifferAndNeedNoFence)
{
    pollInStep(oneWordBlocks());
    for (size_t i = 1; i < bench.sent.size(); ++i)
        ASSERT_NE(kindOf(bench.sent[i - 1]), kindOf(bench.sent[i])) << i;
    EXPECT_TRUE(bench.fences.empty());
}

TEST_F(DriverFeederPlanTest, BlocksAreReadWithTheirPlannedLength)
{
    pollInStep(oneWordBlocks());
    std::set<Kind> planned;
    for (const ReadBlock& block : bench.blocks)
        planned.insert(Kind(block.area == QLatin1String("IW") ? 4 : 3, block.count));
    EXPECT_EQ(planned, kindsSent());
}

TEST_F(DriverFeederPlanTest, EqualBitGroupsAreReadWithOneRegisterMore)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 6; ++i)
        tags.push_back(tagOf("MX", 3000 + 16 * 200 * i, Tag::BOOL));
    pollInStep(tags);
    for (size_t i = 1; i < bench.sent.size(); ++i)
        ASSERT_NE(kindOf(bench.sent[i - 1]), kindOf(bench.sent[i])) << i;
    EXPECT_EQ((std::set<Kind>{{3, 1}, {3, 2}}), kindsSent());
    EXPECT_TRUE(bench.fences.empty());
}

TEST_F(DriverFeederPlanTest, BlocksOfDifferentStationsMayBeAlike)
{
    bench.plc.station(2);
    pollInStep({tagOf("MW", 3000), tagOf("MW", 3000, Tag::UINT16, 2)});
    EXPECT_TRUE(bench.fences.empty());
}

// The last tag is the PLC's last register. The plan reads a spare word behind it to make the reply
// different from its neighbours.
TEST_F(DriverFeederPlanTest, RefusedSpareWordIsRemovedFromTheBlock)
{
    bench.plc.station(1).lastHolding = 3400;
    bench.plc.station(1).holding[3400] = 77;
    bench.poll({tagOf("MW", 3000), tagOf("MW", 3400)});
    ASSERT_EQ(2, bench.blocks[1].count);
    ASSERT_EQ(1, bench.blocks[1].spare);
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[1].good);
    EXPECT_EQ(77, bench.shown(1));
    const int reads = bench.sink.tags[1].reads;
    bench.run(SECOND);
    // A fence separates the two blocks, because neither may be longer: about 32 cycles a second.
    EXPECT_GT(bench.sink.tags[1].reads, reads + 20);
}

TEST_F(DriverFeederPlanTest, RefusedBlockWithoutASpareWordIsBad)
{
    bench.plc.station(1).lastHolding = 3399;
    bench.poll({tagOf("MW", 3000), tagOf("MW", 3400)});
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("refused by the PLC: illegal address (exception 2)"),
              bench.sink.tags[1].trouble);
}
