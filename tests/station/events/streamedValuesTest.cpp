#include "events/streamedStation.h"

#include <QJsonArray>

namespace {

class StreamedValues : public ::testing::Test
{
protected:
    StreamedValues() : link(station.addLink("plc", 3)) {}

    void answer(int tag, int value)
    {
        link.answer(tag, value, station.clock);
        station.run();
    }

    static QJsonArray valuesOf(const ReceivedMessage& message)
    {
        return message.json().value(QLatin1String("values")).toArray();
    }

    static QStringList keysOf(const ReceivedMessage& message)
    {
        return valuesOf(message).at(0).toObject().keys();
    }

    StreamedStation station;
    TestLink& link;
};

} // namespace

TEST_F(StreamedValues, ComeInFullOnConnect)
{
    answer(0, 7);
    TestClient client = station.connect();
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(messages[0].isFull());
    ASSERT_EQ(3, valuesOf(messages[0]).size());
    EXPECT_EQ(
        QByteArray("{\"full\":true,\"values\":[{\"link\":\"plc\",\"tag\":\"t0\",\"station\":1,"
                   "\"address\":\"MW0\",\"type\":\"uint16\",\"value\":7,\"quality\":\"good\","
                   "\"time\":1700000000000,\"changed\":1700000000000,\"trouble\":null,"
                   "\"writable\":false}"),
        messages[0].data.left(int(messages[0].data.indexOf('}')) + 1));
}

TEST_F(StreamedValues, ComeWithTheChangedFieldsAlone)
{
    answer(0, 7);
    TestClient client = station.connect();
    client.take();
    station.passMs(200);
    answer(0, 8);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ("values", messages[0].name);
    EXPECT_EQ(QByteArray("{\"full\":false,\"values\":[{\"link\":\"plc\",\"tag\":\"t0\",\"value\":8,"
                         "\"time\":1700000000200,\"changed\":1700000000200}]}"),
              messages[0].data);
}

TEST_F(StreamedValues, ComeAtOnceAfterQuiet)
{
    TestClient client = station.connect();
    client.take();
    station.passMs(100);
    answer(0, 1);
    EXPECT_EQ(1u, client.take().size());
}

TEST_F(StreamedValues, ComeNoMoreThanTenTimesASecondWithTheLastState)
{
    TestClient client = station.connect();
    client.take();
    std::vector<ReceivedMessage> messages;
    for (int ms = 1; ms <= 1000; ++ms) {
        answer(0, ms);
        station.passMs(1);
        for (const ReceivedMessage& message : client.take("values"))
            messages.push_back(message);
    }
    ASSERT_EQ(10u, messages.size());
    // A window ends when 100 ms have passed. What was answered before is told, the last of it.
    EXPECT_EQ(100, valuesOf(messages[0]).at(0).toObject().value(QLatin1String("value")).toInt());
    EXPECT_EQ(1000, valuesOf(messages[9]).at(0).toObject().value(QLatin1String("value")).toInt());
}

TEST_F(StreamedValues, LoseNoChangeOfAWindow)
{
    TestClient client = station.connect();
    client.take();
    station.passMs(10);
    answer(0, 1);
    answer(1, 2);
    EXPECT_EQ(0u, client.take().size());
    station.passMs(90);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ(2, valuesOf(messages[0]).size());
    station.passMs(500);
    EXPECT_EQ(0u, client.take("values").size());
}

TEST_F(StreamedValues, ComeWhenAValueWentAndCameBack)
{
    answer(0, 5);
    TestClient client = station.connect();
    client.take();
    station.passMs(10);
    answer(0, 6);
    answer(0, 5);
    station.passMs(90);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ(QStringList({QLatin1String("changed"), QLatin1String("link"), QLatin1String("tag"),
                           QLatin1String("time")}),
              keysOf(messages[0]));
}

TEST_F(StreamedValues, ComeWhenOneGrowsOldWithoutNews)
{
    answer(0, 5);
    TestClient client = station.connect();
    client.take();
    station.passMs(2000);
    EXPECT_EQ(0u, client.take("values").size()); // three turns or 2 s are not over yet
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take("values");
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ(QStringList({QLatin1String("link"), QLatin1String("quality"), QLatin1String("tag"),
                           QLatin1String("trouble")}),
              keysOf(messages[0]));
    EXPECT_TRUE(messages[0].data.contains("\"quality\":\"stale\""));
}

TEST_F(StreamedValues, TellTheTroubleAndItsEnd)
{
    answer(0, 5);
    TestClient client = station.connect();
    client.take();
    station.passMs(100);
    link.values->tagsBad({0}, QLatin1String("station 1 is silent"), station.clock.steady());
    station.run();
    const std::vector<ReceivedMessage> bad = client.take();
    ASSERT_EQ(1u, bad.size());
    EXPECT_TRUE(bad[0].data.contains("\"quality\":\"bad\",\"trouble\":\"station 1 is silent\""));
    station.passMs(100);
    answer(0, 5);
    const std::vector<ReceivedMessage> good = client.take();
    ASSERT_EQ(1u, good.size());
    EXPECT_TRUE(good[0].data.contains("\"quality\":\"good\""));
    EXPECT_TRUE(good[0].data.contains("\"trouble\":null"));
}

TEST_F(StreamedValues, ComeInFullWhenALinkIsTakenOut)
{
    station.addLink("other", 2);
    TestClient client = station.connect();
    EXPECT_EQ(5, valuesOf(client.take()[0]).size());
    station.links.pop_back();
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(messages[0].isFull());
    EXPECT_EQ(3, valuesOf(messages[0]).size());
}

TEST_F(StreamedValues, ComeInFullWhenALinkOfTheSameNameReplacesOne)
{
    TestClient client = station.connect();
    client.take();
    station.links.clear();
    station.addLink("plc", 1);
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(messages[0].isFull());
    EXPECT_EQ(1, valuesOf(messages[0]).size());
}

TEST_F(StreamedValues, ComeInFullWhenWritesAreAllowed)
{
    TestClient client = station.connect();
    client.take();
    station.areWritesAllowed = true;
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(messages[0].isFull());
    EXPECT_TRUE(messages[0].data.contains("\"writable\":true"));
}

TEST_F(StreamedValues, WakeTheServerOnceForManyChanges)
{
    TestClient client = station.connect();
    station.passMs(10);
    station.turns = 0;
    for (int value = 0; value < 1000; ++value)
        answer(value % 3, value);
    EXPECT_EQ(1, station.turns);
    station.passMs(90);
    EXPECT_EQ(2, station.turns);
}

TEST_F(StreamedValues, WakeNobodyWithoutAClient)
{
    for (int value = 0; value < 10; ++value)
        answer(0, value);
    EXPECT_EQ(0, station.turns);
    {
        TestClient client = station.connect();
        station.passMs(100);
    }
    station.passMs(300); // the end of the client is seen at the next turn
    station.turns = 0;
    answer(0, 77);
    station.passMs(5000);
    EXPECT_EQ(0, station.turns);
}
