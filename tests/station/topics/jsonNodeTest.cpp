#include "sparkplug/edgeNames.h"
#include "topics/jsonNodeRoom.h"
#include "topics/jsonTopics.h"

// The session, the states and the availability of the JSON dialect. The clock stands at
// 1700000000000 ms.

TEST_F(JsonNodeTest, HasItsStatusAsTheWill)
{
    node->turn();
    EXPECT_EQ(RecordedSession::WAITING, session.state);
    EXPECT_EQ("mqtt://a:1883", session.server.text().toStdString());
    EXPECT_EQ("kakb/hall 1/status", session.will.topic.toStdString());
    EXPECT_EQ("offline", session.will.payload.toStdString());
    EXPECT_EQ(1, session.will.qos);
    EXPECT_TRUE(session.will.isRetained);
}

TEST_F(JsonNodeTest, SubscribesToSetsBeforeItPublishes)
{
    node->turn();
    session.accept();
    turns();
    ASSERT_EQ(1u, session.subscriptions.size());
    EXPECT_EQ(QStringList(QLatin1String("kakb/hall 1/+/+/set")), session.subscriptions[0].topics);
    EXPECT_TRUE(session.published.empty());
    session.grant();
    turns();
    EXPECT_FALSE(session.published.empty());
}

// A tag "mark" of a link that has the name of an edge node, on a node that has the name of its
// group.
TEST_F(JsonNodeTest, HasNoTopicOfAMarkWhateverTheNamesAre)
{
    const QString root = JsonTopics(QString(), {}).status().section(QLatin1Char('/'), 0, 0);
    for (const char* const group : {"works", "kakb", "a/b"}) {
        const QString mark = EdgeTopics(QString::fromUtf8(group), QLatin1String("n")).mark();
        EXPECT_NE(root, mark.section(QLatin1Char('/'), 0, 0)) << mark.toStdString();
    }
}

TEST_F(JsonNodeTest, PublishesStatesThenAvailabilityThenItsStatus)
{
    take({standing("left", 1, true), reading("left", "level", 0.1f), unread("right", "level")});
    open();
    EXPECT_EQ((Texts{R"(left/level {"v":0.1,"q":"good","t":1700000000000})",
                     R"(left/count {"v":null,"q":"bad","t":null})",
                     R"(left/a_b {"v":null,"q":"bad","t":null})",
                     R"(right/level {"v":null,"q":"bad","t":1700000000000})",
                     "left/1/availability online", "left/2/availability offline",
                     "right/1/availability offline", "status online"}),
              news());
}

TEST_F(JsonNodeTest, RetainsStatesWithoutAndAvailabilityWithAcknowledgement)
{
    open();
    for (const RecordedSession::Published& published : session.published) {
        const bool isState = published.message.payload.startsWith('{');
        EXPECT_TRUE(published.message.isRetained) << published.message.topic.toStdString();
        EXPECT_EQ(isState ? 0 : 1, published.message.qos) << published.message.topic.toStdString();
    }
}

TEST_F(JsonNodeTest, TellsWhatChangedAndNothingElse)
{
    open();
    news();
    take({reading("left", "count", 65535), reading("left", "a/b", 1)});
    EXPECT_EQ((Texts{R"(left/count {"v":65535,"q":"good","t":1700000000000})",
                     R"(left/a_b {"v":true,"q":"good","t":1700000000000})"}),
              news());
    clock.passMs(5000);
    take({reading("left", "count", 65535)});
    EXPECT_EQ(Texts(), news());
    take({reading("left", "count", 65535, STALE)});
    EXPECT_EQ((Texts{R"(left/count {"v":65535,"q":"stale","t":1700000005000})"}), news());
}

TEST_F(JsonNodeTest, HasTextsForWhatIsNoNumber)
{
    open();
    news();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::quiet_NaN(), infinity, -infinity})
        take({reading("left", "level", value)});
    EXPECT_EQ((Texts{R"(left/level {"v":"nan","q":"good","t":1700000000000})",
                     R"(left/level {"v":"inf","q":"good","t":1700000000000})",
                     R"(left/level {"v":"-inf","q":"good","t":1700000000000})"}),
              news());
}

TEST_F(JsonNodeTest, TellsTheLastStateWhenSeveralWaited)
{
    open();
    news();
    session.isFull = true;
    take({reading("left", "count", 1), reading("right", "level", 5)});
    take({reading("left", "count", 2)});
    take({reading("left", "count", 3)});
    EXPECT_EQ(Texts(), news());
    session.isFull = false;
    turns();
    EXPECT_EQ((Texts{R"(left/count {"v":3,"q":"good","t":1700000000000})",
                     R"(right/level {"v":5,"q":"good","t":1700000000000})"}),
              news());
}

TEST_F(JsonNodeTest, LetsNoQueueOfTheSocketGrow)
{
    session.most = 3;
    open();
    EXPECT_EQ(3u, session.published.size());
    EXPECT_LT(clock.steady(), node->turn()) << "it waits for the socket";
    session.most = 5;
    turns();
    EXPECT_EQ(5u, session.published.size());
    EXPECT_EQ(PlantStanding::CONNECTING, node->standing().state);
}

TEST_F(JsonNodeTest, SaysThatAStationIsOnlineBehindItsFirstGoodValue)
{
    open();
    news();
    take({standing("left", 1, true)});
    EXPECT_EQ(Texts(), news());
    take({reading("left", "count", 1, BAD)});
    news();
    take({reading("left", "count", 1)});
    EXPECT_EQ(
        (Texts{R"(left/count {"v":1,"q":"good","t":1700000000000})", "left/1/availability online"}),
        news());
}

TEST_F(JsonNodeTest, SaysThatAStationIsOnlineBehindAllStatesThatWere)
{
    open();
    take({standing("left", 1, true), reading("left", "count", 1)});
    session.isFull = true;
    take({standing("left", 1, false), reading("left", "count", 1, BAD)});
    take({standing("left", 1, true), reading("left", "level", 2), reading("left", "count", 1)});
    news();
    session.isFull = false;
    turns();
    EXPECT_EQ(
        (Texts{"left/1/availability offline", R"(left/count {"v":1,"q":"good","t":1700000000000})",
               R"(left/level {"v":2,"q":"good","t":1700000000000})", "left/1/availability online"}),
        news());
}

TEST_F(JsonNodeTest, SaysThatAStationIsOfflineWhenItIsSilent)
{
    take({standing("left", 1, true), reading("left", "count", 1)});
    open();
    news();
    take({standing("left", 1, false), reading("left", "count", 1, BAD)});
    EXPECT_EQ(
        (Texts{"left/1/availability offline", R"(left/count {"v":1,"q":"bad","t":1700000000000})"}),
        news());
    take({standing("left", 1, true)});
    EXPECT_EQ(Texts(), news());
    take({reading("left", "count", 1)});
    EXPECT_EQ(
        (Texts{R"(left/count {"v":1,"q":"good","t":1700000000000})", "left/1/availability online"}),
        news());
}

TEST_F(JsonNodeTest, PublishesEverythingAgainInEachSession)
{
    take({standing("left", 1, true), reading("left", "count", 1)});
    open();
    const Texts first = news();
    session.end("lost");
    told = 0;
    open();
    EXPECT_EQ(2, session.connects);
    EXPECT_EQ(first, news());
}

TEST_F(JsonNodeTest, TakesSamplesBeforeItsDevices)
{
    take({standing("new", 3, true), reading("new", "x", 7)});
    open();
    news();
    std::vector<EdgeDevice> more = devices();
    more.push_back({QLatin1String("new"), 3, {tagOf("x", Tag::UINT16)}});
    node->setDevices(more);
    turns();
    EXPECT_EQ((Texts{R"(new/x {"v":7,"q":"good","t":1700000000000})", "new/3/availability online"}),
              news());
}

TEST_F(JsonNodeTest, ClearsTheTopicsThatAReloadDrops)
{
    take({standing("left", 2, true), reading("left", "a/b", 1)});
    open();
    news();
    std::vector<EdgeDevice> fewer = devices();
    fewer.erase(fewer.begin() + 1);
    node->setDevices(fewer);
    turns();
    EXPECT_EQ((Texts{"left/2/availability ", "left/a_b "}), news());
    EXPECT_TRUE(session.published.back().message.isRetained);
    take({reading("left", "a/b", 0)});
    EXPECT_EQ(Texts(), news());
}

TEST_F(JsonNodeTest, ClearsATopicAgainUntilTheBrokerHasAcknowledgedIt)
{
    open();
    std::vector<EdgeDevice> fewer = devices();
    fewer.pop_back();
    node->setDevices(fewer);
    turns();
    clock.passMs(1000);
    session.end("lost");
    told = 0;
    open();
    const Texts second = news();
    EXPECT_EQ((Texts{"right/1/availability ", "right/level "}),
              Texts(second.begin(), second.begin() + 2));
    session.acknowledge();
    clock.passMs(1000);
    session.end("lost");
    told = 0;
    open();
    EXPECT_EQ("left/level", news().front().substr(0, 10));
}

TEST_F(JsonNodeTest, KeepsATopicThatIsUsedAgain)
{
    open();
    session.acknowledge();
    session.isFull = true;
    std::vector<EdgeDevice> fewer = devices();
    fewer.pop_back();
    node->setDevices(fewer);
    node->setDevices(devices());
    news();
    session.isFull = false;
    turns();
    EXPECT_EQ(
        (Texts{R"(right/level {"v":null,"q":"bad","t":null})", "right/1/availability offline"}),
        news());
}

TEST_F(JsonNodeTest, TakesAnAcknowledgementForTheClearingThatItIsOf)
{
    open();
    std::vector<EdgeDevice> fewer = devices();
    fewer.pop_back();
    node->setDevices(fewer);
    turns();
    node->setDevices(devices());
    turns();
    session.isFull = true;
    node->setDevices(fewer);
    news();
    session.acknowledge(); // of the first clearing
    session.isFull = false;
    turns();
    EXPECT_EQ((Texts{"right/1/availability ", "right/level "}), news());
}

TEST_F(JsonNodeTest, RenamesTopicsWithTheirNames)
{
    take({reading("left", "a/b", 1)});
    open();
    news();
    std::vector<EdgeDevice> more = devices();
    more[0].tags.push_back(tagOf("a_b", Tag::UINT16));
    node->setDevices(more);
    turns();
    EXPECT_EQ((Texts{R"(left/a_b {"v":null,"q":"bad","t":null})",
                     R"(left/a_b-2 {"v":true,"q":"good","t":1700000000000})"}),
              news());
}

TEST_F(JsonNodeTest, GivesWayToOthersOnTheThread)
{
    std::vector<Tag> tags;
    for (int number = 0; number < 2000; ++number)
        tags.push_back(tagOf(std::to_string(number).c_str(), Tag::UINT16));
    node->setDevices({{QLatin1String("left"), 1, tags}});
    node->turn();
    session.accept();
    session.grant();
    EXPECT_EQ(clock.steady(), node->turn());
    EXPECT_EQ(500u, session.published.size());
    turns();
    EXPECT_EQ(6u + 2000 + 1 + 1, session.published.size()); // six topics are no longer used
}

TEST_F(JsonNodeTest, TriesTheNextBrokerBehindPausesThatGrow)
{
    node->turn();
    EXPECT_EQ("mqtt://a:1883", session.server.text().toStdString());
    session.end("connection refused", false);
    EXPECT_EQ(PlantStanding::PAUSING, node->standing().state);
    EXPECT_EQ("connection refused", node->standing().trouble.toStdString());
    node->turn();
    EXPECT_EQ("mqtt://b:1883", session.server.text().toStdString());
    session.end("connection refused", false);
    EXPECT_EQ(clock.steady() + 1000000, node->turn());
    EXPECT_EQ(2, session.connects);
    clock.passMs(1000);
    node->turn();
    EXPECT_EQ(3, session.connects);
}

TEST_F(JsonNodeTest, GivesABrokerUpThatDoesNotAnswer)
{
    const qint64 end = node->turn();
    EXPECT_EQ(clock.steady() + 10000000, end);
    clock.passMs(9999);
    node->turn();
    EXPECT_EQ(0, session.drops);
    clock.passMs(1);
    node->turn();
    EXPECT_EQ(1, session.drops);
    EXPECT_EQ("the broker did not answer within 10 s", node->standing().trouble.toStdString());
    node->turn();
    session.accept();
    clock.passMs(10000);
    node->turn();
    EXPECT_EQ(2, session.drops);
}

TEST_F(JsonNodeTest, LeavesABrokerThatRefusesTheSubscription)
{
    node->turn();
    session.accept();
    session.grant(false);
    EXPECT_EQ(1, session.leaves);
    EXPECT_EQ("the broker refused the subscription", node->standing().trouble.toStdString());
    EXPECT_TRUE(session.published.empty());
}

TEST_F(JsonNodeTest, TellsHowItStands)
{
    EXPECT_EQ("json", node->standing().dialect.toStdString());
    node->turn();
    EXPECT_EQ(PlantStanding::CONNECTING, node->standing().state);
    EXPECT_EQ("mqtt://a:1883", node->standing().server.toStdString());
    session.accept();
    EXPECT_EQ(PlantStanding::CONNECTING, node->standing().state);
    clock.passMs(100);
    session.grant();
    turns();
    EXPECT_EQ(PlantStanding::BORN, node->standing().state);
    EXPECT_EQ(1700000000100, node->standing().since);
    EXPECT_EQ(1u, node->standing().sessions);
    EXPECT_EQ(session.published.size(), node->standing().sent);
    clock.passMs(100);
    take({reading("left", "count", 1)});
    EXPECT_EQ(1700000000100, node->standing().since);
}

TEST_F(JsonNodeTest, SaysThatItIsOfflineBeforeItLeaves)
{
    open();
    news();
    node->leave();
    EXPECT_EQ((Texts{"status offline"}), news());
    EXPECT_TRUE(session.published.back().message.isRetained);
    EXPECT_EQ(0, session.leaves);
    EXPECT_FALSE(node->isOver());
    session.acknowledge();
    EXPECT_EQ(1, session.leaves);
    EXPECT_TRUE(node->isOver());
    clock.passMs(60000);
    turns();
    EXPECT_EQ(1, session.connects);
}

TEST_F(JsonNodeTest, LeavesWithoutAnAcknowledgementBehindASecond)
{
    open();
    node->leave();
    clock.passMs(999);
    node->turn();
    EXPECT_FALSE(node->isOver());
    clock.passMs(1);
    node->turn();
    EXPECT_TRUE(node->isOver());
    EXPECT_EQ(0, session.leaves) << "the broker would forget the will";
    EXPECT_EQ(1, session.drops);
}

TEST_F(JsonNodeTest, SaysThatItsStationsAreOfflineBeforeItIs)
{
    take({standing("left", 1, true), reading("left", "count", 1), standing("right", 1, true),
          reading("right", "level", 1), standing("left", 2, true), reading("left", "a/b", 1)});
    open();
    take({standing("left", 2, false)});
    news();
    node->leave();
    EXPECT_EQ(
        (Texts{"left/1/availability offline", "right/1/availability offline", "status offline"}),
        news());
    for (const RecordedSession::Published& published : session.published)
        EXPECT_TRUE(published.message.isRetained);
    EXPECT_EQ(1, session.published.back().message.qos);
    turns();
    EXPECT_EQ(Texts(), news());
}

TEST_F(JsonNodeTest, SaysThatItsStationsAreOfflineWhenTheSessionHasNotSaidItYet)
{
    session.isFull = true; // the broker holds what the session before said
    open();
    node->leave();
    EXPECT_EQ((Texts{"left/1/availability offline", "left/2/availability offline",
                     "right/1/availability offline", "status offline"}),
              news());
}

TEST_F(JsonNodeTest, WaitsForTheAcknowledgementOfItsStatus)
{
    take({standing("left", 1, true), reading("left", "count", 1)});
    open();
    session.acknowledge();
    node->leave();
    for (const RecordedSession::Published& published : session.published) {
        EXPECT_FALSE(node->isOver()) << published.message.topic.toStdString();
        if (published.message.qos == 1) node->delivered(published.request);
    }
    EXPECT_TRUE(node->isOver());
    EXPECT_EQ(1, session.leaves);
}

TEST_F(JsonNodeTest, IsOverAtOnceWithoutASession)
{
    node->leave();
    EXPECT_TRUE(node->isOver());
    EXPECT_EQ(0, session.connects);
}

TEST_F(JsonNodeTest, IsOverWhenTheSessionEndsWhileItLeaves)
{
    open();
    node->leave();
    session.end("lost");
    EXPECT_TRUE(node->isOver());
    turns();
    EXPECT_EQ(1, session.connects);
}

class JsonNodeReadOnlyTest : public JsonNodeTest
{
protected:
    JsonNodeReadOnlyTest() : JsonNodeTest(false) {}
};

TEST_F(JsonNodeReadOnlyTest, SubscribesToNothing)
{
    open();
    EXPECT_TRUE(session.subscriptions.empty());
    EXPECT_EQ("status online", news().back());
    set("kakb/hall 1/left/level/set", R"({"v":1,"id":1})");
    EXPECT_TRUE(commands.writes.empty());
}
