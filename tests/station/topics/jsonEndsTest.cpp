#include "topics/jsonNodeRoom.h"
#include "topics/retainedStates.h"

// How sessions of the JSON dialect end, and answers that belong to none.

class JsonEndsTest : public JsonNodeTest
{
protected:
    /// The last of the texts since the last call; empty: there is none.
    std::string lastNews()
    {
        const Texts texts = news();
        return texts.empty() ? std::string() : texts.back();
    }
};

TEST_F(JsonEndsTest, AnAttemptToConnectIsDropped)
{
    turns();
    ASSERT_EQ(RecordedSession::WAITING, session.state);
    node->leave();
    EXPECT_TRUE(node->isOver());
    EXPECT_EQ(1, session.drops);
}

TEST_F(JsonEndsTest, ASessionThatWaitsForItsSubscriptionIsLeft)
{
    turns();
    session.accept();
    node->leave();
    EXPECT_TRUE(node->isOver());
    EXPECT_EQ(1, session.leaves);
    EXPECT_EQ(Texts(), news());
}

TEST_F(JsonEndsTest, AWriteThatEndsDuringTheFarewellHasItsResult)
{
    open();
    set("kakb/hall 1/left/count/set", R"({"v":5,"id":1})");
    news();
    node->leave();
    commands.end(0, WriteEnd::FAILED, QByteArray(), "the station stopped");
    turns();
    EXPECT_EQ(
        R"(left/count/result {"id":1,"outcome":"failed","reason":"the station stopped","v":null})",
        lastNews());
    session.acknowledge();
    EXPECT_TRUE(node->isOver());
}

TEST_F(JsonEndsTest, TheAnswerToAnotherSubscriptionGrantsNothing)
{
    turns();
    session.accept();
    ASSERT_EQ(1u, session.subscriptions.size());
    const int request = session.subscriptions.back().request;
    node->subscribed(request + 1, true);
    turns();
    EXPECT_EQ(Texts(), news());
    node->subscribed(request + 1, false);
    EXPECT_EQ(0, session.leaves);
    node->subscribed(request, true);
    turns();
    EXPECT_EQ("status online", lastNews());
}

TEST_F(JsonEndsTest, TheEndOfASessionCountsOnce)
{
    turns();
    session.end("lost");
    node->ended(QLatin1String("another end"), false);
    EXPECT_EQ("lost", node->standing().trouble.toStdString());
    turns();
    EXPECT_EQ("mqtt://b:1883", session.server.text().toStdString());
}

TEST_F(JsonEndsTest, ALateAcceptanceBeginsNothing)
{
    open();
    news();
    node->connected();
    turns();
    EXPECT_EQ(1u, session.subscriptions.size());
    EXPECT_EQ(1u, node->standing().sessions);
    EXPECT_EQ(Texts(), news());
}

TEST_F(JsonEndsTest, ATroubleIsOverWhenTheStatesAreOut)
{
    turns();
    session.end("lost");
    turns();
    session.accept();
    session.grant();
    turns();
    EXPECT_EQ("", node->standing().trouble.toStdString());
}

TEST_F(JsonEndsTest, AFullSocketIsNoReasonToSpin)
{
    std::vector<Tag> tags;
    for (int number = 0; number < 2000; ++number)
        tags.push_back(tagOf(std::to_string(number).c_str(), Tag::UINT16));
    node->setDevices({{QLatin1String("left"), 1, tags}});
    session.most = 500; // as many as a turn sends
    node->turn();
    session.accept();
    session.grant();
    EXPECT_LT(clock.steady(), node->turn());
    EXPECT_EQ(500u, session.published.size());
}

// A session may give its requests the numbers that the one before gave.
TEST_F(JsonEndsTest, AnAcknowledgementOfASessionBeforeClearsNothing)
{
    RetainedStates states(settings.node);
    states.setDevices(devices());
    states.setDevices({});
    const std::optional<BrokerMessage> cleared = states.next();
    ASSERT_TRUE(cleared && cleared->payload.isEmpty());
    states.sent(1, *cleared);
    states.sendAll();
    EXPECT_FALSE(states.delivered(1));
    EXPECT_EQ(cleared->topic, states.next().value_or(BrokerMessage()).topic);
}
