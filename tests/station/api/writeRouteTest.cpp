#include "apiFixture.h"
#include "values/numberTexts.h"

namespace {

class WriteRoute : public ApiTest
{
protected:
    std::string written(const QByteArray& body) const
    {
        return summaryOf(post("/api/v1/write", body));
    }
};

} // namespace

TEST_F(WriteRoute, TakesOneJsonObjectOfThreeKeys)
{
    EXPECT_EQ("400 the body is no JSON object", written("[1]"));
    EXPECT_EQ("400 the request has no text \"link\"", written("{}"));
    EXPECT_EQ("400 the request has no text \"tag\"", written(R"({"link":"left","value":1})"));
    EXPECT_EQ("400 the request has no text \"link\"",
              written(R"({"link":null,"tag":"level","value":1})"));
    EXPECT_EQ("400 the request has no \"value\"", written(R"({"link":"left","tag":"level"})"));
    EXPECT_EQ("400 the request has the unknown key \"force\"",
              written(R"({"link":"left","tag":"level","value":1,"force":true})"));
}

TEST_F(WriteRoute, RefusesWhatIsNotJson)
{
    for (const QByteArray& body :
         {QByteArray(), QByteArray("level=1"), QByteArray("{"), QByteArray("\0{}", 3),
          QByteArray(R"({"link":"left","tag":"level","value":NaN})"),
          QByteArray(R"({"link":"left","tag":"level","value":01})"),
          QByteArray(R"({"link":"left","tag":"level","value":1}x)"), QByteArray("\xef\xbb\xbf{}"),
          QByteArray("{\"link\":\"\\\xa5\"}"),
          QByteArray("{\"link\":\"\xff\xfe\",\"tag\":\"level\",\"value\":1}")}) {
        const std::string summary = written(body);
        EXPECT_EQ(0u, summary.find("400 the body is not JSON: ")) << body.left(50).constData();
    }
}

TEST_F(WriteRoute, KnowsNoOtherLinkAndTag)
{
    EXPECT_EQ("404 there is no link \"up\"", written(R"({"link":"up","tag":"level","value":1})"));
    EXPECT_EQ("404 link \"right\" has no tag \"level\"",
              written(R"({"link":"right","tag":"level","value":1})"));
}

TEST_F(WriteRoute, WritesOnlyWithBothConsents)
{
    EXPECT_EQ("403 tag \"count\" is read-only",
              written(R"({"link":"left","tag":"count","value":1})"));
    m_areWritesAllowed = false;
    EXPECT_EQ("403 this station writes nothing: it runs without --allow-writes",
              written(R"({"link":"left","tag":"level","value":1})"));
}

TEST_F(WriteRoute, RefusesAValueThatDoesNotFitWithTheRange)
{
    EXPECT_EQ("422 2 does not fit bool: 0, 1, true or false",
              written(R"({"link":"right","tag":"pump","value":2})"));
    EXPECT_EQ("422 a text does not fit bool: 0, 1, true or false",
              written(R"({"link":"right","tag":"pump","value":"1"})"));
}

TEST_F(WriteRoute, JudgesANumberAsASetOfMqttDoes)
{
    std::vector<std::future<HttpResponse>> taken;
    for (const NumberText& number : NUMBER_TEXTS) {
        std::future<HttpResponse> answer =
            posted("/api/v1/write",
                   QByteArray(R"({"link":"left","tag":"level","value":)") + number.text + '}');
        if (number.verdict == NumberText::FITS) {
            taken.push_back(std::move(answer));
            continue;
        }
        const std::string summary = summaryOf(answer.get());
        if (number.verdict == NumberText::NOT_JSON)
            EXPECT_EQ(std::string("400 the body is not JSON: the number ") + number.text +
                          " is not JSON",
                      summary);
        else
            EXPECT_EQ(0u, summary.find("422 a number of this size does not fit float32"))
                << summary;
    }
    m_links.find(QLatin1String("left"))->stop(QLatin1String("the test ended"));
    for (std::future<HttpResponse>& answer : taken)
        EXPECT_EQ(200, answer.get().status);
}

TEST_F(WriteRoute, RefusesAKeyThatStandsTwice)
{
    EXPECT_EQ("400 the body cannot be taken: the key \"tag\" stands twice",
              written(R"({"link":"left","tag":"level","value":1,"tag":"count"})"));
    EXPECT_EQ("400 the body cannot be taken: the key \"value\" stands twice",
              written(R"({"link":"right","tag":"pump","value":[1],"value":[2]})"));
}

TEST_F(WriteRoute, RefusesABodyThatIsNestedTooDeeply)
{
    EXPECT_EQ("400 the body cannot be taken: it is nested too deeply",
              written(QByteArray(30000, '[') + QByteArray(30000, ']')));
}

TEST_F(WriteRoute, AnswersWithTheOneOutcome)
{
    std::future<HttpResponse> ended =
        posted("/api/v1/write", R"({"link":"left","tag":"level","value":21.5})");
    m_links.find(QLatin1String("left"))->stop(QLatin1String("the test ended"));
    const HttpResponse response = ended.get();
    EXPECT_EQ(200, response.status);
    const QJsonObject object = QJsonDocument::fromJson(response.body).object();
    EXPECT_EQ(QLatin1String("failed"), object.value(QLatin1String("outcome")).toString());
    EXPECT_FALSE(object.value(QLatin1String("reason")).toString().isEmpty());
    EXPECT_TRUE(object.value(QLatin1String("value")).isNull());
    EXPECT_TRUE(response.body.startsWith("{\"id\":")) << response.body.constData();
}
