#include "apiFixture.h"

namespace {

class ValuesRoute : public ApiTest
{
protected:
    /// "left/level left/count"
    std::string tagsOf(const HttpRequest::Pairs& query) const
    {
        const HttpResponse response = get("/api/v1/values", query);
        EXPECT_EQ(200, response.status) << response.body.constData();
        std::string names;
        for (const QJsonValue value : QJsonDocument::fromJson(response.body).array()) {
            const QJsonObject object = value.toObject();
            names += (names.empty() ? "" : " ") +
                     (object.value(QLatin1String("link")).toString() + QLatin1Char('/') +
                      object.value(QLatin1String("tag")).toString())
                         .toStdString();
        }
        return names;
    }
};

} // namespace

TEST_F(ValuesRoute, TellsAllTagsInTheOrderOfTheConfiguration)
{
    EXPECT_EQ("left/level left/count right/pump", tagsOf({}));
    EXPECT_EQ("left/level left/count right/pump", tagsOf({{"link", ""}, {"tag", ""}}));
}

TEST_F(ValuesRoute, ChoosesByLinkAndByTag)
{
    EXPECT_EQ("right/pump", tagsOf({{"link", "right"}}));
    EXPECT_EQ("left/count", tagsOf({{"tag", "count"}}));
    EXPECT_EQ("left/level", tagsOf({{"link", "left"}, {"tag", "level"}}));
}

TEST_F(ValuesRoute, KnowsNoOtherNames)
{
    EXPECT_EQ("404 there is no link \"up\"", summaryOf(get("/api/v1/values", {{"link", "up"}})));
    EXPECT_EQ("404 there is no tag \"pump\"",
              summaryOf(get("/api/v1/values", {{"link", "left"}, {"tag", "pump"}})));
}

TEST_F(ValuesRoute, SaysWhatMayBeWrittenNow)
{
    const HttpRequest::Pairs level{{"tag", "level"}};
    EXPECT_TRUE(get("/api/v1/values", level).body.contains("\"writable\":true"));
    EXPECT_TRUE(get("/api/v1/values", {{"tag", "count"}}).body.contains("\"writable\":false"));
    m_areWritesAllowed = false;
    EXPECT_TRUE(get("/api/v1/values", level).body.contains("\"writable\":false"));
}

TEST_F(ValuesRoute, HasNoFramesOfALinkThatWasNeverOpen)
{
    EXPECT_EQ("200 []", summaryOf(get("/api/v1/frames", {{"link", "left"}})));
    EXPECT_EQ("404 there is no link \"up\"", summaryOf(get("/api/v1/frames", {{"link", "up"}})));
    EXPECT_EQ("400 the query names no link", summaryOf(get("/api/v1/frames.pcap")));
}
