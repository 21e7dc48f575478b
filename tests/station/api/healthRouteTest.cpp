#include "apiFixture.h"

namespace {

class HealthRoute : public ApiTest
{
};

} // namespace

TEST_F(HealthRoute, NamesEachLinkThatIsNotUp)
{
    const HttpResponse response = get("/healthz");
    EXPECT_EQ(503, response.status);
    const QJsonObject object = QJsonDocument::fromJson(response.body).object();
    EXPECT_EQ(QJsonValue(false), object.value(QLatin1String("healthy")));
    const QJsonArray reasons = object.value(QLatin1String("reasons")).toArray();
    ASSERT_EQ(2, reasons.size());
    EXPECT_TRUE(reasons.at(0).toString().startsWith(QLatin1String("link \"left\" is ")));
    EXPECT_TRUE(reasons.at(1).toString().startsWith(QLatin1String("link \"right\" is ")));
}

TEST_F(HealthRoute, IsWellWithoutALink)
{
    m_links.apply({});
    EXPECT_EQ("200 {\"healthy\":true,\"reasons\":[]}", summaryOf(get("/healthz")));
}
