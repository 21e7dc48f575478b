#include "api/apiFixture.h"

namespace {

using PlanRoute = ApiTest;

QJsonObject planOf(const HttpResponse& response)
{
    return QJsonDocument::fromJson(response.body).object();
}

} // namespace

TEST_F(PlanRoute, NamesEachRequestWithItsTags)
{
    const QJsonObject plan = planOf(get("/api/v1/plan", {{"link", "left"}}));
    EXPECT_EQ(QLatin1String("left"), plan.value(QLatin1String("link")).toString());
    EXPECT_EQ(QLatin1String("line"), plan.value(QLatin1String("bound")).toString());
    EXPECT_GT(plan.value(QLatin1String("cycle")).toDouble(), 0);
    const QJsonArray reads = plan.value(QLatin1String("reads")).toArray();
    ASSERT_EQ(1, reads.size()); // the float takes MW 100 and 102: the words share a place
    const QJsonObject read = reads[0].toObject();
    EXPECT_EQ(1, read.value(QLatin1String("station")).toInt());
    EXPECT_EQ(QLatin1String("MW100"), read.value(QLatin1String("first")).toString());
    EXPECT_EQ(2, read.value(QLatin1String("count")).toInt());
    EXPECT_EQ(QLatin1String("words"), read.value(QLatin1String("unit")).toString());
    EXPECT_EQ(QLatin1String("fast"), read.value(QLatin1String("rate")).toString());
    EXPECT_EQ((QJsonArray{QLatin1String("level"), QLatin1String("count")}),
              read.value(QLatin1String("tags")).toArray());
}

TEST_F(PlanRoute, NamesBitsByTheWordOrTheGroupThatHoldsThem)
{
    const QJsonObject plan = planOf(get("/api/v1/plan", {{"link", "right"}}));
    const QJsonObject read = plan.value(QLatin1String("reads")).toArray().at(0).toObject();
    EXPECT_EQ(QLatin1String("MX0.0"), read.value(QLatin1String("first")).toString());
    EXPECT_EQ(16, read.value(QLatin1String("count")).toInt());
    EXPECT_EQ(QLatin1String("bits"), read.value(QLatin1String("unit")).toString());
}

TEST_F(PlanRoute, NeedsALinkOfTheStation)
{
    EXPECT_EQ(404, get("/api/v1/plan", {{"link", "middle"}}).status);
    EXPECT_EQ(400, get("/api/v1/plan").status);
}
