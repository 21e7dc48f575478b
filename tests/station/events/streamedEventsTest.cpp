#include "events/streamedStation.h"

namespace {

class StreamedEvents : public ::testing::Test
{
protected:
    StreamedEvents()
    {
        station.addLink("plc", 1);
    }

    void happens(StationEvent::Kind kind, int number)
    {
        station.events.add(kind, station.clock.wall(),
                           "{\"n\":" + QByteArray::number(number) + '}');
        station.run();
    }

    /// The numbers of the link, write and recipe events among the messages.
    static std::vector<int> numbers(const std::vector<ReceivedMessage>& messages)
    {
        std::vector<int> all;
        for (const ReceivedMessage& message : messages) {
            if (message.name != "values" && message.name != "beat")
                all.push_back(message.json().value(QLatin1String("n")).toInt());
        }
        return all;
    }

    StreamedStation station;
};

std::vector<int> range(int first, int last)
{
    std::vector<int> all;
    for (int number = first; number <= last; ++number)
        all.push_back(number);
    return all;
}

} // namespace

TEST_F(StreamedEvents, ComeAtOnceUnderTheirNames)
{
    TestClient client = station.connect();
    client.take();
    happens(StationEvent::LINK, 1);
    happens(StationEvent::WRITE, 2);
    happens(StationEvent::RECIPE, 3);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(3u, messages.size());
    EXPECT_EQ("link", messages[0].name);
    const QByteArray time = QByteArray::number(station.clock.wall());
    EXPECT_EQ("{\"time\":" + time + ",\"n\":1}", messages[0].data);
    EXPECT_EQ("write", messages[1].name);
    EXPECT_EQ("recipe", messages[2].name);
}

TEST_F(StreamedEvents, OfThePastAreNoNewsToANewClient)
{
    happens(StationEvent::WRITE, 1);
    TestClient client = station.connect();
    happens(StationEvent::WRITE, 2);
    EXPECT_EQ(range(2, 2), numbers(client.take()));
}

TEST_F(StreamedEvents, CountUpTheIdsOfAllMessages)
{
    TestClient client = station.connect();
    quint64 last = 0;
    for (int round = 0; round < 30; ++round) {
        station.links[0]->answer(0, round, station.clock);
        happens(StationEvent::WRITE, round);
        station.passMs(70);
        for (const ReceivedMessage& message : client.take()) {
            EXPECT_GT(message.id, last);
            last = message.id;
        }
    }
    EXPECT_LT(last, quint64(1) << 53); // exact as a number of JavaScript
}

TEST_F(StreamedEvents, SinceTheLastIdComeBeforeTheSnapshot)
{
    quint64 lastId = 0;
    {
        TestClient client = station.connect();
        happens(StationEvent::WRITE, 1);
        lastId = client.take().back().id;
    }
    happens(StationEvent::LINK, 2);
    happens(StationEvent::RECIPE, 3);
    TestClient client = station.connect({}, QByteArray::number(lastId));
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(3u, messages.size());
    EXPECT_EQ(range(2, 3), numbers(messages));
    EXPECT_TRUE(messages[2].isFull());
    EXPECT_LT(messages[1].id, messages[2].id);
}

TEST_F(StreamedEvents, SinceTheLastIdAreTheLastThousand)
{
    TestClient first = station.connect();
    const quint64 lastId = first.take().back().id;
    for (int number = 1; number <= 1200; ++number)
        happens(StationEvent::WRITE, number);
    TestClient client = station.connect({}, QByteArray::number(lastId));
    station.passMs(100);
    EXPECT_EQ(range(201, 1200), numbers(client.take()));
}

TEST_F(StreamedEvents, OfThisRunAllComeForAnIdOfARunBefore)
{
    happens(StationEvent::WRITE, 1);
    happens(StationEvent::WRITE, 2);
    const qint64 dayBefore = station.clock.wall() - 86400000;
    TestClient client = station.connect({}, QByteArray::number(dayBefore * 1000 + 17));
    EXPECT_EQ(range(1, 2), numbers(client.take()));
}

TEST_F(StreamedEvents, OfThisRunAllComeForAnIdThatIsYetToCome)
{
    happens(StationEvent::WRITE, 1);
    TestClient client = station.connect({}, "9000000000000000000");
    const std::vector<ReceivedMessage> messages = client.take();
    EXPECT_EQ(range(1, 1), numbers(messages));
    EXPECT_TRUE(messages.back().isFull());
}

TEST_F(StreamedEvents, OfThisRunAllComeForAnIdThatIsNone)
{
    happens(StationEvent::WRITE, 1);
    for (const char* const text : {"x", "-1", "1e3", "99999999999999999999999"}) {
        TestClient client = station.connect({}, text);
        station.passMs(100);
        EXPECT_EQ(range(1, 1), numbers(client.take())) << text;
    }
}

TEST_F(StreamedEvents, ComeAfterTheValuesOfTheSameMoment)
{
    TestClient client = station.connect();
    station.passMs(200);
    client.take();
    station.links[0]->answer(0, 44, station.clock);
    happens(StationEvent::WRITE, 1);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(2u, messages.size());
    EXPECT_EQ("values", messages[0].name);
    EXPECT_EQ("write", messages[1].name);
}

TEST_F(StreamedEvents, OfAGapAreMadeUpFor)
{
    TestClient client = station.connect();
    client.take();
    for (int number = 1; number <= 5; ++number) {
        happens(StationEvent::WRITE, number);
        station.passMs(2000);
    }
    std::vector<ReceivedMessage> messages = client.take();
    station.passMs(100);
    for (const ReceivedMessage& message : client.take())
        messages.push_back(message);
    EXPECT_EQ(range(1, 5), numbers(messages));
    EXPECT_TRUE(messages.back().isFull());
}
