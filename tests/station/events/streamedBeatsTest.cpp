#include "events/streamedStation.h"

namespace {

class StreamedBeats : public ::testing::Test
{
protected:
    StreamedBeats() : link(station.addLink("plc", 2)) {}

    void answer(int tag, int value)
    {
        link.answer(tag, value, station.clock);
        station.run();
    }

    StreamedStation station;
    TestLink& link;
};

} // namespace

TEST_F(StreamedBeats, ComeEachSecondToOldAndNewClients)
{
    TestClient client = station.connect();
    for (int second = 0; second < 3; ++second) {
        station.passMs(1000);
        EXPECT_EQ(1u, client.take("beat").size());
    }
    station.passMs(600);
    TestClient other = station.connect();
    other.take();
    station.passMs(400);
    EXPECT_EQ(1u, client.take("beat").size());
    EXPECT_EQ(1u, other.take("beat").size());
}

TEST_F(StreamedBeats, TellTheTimesThatMovedAlone)
{
    answer(0, 5);
    answer(1, 6);
    TestClient client = station.connect();
    client.take();
    station.passMs(500);
    answer(0, 5);
    station.passMs(500);
    const std::vector<ReceivedMessage> messages = client.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ("beat", messages[0].name);
    EXPECT_EQ(QByteArray("{\"time\":1700000001000,\"seen\":[[\"plc\",\"t0\",1700000000500]]}"),
              messages[0].data);
}

TEST_F(StreamedBeats, TellATimeOnce)
{
    answer(0, 5);
    TestClient client = station.connect();
    station.passMs(500);
    answer(0, 5);
    station.passMs(500);
    client.take();
    station.passMs(1000);
    const std::vector<ReceivedMessage> beats = client.take("beat");
    ASSERT_EQ(1u, beats.size());
    EXPECT_TRUE(beats[0].data.endsWith("\"seen\":[]}"));
}

/// A time that goes ahead of its value would make an old value look new.
TEST_F(StreamedBeats, LeaveTheTimeOfAChangeToTheChange)
{
    answer(0, 5);
    answer(1, 0);
    TestClient client = station.connect();
    station.passMs(950);
    answer(1, 1); // goes at once and begins a window
    client.take();
    station.passMs(10);
    answer(0, 6);
    station.passMs(40);
    const std::vector<ReceivedMessage> beats = client.take();
    ASSERT_EQ(1u, beats.size());
    EXPECT_EQ("beat", beats[0].name);
    EXPECT_TRUE(beats[0].data.endsWith("\"seen\":[]}"));
    station.passMs(50);
    const std::vector<ReceivedMessage> changes = client.take();
    ASSERT_EQ(1u, changes.size());
    EXPECT_TRUE(changes[0].data.contains("\"value\":6,\"time\":1700000000960"));
}
