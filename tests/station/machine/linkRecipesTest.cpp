#include "machine/machineTest.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

// Recipes of words and bits, for two stations.

class LinkRecipesTest : public MachineTest
{
protected:
    LinkRecipesTest() : plc({QLatin1String("--stations"), QLatin1String("1-2")})
    {
        live = liveLink(config(plc.link(), tags({"MW0"})));
    }

    RecipeRequest request(RecipeRequest::Kind kind)
    {
        RecipeRequest request;
        request.kind = kind;
        request.rows = tags({"MW100", "MW200:float32:high", "MX900.1", "MX950.7", "2:MW100",
                             "2:MX900.1", "QW10:int16"});
        const char* const values[] = {"11", "21.5", "1", "0", "12", "1", "-5"};
        for (size_t row = 0; row < request.rows.size(); ++row)
            request.values.push_back(bytesOf(request.rows[row], values[row]));
        return request;
    }

    ControlledPlc plc;
    std::shared_ptr<MachineLink> live;
};

TEST_F(LinkRecipesTest, AreWrittenAndVerified)
{
    RecipeRequest all = request(RecipeRequest::DOWNLOAD);
    all.verify = true;
    EXPECT_EQ("done", summaryOf(transfer(*live, all)));
    EXPECT_EQ("ok 11", plc.command("get MW100"));
    EXPECT_EQ("ok 1", plc.command("get MX900.1"));
    EXPECT_EQ("ok 12", plc.command("get 2:MW100"));
    EXPECT_EQ("ok 1", plc.command("get 2:MX900.1"));
}

TEST_F(LinkRecipesTest, AreShownByTheTagsOfTheirPlaces)
{
    std::vector<Tag> once = tags({"MW100", "MX900.1", "MW200:float32:high"});
    for (Tag& tag : once)
        ASSERT_TRUE(takeRate(QLatin1String("once"), tag.rate));
    live->stop(QLatin1String("another takes its place"));
    live = liveLink(config(plc.link(), once));
    ASSERT_EQ("done", summaryOf(transfer(*live, request(RecipeRequest::DOWNLOAD))));
    EXPECT_TRUE(news.await([&] {
        return MachineTest::shown(*live, 0) == "11" && MachineTest::shown(*live, 1) == "1" &&
               MachineTest::shown(*live, 2) == "21.5";
    }));
}

TEST_F(LinkRecipesTest, AreReadBack)
{
    ASSERT_EQ("done", summaryOf(transfer(*live, request(RecipeRequest::DOWNLOAD))));
    ASSERT_EQ("ok", plc.command("set MX950.7=1"));
    RecipeRequest reading = request(RecipeRequest::UPLOAD);
    std::vector<QByteArray> expected = std::exchange(reading.values, {});
    expected[3] = QByteArray(1, 1);
    const RecipeEnd end = transfer(*live, reading);
    EXPECT_EQ("done", summaryOf(end));
    EXPECT_EQ(expected, end.values);
}

TEST_F(LinkRecipesTest, DifferWhereThePlcHoldsOtherValues)
{
    const RecipeRequest comparison = request(RecipeRequest::COMPARE);
    ASSERT_EQ("done", summaryOf(transfer(*live, request(RecipeRequest::DOWNLOAD))));
    EXPECT_EQ("done", summaryOf(transfer(*live, comparison)));
    ASSERT_EQ("ok", plc.command("set 2:MW100=13"));
    ASSERT_EQ("ok", plc.command("set MX900.1=0"));
    const RecipeEnd end = transfer(*live, comparison);
    EXPECT_EQ("differs", summaryOf(end));
    ASSERT_EQ(2u, end.differences.size());
    EXPECT_EQ(2u, end.differences[0].row);
    EXPECT_EQ(QByteArray(1, 0), end.differences[0].found);
    EXPECT_EQ(4u, end.differences[1].row);
    EXPECT_EQ(bytesOf(comparison.rows[4], "13"), end.differences[1].found);
}

TEST_F(LinkRecipesTest, NameTheBlockThatFailed)
{
    ASSERT_EQ("ok", plc.command("refuse MW200..MW200:2:write"));
    EXPECT_EQ("failed at MW200 to MW202 of station 1: refused by the PLC: illegal address "
              "(exception 2)",
              summaryOf(transfer(*live, request(RecipeRequest::DOWNLOAD))));
}

TEST_F(LinkRecipesTest, NameTheBlockThatCannotBeReadBack)
{
    RecipeRequest reading = request(RecipeRequest::UPLOAD);
    ASSERT_EQ("ok", plc.command("refuse MX950.7..MX950.7"));
    const RecipeEnd end = transfer(*live, reading);
    EXPECT_EQ(RecipeEnd::FAILED, end.outcome);
    EXPECT_EQ("MX950.0 to MX951.7 of station 1", end.block.toStdString());
    EXPECT_EQ("refused by the PLC: illegal address (exception 2)", end.reason.toStdString());
}

TEST_F(LinkRecipesTest, ThatCannotBeTransferredSayWhy)
{
    const auto failureOf = [this](auto change) {
        RecipeRequest bad = request(RecipeRequest::DOWNLOAD);
        change(bad);
        return summaryOf(transfer(*live, bad));
    };
    EXPECT_EQ("failed: the recipe has no rows", failureOf([](RecipeRequest& bad) {
                  bad.rows.clear();
                  bad.values.clear();
              }));
    EXPECT_EQ("failed: MW100 and MX100.3 share a bit of station 1",
              failureOf([this](RecipeRequest& bad) { bad.rows[2] = tag("MX100.3"); }));
    EXPECT_EQ("failed: 2:MW100: the value is missing",
              failureOf([](RecipeRequest& bad) { bad.values[4].clear(); }));
    EXPECT_EQ("failed: QW10:int16: the value is missing",
              failureOf([](RecipeRequest& bad) { bad.values.pop_back(); }));
    EXPECT_EQ("failed: MW100: the value has another size",
              failureOf([](RecipeRequest& bad) { bad.values[0] = QByteArray(4, 0); }));
    EXPECT_EQ("failed: MW200:float32:high: nan is not written",
              failureOf([](RecipeRequest& bad) { bad.values[1] = bytesOf(bad.rows[1], "nan"); }));
    EXPECT_EQ("failed: IW4: IW is read-only",
              failureOf([this](RecipeRequest& bad) { bad.rows[0] = tag("IW4"); }));
    EXPECT_EQ("ok 0", plc.command("get MW100"));
}

TEST_F(LinkRecipesTest, OfAnInputAreaAreRead)
{
    RecipeRequest reading;
    reading.kind = RecipeRequest::UPLOAD;
    reading.rows = tags({"IW4", "IX3.1"});
    ASSERT_EQ("ok", plc.command("set IW4=77"));
    const RecipeEnd end = transfer(*live, reading);
    ASSERT_EQ("done", summaryOf(end));
    EXPECT_EQ(bytesOf(reading.rows[0], "77"), end.values[0]);
    EXPECT_EQ(QByteArray(1, 0), end.values[1]);
}

TEST_F(LinkRecipesTest, EndWithTheLink)
{
    ASSERT_EQ("ok", plc.command("stall 20"));
    std::vector<std::future<RecipeEnd>> ends;
    for (int i = 0; i <= LinkJobs::MOST_RECIPES; ++i)
        ends.push_back(startRecipe(*live, request(RecipeRequest::DOWNLOAD)));
    EXPECT_EQ("failed: not sent: too many wait on this link already",
              summaryOf(endOf(std::move(ends.back()))));
    ends.pop_back();
    live->stop(QLatin1String("it was taken out"));
    for (std::future<RecipeEnd>& end : ends) {
        const RecipeEnd ended = endOf(std::move(end));
        EXPECT_EQ(RecipeEnd::FAILED, ended.outcome);
        EXPECT_TRUE(ended.reason.contains(QLatin1String("it was taken out")));
    }
}

TEST_F(LinkRecipesTest, TellTheirProgressAndTheirEnd)
{
    RecipeRequest longOne;
    longOne.kind = RecipeRequest::DOWNLOAD;
    for (int row = 0; row < 1000; ++row) {
        longOne.rows.push_back(tag(("MW" + std::to_string(4 * row)).c_str()));
        longOne.values.push_back(bytesOf(longOne.rows.back(), "1"));
    }
    const RecipeEnd end = transfer(*live, longOne);
    ASSERT_EQ("done", summaryOf(end));
    std::vector<StationEvent> told = events.since(0);
    told.erase(std::remove_if(
                   told.begin(), told.end(),
                   [](const StationEvent& event) { return event.kind != StationEvent::RECIPE; }),
               told.end());
    ASSERT_FALSE(told.empty());
    EXPECT_LT(told.size(), 100u);
    int done = 0;
    for (size_t i = 0; i + 1 < told.size(); ++i) {
        const QJsonObject progress = QJsonDocument::fromJson(told[i].document).object();
        EXPECT_EQ(1000, progress.value(QLatin1String("blocks")).toInt());
        EXPECT_GT(progress.value(QLatin1String("done")).toInt(), done);
        done = progress.value(QLatin1String("done")).toInt();
    }
    EXPECT_EQ("{\"id\":" + std::to_string(end.id) +
                  ",\"link\":\"plc\",\"kind\":\"download\",\"outcome\":\"done\",\"block\":null,"
                  "\"reason\":null,\"rows\":1000,\"differences\":0}",
              told.back().document.toStdString());
}
