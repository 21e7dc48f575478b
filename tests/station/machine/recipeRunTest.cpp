#include "machine/recipeRun.h"

#include <gtest/gtest.h>

// A recipe from the ends of its jobs, without a link. Its words lie in two blocks of one station.

namespace {

const WireCost COST = {10000, 1};
const QByteArray WORD("\x07\x00", 2);
const QByteArray OTHER("\x08\x00", 2);

Tag wordAt(int number)
{
    Tag tag;
    tag.name = QLatin1String("word ") + QString::number(number);
    tag.area = QLatin1String("MW");
    tag.number = number;
    return tag;
}

RecipeRequest request(RecipeRequest::Kind kind, bool verify = false)
{
    RecipeRequest request;
    request.kind = kind;
    request.rows = {wordAt(3100), wordAt(3200)};
    request.values = {WORD, WORD};
    request.verify = verify;
    return request;
}

JobEnd done(const QByteArray& values = QByteArray())
{
    JobEnd end;
    end.values = values;
    return end;
}

JobEnd refused()
{
    JobEnd end;
    end.outcome = JobEnd::REFUSED;
    end.block = QLatin1String("MW200 of station 1");
    end.reason = QLatin1String("refused by the PLC");
    return end;
}

} // namespace

TEST(RecipeRun, OfADownloadIsOverWithTheTransfer)
{
    RecipeRun run(request(RecipeRequest::DOWNLOAD), COST);
    EXPECT_FALSE(run.isOver());
    run.ended(done());
    ASSERT_TRUE(run.isOver());
    EXPECT_EQ(RecipeEnd::DONE, run.end().outcome);
    EXPECT_EQ(2, run.blocks());
}

TEST(RecipeRun, OfAVerifiedDownloadReadsBackAndCompares)
{
    RecipeRun run(request(RecipeRequest::DOWNLOAD, true), COST);
    EXPECT_EQ(4, run.blocks());
    EXPECT_EQ(1, run.blocksDone(1));
    run.ended(done());
    EXPECT_FALSE(run.isOver());
    EXPECT_EQ(3, run.blocksDone(1));
    run.ended(done(WORD + OTHER));
    ASSERT_TRUE(run.isOver());
    const RecipeEnd end = run.end();
    EXPECT_EQ(RecipeEnd::DIFFERS, end.outcome);
    ASSERT_EQ(1u, end.differences.size());
    EXPECT_EQ(1u, end.differences[0].row);
    EXPECT_EQ(OTHER, end.differences[0].found);
}

TEST(RecipeRun, ThatFailsNamesTheBlock)
{
    RecipeRun run(request(RecipeRequest::DOWNLOAD), COST);
    run.ended(refused());
    ASSERT_TRUE(run.isOver());
    EXPECT_EQ(RecipeEnd::FAILED, run.end().outcome);
    EXPECT_EQ("MW200 of station 1", run.end().block.toStdString());
    EXPECT_EQ("refused by the PLC", run.end().reason.toStdString());
}

TEST(RecipeRun, WhoseValuesAreWrittenSaysSoWhenItCannotReadThemBack)
{
    RecipeRun run(request(RecipeRequest::DOWNLOAD, true), COST);
    run.ended(done());
    EXPECT_EQ("all values are written, but could not be read back: the station stopped",
              run.givenUp(QLatin1String("the station stopped")).reason.toStdString());
    run.ended(refused());
    ASSERT_TRUE(run.isOver());
    EXPECT_EQ("all values are written, but could not be read back: refused by the PLC",
              run.end().reason.toStdString());
}

TEST(RecipeRun, OfAnUploadHasTheValues)
{
    RecipeRequest upload = request(RecipeRequest::UPLOAD);
    upload.values.clear();
    RecipeRun run(upload, COST);
    run.ended(done(WORD + OTHER));
    EXPECT_EQ((std::vector<QByteArray>{WORD, OTHER}), run.end().values);
}

TEST(RecipeRun, OfRowsThatShareMemoryIsNotBegun)
{
    RecipeRequest shared = request(RecipeRequest::UPLOAD);
    shared.rows[1] = shared.rows[0];
    EXPECT_THROW(RecipeRun(shared, COST), RecipeError);
}
