#include "events/streamedStation.h"

namespace {

enum { TAGS = 1000 };

class StreamedClients : public ::testing::Test
{
protected:
    StreamedClients() : link(station.addLink("plc", TAGS)) {}

    void changeAll()
    {
        ++m_value;
        for (int tag = 0; tag < TAGS; ++tag)
            link.answer(tag, m_value & 0x7FFF, station.clock);
    }

    /// Changes all tags ten times a second; the client takes what comes.
    std::vector<ReceivedMessage> follow(TestClient& client, int seconds)
    {
        std::vector<ReceivedMessage> all;
        for (int window = 0; window < 10 * seconds; ++window) {
            changeAll();
            station.passMs(100);
            for (const ReceivedMessage& message : client.take())
                all.push_back(message);
        }
        return all;
    }

    StreamedStation station;
    TestLink& link;

private:
    int m_value = 0;
};

QByteArray bytesOf(HttpBody& body)
{
    QByteArray all;
    std::vector<char> piece(1000);
    for (qint64 count = 1; count > 0;) {
        count = body.read(piece.data(), piece.size());
        if (count > 0) all.append(piece.data(), int(count));
    }
    return all;
}

} // namespace

TEST_F(StreamedClients, GetTheSameBytes)
{
    const TestClient first = station.connect();
    const TestClient second = station.connect();
    station.passMs(100);
    bytesOf(*first.body);
    bytesOf(*second.body);
    changeAll();
    station.passMs(100);
    const QByteArray bytes = bytesOf(*first.body);
    EXPECT_GT(bytes.size(), 50000);
    EXPECT_EQ(bytes, bytesOf(*second.body));
}

TEST_F(StreamedClients, ThatStopReadingGetASnapshotAfterTheGap)
{
    TestClient stopped = station.connect();
    TestClient reading = station.connect();
    stopped.take();
    reading.take();
    follow(reading, 10);
    EXPECT_EQ(0u, stopped.take().size()); // what it missed is forgotten
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = stopped.take();
    ASSERT_EQ(1u, messages.size());
    EXPECT_TRUE(messages[0].isFull());
    reading.take();
    changeAll();
    station.passMs(100);
    EXPECT_EQ(reading.take().back().id, stopped.take().back().id); // it follows again
}

TEST_F(StreamedClients, ThatStopWithinAMessageGetASnapshotAfterTheGap)
{
    TestClient stopped = station.connect();
    TestClient reading = station.connect();
    stopped.take();
    reading.take();
    changeAll();
    station.passMs(100);
    char piece[1000];
    ASSERT_EQ(1000, stopped.body->read(piece, sizeof piece));
    EXPECT_TRUE(stopped.reader.take(QByteArray(piece, sizeof piece)).empty());
    follow(reading, 10);
    const std::vector<ReceivedMessage> cut = stopped.take();
    ASSERT_EQ(1u, cut.size());
    EXPECT_EQ("gap", cut[0].name);
    station.passMs(100);
    const std::vector<ReceivedMessage> messages = stopped.take();
    ASSERT_FALSE(messages.empty());
    EXPECT_TRUE(messages[0].isFull());
}

TEST_F(StreamedClients, ThatStopReadingCostTheOthersNoMessage)
{
    TestClient reading = station.connect();
    std::vector<TestClient> stopped;
    for (int count = 0; count < 20; ++count)
        stopped.push_back(station.connect());
    station.passMs(100);
    reading.take();
    const std::vector<ReceivedMessage> messages = follow(reading, 5);
    const auto isFull = [](const ReceivedMessage& message) { return message.isFull(); };
    EXPECT_EQ(0, std::count_if(messages.begin(), messages.end(), isFull));
    const auto isValues = [](const ReceivedMessage& message) { return message.name == "values"; };
    EXPECT_EQ(50, std::count_if(messages.begin(), messages.end(), isValues));
}

TEST_F(StreamedClients, ThatReadSlowlyGetEveryMessageWhole)
{
    TestClient slow = station.connect();
    slow.take();
    int snapshots = 0;
    for (int window = 0; window < 200; ++window) {
        changeAll();
        station.passMs(100);
        char piece[8000]; // 80 kB/s where the changes make about 900 kB/s
        const qint64 count = slow.body->read(piece, sizeof piece);
        ASSERT_GE(count, 0);
        for (const ReceivedMessage& message : slow.reader.take(QByteArray(piece, int(count)))) {
            EXPECT_FALSE(message.json().isEmpty());
            snapshots += message.isFull() ? 1 : 0;
        }
    }
    EXPECT_GE(snapshots, 3);
}
