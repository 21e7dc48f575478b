#include "session/recipeSteps.h"
#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

// A recipe of words and bits, written to and read back from two stations of a model PLC.

namespace {

enum { WRITE = 1, READ_WORDS, READ_BITS, COSTLY = 10000, CHEAP = 1, WORD = 3100, BIT = 5000 };

const QByteArray ON(1, 1);
const QByteArray OFF(1, 0);

const WireCost COST = {COSTLY, CHEAP};

} // namespace

class RecipeStepsTest : public testing::Test
{
protected:
    RecipeStepsTest() : steps(tags, COST)
    {
        bench.plc.station(1);
        bench.plc.station(2);
    }

    /// The values that the steps read back.
    std::vector<QByteArray> readBack()
    {
        bench.feeder.addRecipe(steps.upload(READ_WORDS));
        bench.feeder.addRead(READ_BITS, steps.bitBlocks());
        EXPECT_TRUE(bench.runUntilEnded(READ_WORDS));
        EXPECT_TRUE(bench.sink.hasEnded(READ_BITS) || bench.runUntilEnded(READ_BITS));
        return steps.values(bench.sink.ends[READ_WORDS].values, bench.sink.ends[READ_BITS].values);
    }

    // Bits in one group, in another word, and of another station, between words of both.
    const std::vector<Tag> tags = {
        tagOf("MX", BIT + 1, Tag::BOOL),   tagOf("MW", WORD),
        tagOf("MX", BIT + 100, Tag::BOOL), tagOf("MW", WORD + 7, Tag::UINT32),
        tagOf("MX", BIT + 101, Tag::BOOL), tagOf("MX", BIT + 1, Tag::BOOL, 2),
        tagOf("MW", WORD, Tag::UINT16, 2),
    };
    const std::vector<QByteArray> values = {
        ON, wordBytes(11), OFF, wordBytes(12) + wordBytes(13), ON, ON, wordBytes(21)};
    SessionBench bench;
    RecipeSteps steps;
};

TEST_F(RecipeStepsTest, DownloadedValuesAreReadBack)
{
    bench.feeder.addRecipe(steps.download(WRITE, values));
    ASSERT_TRUE(bench.runUntilEnded(WRITE));
    EXPECT_EQ(11, bench.plc.word(1, WORD));
    EXPECT_EQ(13, bench.plc.word(1, WORD + 8));
    EXPECT_EQ(1, bench.plc.element(1, "MX", BIT + 101));
    EXPECT_EQ(1, bench.plc.element(2, "MX", BIT + 1));
    EXPECT_EQ(values, readBack());
}

TEST_F(RecipeStepsTest, ValueThatChangedInThePlcDiffers)
{
    bench.feeder.addRecipe(steps.download(WRITE, values));
    ASSERT_TRUE(bench.runUntilEnded(WRITE));
    bench.plc.setElement(1, "MX", BIT + 100, 1);
    bench.plc.setElement(2, "MW", WORD, 22);
    const std::vector<QByteArray> found = readBack();
    EXPECT_EQ((std::vector<size_t>{2, 6}), differingValues(values, found));
    EXPECT_EQ(ON, found[2]);
    EXPECT_EQ(wordBytes(22), found[6]);
}

TEST_F(RecipeStepsTest, BitsAreReadWithoutWordsInBetweenThatThePlcMayLack)
{
    for (const ReadBlock& block : steps.bitBlocks()) {
        EXPECT_TRUE(block.tags.empty());
        EXPECT_TRUE(isBitArea(block.area) || block.count == 1) << block.area.toStdString();
    }
}

TEST(RecipeStepsOfWords, NeedNoReadsOfBits)
{
    EXPECT_TRUE(RecipeSteps({tagOf("MW", WORD)}, COST).bitBlocks().empty());
}

TEST(RecipeStepsOfBits, HaveNoUpload)
{
    EXPECT_TRUE(
        RecipeSteps({tagOf("MX", BIT, Tag::BOOL)}, COST).upload(READ_WORDS).records.empty());
}
