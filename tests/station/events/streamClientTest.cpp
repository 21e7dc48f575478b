#include "events/streamClient.h"

#include "events/streamReader.h"

#include <gtest/gtest.h>

namespace {

enum { SECOND = 1000000 };

class StreamClients : public ::testing::Test
{
protected:
    StreamClients() : sources(std::make_shared<StreamSources>()) {}

    StreamClient follower(quint64 after = 0)
    {
        StreamClient client(sources, after, nullptr);
        client.giveFull(streamMessage(after + 1, "values", "{\"full\":true}"));
        StreamReader().readAll(client);
        return client;
    }

    /// The names of the messages that the client sends now, and a space after each.
    QByteArray names(StreamClient& client)
    {
        QByteArray all;
        for (const ReceivedMessage& message : reader.readAll(client))
            all += message.name + ' ';
        return all;
    }

    std::shared_ptr<StreamSources> sources;
    StreamReader reader;
};

} // namespace

TEST_F(StreamClients, SendNothingBeforeTheFullSnapshot)
{
    StreamClient client(sources, 0, nullptr);
    sources->recent.add(streamMessage(1, "values", "{}"), 0);
    EXPECT_EQ("", names(client));
    EXPECT_TRUE(client.wantsFull());
    client.giveFull(streamMessage(2, "values", "{\"full\":true}"));
    EXPECT_FALSE(client.wantsFull());
    EXPECT_EQ("values ", names(client));
}

TEST_F(StreamClients, FollowAfterTheFullSnapshot)
{
    StreamClient client = follower();
    sources->recent.add(streamMessage(2, "values", "{}"), 0);
    sources->recent.add(streamMessage(3, "beat", "{}"), 0);
    EXPECT_EQ("values beat ", names(client));
    EXPECT_EQ("", names(client));
}

TEST_F(StreamClients, SendTheSameBytesInAnyPieces)
{
    StreamClient whole = follower();
    StreamClient pieces = follower();
    for (quint64 id = 2; id < 10; ++id)
        sources->recent.add(streamMessage(id, "values", QByteArray(int(id) * 7, 'x')), 0);
    StreamReader other;
    const std::vector<ReceivedMessage> expected = reader.readAll(whole);
    const std::vector<ReceivedMessage> got = other.readAll(pieces, 3);
    ASSERT_EQ(8u, expected.size());
    ASSERT_EQ(expected.size(), got.size());
    for (size_t at = 0; at < got.size(); ++at)
        EXPECT_EQ(expected[at].data, got[at].data);
}

TEST_F(StreamClients, SendTheEventsOfAGapBeforeTheSnapshotSoThatIdsCountUp)
{
    sources->events.add(streamMessage(5, "link", "{}"), 0);
    sources->events.add(streamMessage(6, "write", "{}"), 0);
    StreamClient client(sources, 5, nullptr);
    client.giveFull(streamMessage(9, "values", "{\"full\":true}"));
    const std::vector<ReceivedMessage> messages = reader.readAll(client);
    ASSERT_EQ(2u, messages.size());
    EXPECT_EQ(6u, messages[0].id);
    EXPECT_EQ(9u, messages[1].id);
}

TEST_F(StreamClients, NeedASnapshotWhenTheNextMessageIsGone)
{
    StreamClient client = follower();
    sources->recent.add(streamMessage(2, "values", "{}"), 0);
    sources->recent.forget(3 * SECOND);
    EXPECT_EQ("", names(client));
    EXPECT_TRUE(client.wantsFull());
}

TEST_F(StreamClients, LetGoOfAMessageThatIsNotTaken)
{
    StreamClient client = follower();
    std::weak_ptr<const StreamMessage> held;
    {
        const SharedMessage message = streamMessage(2, "write", QByteArray(90000, 'x'));
        held = message;
        sources->recent.add(message, 0);
        sources->events.add(streamMessage(2, "write", "{\"small\":1}"), 0);
    }
    char piece[100];
    client.read(piece, sizeof piece);
    reader.take(QByteArray(piece, sizeof piece));
    sources->recent.clear();
    client.watch(0);
    client.watch(StreamClient::LONGEST_STALL);
    EXPECT_FALSE(held.expired());
    client.watch(StreamClient::LONGEST_STALL + 1);
    EXPECT_TRUE(held.expired());
    EXPECT_FALSE(client.wantsFull()); // nothing is made for a client that takes nothing

    const std::vector<ReceivedMessage> messages = reader.readAll(client);
    ASSERT_EQ(2u, messages.size());
    EXPECT_EQ("gap", messages[0].name);
    EXPECT_EQ(1u, messages[0].id);
    EXPECT_EQ("write", messages[1].name); // the event that was cut short comes again, whole
    EXPECT_EQ(2u, messages[1].id);
    EXPECT_EQ("{\"small\":1}", messages[1].data);
    EXPECT_TRUE(client.wantsFull());
}

TEST_F(StreamClients, EndAMessageCutAnywhere)
{
    const SharedMessage message = streamMessage(2, "values", "{\"full\":false,\"values\":[]}");
    for (int cut = 1; cut < int(message->text.size()); ++cut) {
        sources = std::make_shared<StreamSources>();
        StreamClient client = follower();
        sources->recent.add(message, 0);
        std::vector<char> piece(static_cast<size_t>(cut));
        client.read(piece.data(), piece.size());
        client.watch(0);
        client.watch(StreamClient::LONGEST_STALL + 1);
        StreamReader browser;
        browser.take(QByteArray(piece.data(), cut));
        for (const ReceivedMessage& got : browser.readAll(client))
            EXPECT_EQ("gap", got.name) << "cut after " << cut;
        client.giveFull(streamMessage(7, "values", "{\"full\":true}"));
        const std::vector<ReceivedMessage> after = browser.readAll(client);
        ASSERT_EQ(1u, after.size()) << "cut after " << cut;
        EXPECT_TRUE(after[0].isFull());
    }
}

TEST_F(StreamClients, DropASnapshotThatIsNotTaken)
{
    StreamClient client(sources, 0, nullptr);
    client.watch(0);
    client.giveFull(streamMessage(2, "values", "{\"full\":true}"));
    client.watch(StreamClient::LONGEST_STALL + 1);
    EXPECT_FALSE(client.wantsFull());
    EXPECT_EQ("", names(client));
    EXPECT_TRUE(client.wantsFull());
}
