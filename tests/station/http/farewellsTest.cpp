#include "http/farewells.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <stdexcept>
#include <string>

namespace {

const qint64 WAIT_US = 1000000;

/// A connection between a peer, which the test plays, and a socket that is said
/// farewell to.
struct Peer
{
    Peer()
    {
        std::array<int, 2> pair{};
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()) != 0)
            throw std::runtime_error("no sockets");
        own = Descriptor(pair[0]);
        other = Descriptor(pair[1]);
        number = pair[1];
    }

    /// All that came up to the end of the other side; "..." when it has not
    /// ended.
    std::string heard()
    {
        std::string text;
        for (std::array<char, 100> bytes{};;) {
            const ssize_t count = recv(own.number(), bytes.data(), bytes.size(), MSG_DONTWAIT);
            if (count == 0) return text;
            if (count < 0) return text + "...";
            text.append(bytes.data(), size_t(count));
        }
    }

    bool send(size_t bytes) const
    {
        const std::string text(bytes, 'x');
        const ssize_t sent =
            ::send(own.number(), text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        return sent == ssize_t(bytes);
    }

    /// Whether the other side has not closed its socket yet.
    bool isHeld() const
    {
        return fcntl(number, F_GETFD) >= 0;
    }

    Descriptor own, other;
    int number = -1; ///< of the other side
};

class FarewellsTest : public ::testing::Test
{
protected:
    void say(Peer& peer, qint64 now = 0)
    {
        farewells.say(std::move(peer.other), "busy", now);
    }

    /// Takes what the system tells of the sockets.
    void takeBytes()
    {
        for (const int socket : epoll.wait(0))
            farewells.bytesCame(socket);
    }

    Epoll epoll;
    Farewells farewells{epoll};
};

} // namespace

TEST_F(FarewellsTest, SayTheirAnswerAndWaitForThePeersEnd)
{
    Peer peer;
    say(peer);
    EXPECT_EQ("busy", peer.heard());
    EXPECT_TRUE(peer.isHeld());
    peer.own = Descriptor();
    takeBytes();
    EXPECT_FALSE(peer.isHeld());
    EXPECT_EQ(std::nullopt, farewells.cutLate(0));
}

TEST_F(FarewellsTest, WaitForASecond)
{
    Peer first, second;
    say(first, 0);
    say(second, WAIT_US / 2);
    EXPECT_EQ(WAIT_US, farewells.cutLate(WAIT_US - 1));
    EXPECT_TRUE(first.isHeld());
    EXPECT_EQ(WAIT_US + WAIT_US / 2, farewells.cutLate(WAIT_US));
    EXPECT_FALSE(first.isHeld());
    EXPECT_TRUE(second.isHeld());
    EXPECT_EQ(std::nullopt, farewells.cutLate(2 * WAIT_US));
    EXPECT_FALSE(second.isHeld());
}

// A socket that is closed with bytes in it takes its answer back.
TEST_F(FarewellsTest, ThrowAwayWhatThePeerHasSentAndGoOn)
{
    Peer peer;
    ASSERT_TRUE(peer.send(10000));
    say(peer);
    for (int reads = 0; reads < 5; ++reads)
        takeBytes();
    EXPECT_TRUE(peer.send(100));
    takeBytes();
    EXPECT_TRUE(peer.isHeld());
    EXPECT_EQ("busy", peer.heard());
}

TEST_F(FarewellsTest, HaveTheirMostBytes)
{
    enum { CHUNK = 4096, MOST = 262144 };
    Peer peer;
    say(peer);
    for (int bytes = CHUNK; bytes < MOST; bytes += CHUNK) {
        ASSERT_TRUE(peer.send(CHUNK));
        takeBytes();
        ASSERT_TRUE(peer.isHeld()) << bytes;
    }
    ASSERT_TRUE(peer.send(CHUNK));
    takeBytes();
    EXPECT_FALSE(peer.isHeld());
}

TEST_F(FarewellsTest, AreSixtyFourAtATime)
{
    std::array<Peer, 65> peers;
    for (Peer& peer : peers)
        say(peer);
    EXPECT_TRUE(peers[63].isHeld());
    EXPECT_FALSE(peers[64].isHeld());
    EXPECT_EQ("busy", peers[64].heard());
    peers[0].own = Descriptor();
    takeBytes();
    Peer next;
    say(next);
    EXPECT_TRUE(next.isHeld());
}

TEST_F(FarewellsTest, TakeNoBytesOfOthers)
{
    Peer peer, other;
    say(peer);
    ASSERT_TRUE(other.send(5));
    farewells.bytesCame(other.number);
    EXPECT_TRUE(other.isHeld());
    EXPECT_TRUE(peer.isHeld());
}
