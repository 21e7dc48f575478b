#include "topics/jsonNodeRoom.h"
#include "values/numberTexts.h"

// The sets of the JSON dialect: each has one result, and the old ones are never executed.

class JsonSetsTest : public JsonNodeTest
{
protected:
    JsonSetsTest()
    {
        take({reading("left", "count", 7)});
        open();
        news();
    }

    static const char* level()
    {
        return "kakb/hall 1/left/level/set";
    }
    static const char* count()
    {
        return "kakb/hall 1/left/count/set";
    }

    /// The results that went out since the last call.
    Texts refused(const char* topic, const char* payload, bool isRetained = false)
    {
        set(topic, payload, isRetained);
        EXPECT_TRUE(commands.writes.empty());
        return news();
    }
};

TEST_F(JsonSetsTest, AreWrittenAndHaveTheirResult)
{
    set(count(), R"({"v":5,"id":"a\"1"})");
    ASSERT_EQ(1u, commands.writes.size());
    const RecordedCommands::Write& write = commands.writes[0];
    EXPECT_EQ(QLatin1String("left"), write.link);
    EXPECT_EQ(QLatin1String("count"), write.tag);
    EXPECT_EQ(MetricValue(qint64(5)), write.value);
    EXPECT_EQ("mqtt://a:1883 kakb/hall 1/left/count/set", write.from.toStdString());
    EXPECT_EQ(Texts(), news());
    commands.end(0, WriteEnd::CONFIRMED, QByteArray("\x05\x00", 2));
    turns();
    EXPECT_EQ(
        (Texts{R"(left/count/result {"id":"a\"1","outcome":"confirmed","reason":null,"v":5})"}),
        news());
    EXPECT_EQ(1, session.published.back().message.qos);
    EXPECT_FALSE(session.published.back().message.isRetained);
}

TEST_F(JsonSetsTest, TellWhyTheyWereRefusedOrFailed)
{
    set(count(), R"({"v":5,"id":1})");
    set(count(), R"({"v":6,"id":2})");
    commands.end(1, WriteEnd::FAILED, QByteArray("\x06\x00", 2), "no answer");
    commands.end(0, WriteEnd::REFUSED, QByteArray(), "tag \"count\" is read-only");
    turns();
    EXPECT_EQ(
        (Texts{
            R"(left/count/result {"id":2,"outcome":"failed","reason":"no answer","v":6})",
            R"(left/count/result {"id":1,"outcome":"refused","reason":"tag \"count\" is read-only","v":null})"}),
        news());
    EXPECT_EQ(2u, node->standing().commands);
    EXPECT_EQ(1u, node->standing().refusedCommands);
}

TEST_F(JsonSetsTest, HaveTheValueOfTheTagsType)
{
    set("kakb/hall 1/left/a_b/set", R"({"v":true})");
    set("kakb/hall 1/left/a_b/set", R"({"v":0})");
    set(level(), R"({"v":21.5})");
    set("kakb/hall 1/right/level/set", R"({"v":-32768})");
    ASSERT_EQ(4u, commands.writes.size());
    EXPECT_EQ(MetricValue(true), commands.writes[0].value);
    EXPECT_EQ(QLatin1String("a/b"), commands.writes[0].tag);
    EXPECT_EQ(MetricValue(false), commands.writes[1].value);
    EXPECT_EQ(MetricValue(21.5f), commands.writes[2].value);
    EXPECT_EQ(MetricValue(qint64(-32768)), commands.writes[3].value);
    EXPECT_EQ(QLatin1String("right"), commands.writes[3].link);
}

TEST_F(JsonSetsTest, ThatDoNotFitAreRefusedUnsent)
{
    EXPECT_EQ(
        (Texts{
            R"(left/count/result {"id":1,"outcome":"refused","reason":"65535.5 does not fit uint16: 0 to 65535","v":7})"}),
        refused(count(), R"({"v":65535.5,"id":1})"));
    EXPECT_NE(std::string::npos,
              refused(level(), R"({"v":1e39,"id":2})").at(0).find("1e+39 does not fit float32"));
    ASSERT_EQ(2u, commands.refusals.size());
    EXPECT_EQ(QLatin1String("kakb/hall 1/left/count"), commands.refusals[0].what);
    EXPECT_EQ("65535.5 does not fit uint16: 0 to 65535", commands.refusals[0].reason.toStdString());
    EXPECT_EQ("mqtt://a:1883 kakb/hall 1/left/count/set", commands.refusals[0].from.toStdString());
}

TEST_F(JsonSetsTest, JudgeANumberAsAWriteOfTheApiDoes)
{
    for (const NumberText& number : NUMBER_TEXTS) {
        commands.writes.clear();
        commands.refusals.clear();
        set(level(), (std::string("{\"v\":") + number.text + '}').c_str());
        EXPECT_EQ(number.verdict == NumberText::FITS ? 1u : 0u, commands.writes.size())
            << number.text;
        if (number.verdict == NumberText::FITS) continue;
        ASSERT_EQ(1u, commands.refusals.size()) << number.text;
        const std::string reason = commands.refusals[0].reason.toStdString();
        if (number.verdict == NumberText::NOT_JSON)
            EXPECT_EQ(std::string("it is not JSON: the number ") + number.text + " is not JSON",
                      reason);
        else
            EXPECT_EQ(0u, reason.find("a number of this size does not fit float32")) << reason;
    }
}

TEST_F(JsonSetsTest, ThatWereRetainedAreNeverExecuted)
{
    EXPECT_EQ(Texts(), refused(count(), R"({"v":5,"id":1})", true));
    ASSERT_EQ(1u, commands.refusals.size());
    EXPECT_EQ("it was retained by the broker, so it is old",
              commands.refusals[0].reason.toStdString());
    EXPECT_EQ(1u, node->standing().refusedCommands);
}

TEST_F(JsonSetsTest, ThatCameTooLateAreRefusedWithTheClock)
{
    EXPECT_EQ(
        (Texts{
            R"(left/count/result {"id":1,"outcome":"refused","reason":"expired: its \"expires\" is 1699999999999, this station's clock says 1700000000000","v":7})"}),
        refused(count(), R"({"v":5,"id":1,"expires":1699999999999})"));
    EXPECT_EQ(1u, refused(count(), R"({"v":5,"id":1,"expires":0})").size());
    set(count(), R"({"v":5,"id":1,"expires":1700000000000})");
    EXPECT_EQ(1u, commands.writes.size());
}

TEST_F(JsonSetsTest, ThatNameNoTagAreRefused)
{
    EXPECT_EQ(
        (Texts{
            R"(left/none/result {"id":null,"outcome":"refused","reason":"no tag has this topic","v":null})"}),
        refused("kakb/hall 1/left/none/set", R"({"v":5})"));
    const std::string longest = "kakb/hall 1/left/" + std::string(65000, 'x') + "/set";
    EXPECT_EQ(Texts(), refused(longest.c_str(), R"({"v":5})"));
    EXPECT_EQ(2u, commands.refusals.size());
}

TEST_F(JsonSetsTest, ThatAreGarbageAreCountedAndTheSessionGoesOn)
{
    const std::string deep(2000, '[');
    const std::string lengthy = "{\"v\":1,\"x\":\"" + std::string(5000, 'x') + "\"}";
    const std::string longId = "{\"v\":1,\"id\":\"" + std::string(257, 'x') + "\"}";
    const char* const garbage[] = {"5",
                                   "[]",
                                   "{",
                                   "\xff\xfe",
                                   "{}",
                                   R"({"v":"5"})",
                                   R"({"v":null})",
                                   R"({"v":[1]})",
                                   R"({"v":1,"v":2})",
                                   R"({"v":1,"id":1.5})",
                                   R"({"v":1,"id":1e300})",
                                   R"({"v":1,"id":{}})",
                                   "{\"v\":1,\"id\":\"\\\xa5\"}",
                                   R"({"v":1,"expires":"soon"})",
                                   R"({"v":1,"expires":1.5})",
                                   deep.c_str(),
                                   lengthy.c_str(),
                                   longId.c_str()};
    for (const char* const payload : garbage) {
        const Texts results = refused(count(), payload);
        ASSERT_EQ(1u, results.size()) << payload;
        EXPECT_EQ(0u, results[0].find(R"(left/count/result {"id":null,"outcome":"refused")"))
            << results[0];
    }
    EXPECT_EQ(std::size(garbage), commands.refusals.size());
    EXPECT_EQ(std::size(garbage), node->standing().refusedCommands);
    EXPECT_EQ(RecordedSession::OPEN, session.state);
    set(count(), R"({"v":1})");
    EXPECT_EQ(1u, commands.writes.size());
}

TEST_F(JsonSetsTest, KeepTheirIdWhateverElseIsWrong)
{
    for (const char* const payload : {R"({"v":"5","id":1700000000000})", R"({"id":1700000000000})",
                                      R"({"v":1,"expires":"x","id":1700000000000})"}) {
        const Texts results = refused(count(), payload);
        ASSERT_EQ(1u, results.size());
        EXPECT_NE(std::string::npos, results[0].find(R"({"id":1700000000000,)")) << results[0];
    }
}

TEST_F(JsonSetsTest, WithoutAPayloadAskForNothing)
{
    EXPECT_EQ(Texts(), refused(count(), ""));
    EXPECT_EQ(Texts(), refused(count(), "", true));
    EXPECT_TRUE(commands.refusals.empty());
    EXPECT_EQ(0u, node->standing().commands);
}

TEST_F(JsonSetsTest, WhoseResultWasNotAcknowledgedTellItAgain)
{
    set(count(), R"({"v":5,"id":1})");
    set(count(), R"({"v":6,"id":2})");
    commands.end(0, WriteEnd::CONFIRMED);
    turns();
    session.acknowledge();
    commands.end(1, WriteEnd::CONFIRMED);
    turns();
    session.end("lost");
    told = 0;
    open();
    const Texts again = news();
    EXPECT_EQ(R"(left/count/result {"id":2,"outcome":"confirmed","reason":null,"v":null})",
              again.front());
    for (size_t at = 1; at < again.size(); ++at)
        EXPECT_EQ(std::string::npos, again[at].find("result")) << again[at];
}

TEST_F(JsonSetsTest, ThatEndWithoutASessionTellTheirResultInTheNext)
{
    set(count(), R"({"v":5,"id":1})");
    session.end("lost");
    commands.end(0, WriteEnd::FAILED, QByteArray(), "x");
    told = 0;
    open();
    EXPECT_EQ(R"(left/count/result {"id":1,"outcome":"failed","reason":"x","v":null})",
              news().front());
}

TEST_F(JsonSetsTest, TellTheirResultsBeforeTheStationLeaves)
{
    set(count(), R"({"v":5,"id":1})");
    commands.end(0, WriteEnd::CONFIRMED);
    node->leave();
    const Texts last = news();
    ASSERT_EQ(2u, last.size());
    EXPECT_EQ(0u, last[0].find("left/count/result"));
    EXPECT_EQ("status offline", last[1]);
    set(count(), R"({"v":6,"id":2})");
    EXPECT_EQ(1u, commands.writes.size());
}

TEST_F(JsonSetsTest, OfANodeThatIsGoneEndInSilence)
{
    set(count(), R"({"v":5,"id":1})");
    node.reset();
    commands.end(0, WriteEnd::CONFIRMED);
    EXPECT_EQ(Texts(), news());
}

TEST_F(JsonSetsTest, ThatNobodyAcknowledgesStayBounded)
{
    for (int number = 0; number < 12000; ++number)
        session.send(QString::fromUtf8(count()), QByteArray("x"));
    turns();
    EXPECT_EQ(1000u, news().size());
    session.acknowledge();
    turns();
    EXPECT_EQ(1000u, news().size());
}
