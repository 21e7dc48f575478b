#include "events/streamedStation.h"

#include <QJsonArray>

namespace {

class StreamedFrames : public ::testing::Test
{
protected:
    StreamedFrames() : log(*station.addLink("plc", 1).frames)
    {
        station.addLink("other", 1);
    }

    /// A request that reads register 3000 of station 1, and its answer.
    void exchange()
    {
        log.add(station.clock.wall(), FrameRecord::SENT, QByteArray::fromHex("01030BB80001060B"));
        log.add(station.clock.wall(), FrameRecord::RECEIVED, QByteArray::fromHex("0103020007F986"));
    }

    static int firstOf(const ReceivedMessage& message)
    {
        return message.json().value(QLatin1String("first")).toInt();
    }
    static QJsonArray framesOf(const ReceivedMessage& message)
    {
        return message.json().value(QLatin1String("frames")).toArray();
    }

    StreamedStation station;
    FrameLog& log;
};

} // namespace

TEST_F(StreamedFrames, ComeOnlyToWhomAsksForThem)
{
    TestClient watcher = station.connect({{"frames", "plc"}});
    TestClient other = station.connect({{"frames", "other"}});
    TestClient none = station.connect();
    exchange();
    station.passMs(200);
    EXPECT_EQ(1u, watcher.take("frame").size());
    EXPECT_EQ(0u, other.take("frame").size());
    EXPECT_EQ(0u, none.take("frame").size());
}

TEST_F(StreamedFrames, HaveTimeDirectionBytesAndMeaning)
{
    TestClient client = station.connect({{"frames", "plc"}});
    exchange();
    station.passMs(200);
    const std::vector<ReceivedMessage> messages = client.take("frame");
    ASSERT_EQ(1u, messages.size());
    EXPECT_EQ(
        QByteArray("{\"link\":\"plc\",\"first\":1,\"frames\":[{\"time\":1700000000000,"
                   "\"direction\":\">\",\"hex\":\"01 03 0B B8 00 01 06 0B\",\"meaning\":"
                   "\"station 1: read 1 holding register from 3000\"},"
                   "{\"time\":1700000000000,\"direction\":\"<\",\"hex\":"
                   "\"01 03 02 00 07 F9 86\",\"meaning\":\"station 1: 1 register 0x0007\"}]}"),
        messages[0].data);
}

TEST_F(StreamedFrames, OfThePastAreLeftOut)
{
    exchange();
    TestClient client = station.connect({{"frames", "plc"}});
    station.passMs(300);
    EXPECT_EQ(0u, client.take("frame").size());
}

TEST_F(StreamedFrames, ComeManyInAMessage)
{
    TestClient client = station.connect({{"frames", "plc"}});
    client.take();
    for (int ms = 0; ms < 1000; ++ms) {
        exchange();
        station.passMs(1);
    }
    const std::vector<ReceivedMessage> messages = client.take("frame");
    EXPECT_LE(messages.size(), 10u);
    int frames = 0;
    for (const ReceivedMessage& message : messages)
        frames += int(framesOf(message).size());
    EXPECT_EQ(2000, frames);
}

TEST_F(StreamedFrames, TellHowManyWereSkipped)
{
    TestClient client = station.connect({{"frames", "plc"}});
    exchange();
    station.passMs(100);
    for (int count = 0; count < 300; ++count)
        exchange();
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = client.take("frame");
    ASSERT_EQ(2u, messages.size());
    EXPECT_EQ(1, firstOf(messages[0]));
    ASSERT_EQ(int(FrameChannel::MOST_FRAMES), framesOf(messages[1]).size());
    EXPECT_EQ(3 + 600 - FrameChannel::MOST_FRAMES, firstOf(messages[1]));
}

TEST_F(StreamedFrames, AreNotFoundOfAnUnknownLink)
{
    for (const char* const name : {"nobody", ""}) {
        const TestClient client = station.connect({{"frames", name}});
        EXPECT_EQ(404, client.status) << name;
        EXPECT_EQ(nullptr, client.body);
    }
}

TEST_F(StreamedFrames, GoOnWhenALinkOfTheSameNameReplacesOne)
{
    TestClient client = station.connect({{"frames", "plc"}});
    exchange();
    station.passMs(200);
    client.take();
    station.links.clear();
    station.passMs(200);
    TestLink& link = station.addLink("plc", 1);
    link.frames->add(station.clock.wall(), FrameRecord::SENT, QByteArray::fromHex("01"));
    station.passMs(200);
    EXPECT_EQ(1u, client.take("frame").size());
}
