#include "links/tcpLink.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cstdio>
#include <fstream>
#include <future>
#include <memory>
#include <thread>

// All connections stay on this machine. No test sleeps: each wait ends with an event. An event that
// a test must not wait for never comes, so a wrong wait hangs the test.

namespace {

using Clock = std::chrono::steady_clock;

enum { LONG_WAIT_MS = 10000 };

/// A port on this machine. The test decides whether it accepts connections.
class Peer
{
public:
    explicit Peer(int backlog) : m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        EXPECT_EQ(0, bind(m_listener.number(), generic(), m_size));
        EXPECT_EQ(0, listen(m_listener.number(), backlog));
        EXPECT_EQ(0, getsockname(m_listener.number(), generic(), &m_size));
    }

    int port() const
    {
        return ntohs(m_address.sin_port);
    }
    Descriptor accept() const
    {
        return Descriptor(accept4(m_listener.number(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    /// Fills the queue of connections: from now on the system does not answer connection requests.
    void fillBacklog()
    {
        for (Descriptor& one : m_fillers) {
            one = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            connect(one.number(), generic(), m_size);
            pollfd awaited = {one.number(), POLLOUT, 0};
            poll(&awaited, 1, &one == &m_fillers[0] ? int(LONG_WAIT_MS) : 0);
        }
    }

private:
    sockaddr* generic()
    {
        return reinterpret_cast<sockaddr*>(&m_address);
    }

    Descriptor m_listener;
    sockaddr_in m_address = {};
    socklen_t m_size = sizeof m_address;
    Descriptor m_fillers[4];
};

TcpLink linkTo(const Peer& peer)
{
    return TcpLink(QString::fromLatin1("127.0.0.1"), peer.port());
}

int optionOf(const Link& link, int level, int option)
{
    int value = -1;
    socklen_t size = sizeof value;
    EXPECT_EQ(0, getsockopt(link.descriptor(), level, option, &value, &size));
    return value;
}

bool isReadable(int descriptor, int ms)
{
    pollfd awaited = {descriptor, POLLIN, 0};
    return poll(&awaited, 1, ms) == 1;
}

/// Number of unanswered connection requests to a port of this machine, from the system's list
/// (state 02: a SYN was sent).
int unansweredTo(int port)
{
    char remote[] = "0100007F:0000 02";
    std::snprintf(remote, sizeof remote, "0100007F:%04X 02", unsigned(port));
    std::ifstream list("/proc/net/tcp");
    int count = 0;
    for (std::string line; std::getline(list, line);)
        count += line.find(remote) != std::string::npos;
    return count;
}

std::string failure(const std::function<void()>& fails)
{
    try {
        fails();
    } catch (const LinkError& error) {
        return error.what();
    }
    return "none";
}

/// A name server that answers only on request, and knows no name.
struct SilentNameServer
{
    std::promise<void> asked;
    std::promise<void> answer;
};

std::shared_ptr<SilentNameServer> silentNameServer; ///< none: the system's name server

class TcpLinkTest : public testing::Test
{
protected:
    ~TcpLinkTest() override
    {
        silentNameServer.reset();
    }

    SilentNameServer& nameServer()
    {
        silentNameServer = std::make_shared<SilentNameServer>();
        return *silentNameServer;
    }
};

} // namespace

/// Replaces the system's function, which Qt calls in a separate thread.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints,
                           addrinfo** found)
{
    if (const auto server = silentNameServer) {
        server->asked.set_value();
        server->answer.get_future().wait();
        return EAI_AGAIN;
    }
    using Function = int (*)(const char*, const char*, const addrinfo*, addrinfo**);
    static const auto systems = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return systems(name, service, hints, found);
}

TEST_F(TcpLinkTest, VanishedPeerIsNoticedBySystemTimers)
{
    const Peer peer(1);
    const TcpLink link = linkTo(peer);
    EXPECT_EQ(1, optionOf(link, SOL_SOCKET, SO_KEEPALIVE));
    EXPECT_EQ(2, optionOf(link, IPPROTO_TCP, TCP_KEEPIDLE));
    EXPECT_EQ(1, optionOf(link, IPPROTO_TCP, TCP_KEEPINTVL));
    EXPECT_EQ(3, optionOf(link, IPPROTO_TCP, TCP_KEEPCNT));
    EXPECT_EQ(5000, optionOf(link, IPPROTO_TCP, TCP_USER_TIMEOUT));
}

TEST_F(TcpLinkTest, FrameIsSentWithoutDelay)
{
    const Peer peer(1);
    EXPECT_EQ(1, optionOf(linkTo(peer), IPPROTO_TCP, TCP_NODELAY));
}

TEST_F(TcpLinkTest, BytesReceivedDuringAWriteAreSeenByAWait)
{
    const QByteArray many(16 << 20, 'x'); // more bytes than the system takes at once
    const Peer peer(1);
    TcpLink link = linkTo(peer);
    const Descriptor other = peer.accept();
    ASSERT_EQ(5, write(other.number(), "early", 5));
    ASSERT_TRUE(isReadable(link.descriptor(), LONG_WAIT_MS));
    int taken = 0;
    std::thread reader([&other, &taken, &many] {
        std::vector<char> room(1 << 20);
        while (taken < many.size()) {
            const ssize_t count = read(other.number(), room.data(), room.size());
            if (count <= 0) break;
            taken += int(count);
        }
    });
    link.write(many);
    EXPECT_TRUE(isReadable(link.descriptor(), 0));
    EXPECT_EQ("early", link.read().toStdString());
    shutdown(link.descriptor(), SHUT_WR); // otherwise closing waits for the unsent bytes
    reader.join();
    EXPECT_EQ(many.size(), taken);
}

TEST_F(TcpLinkTest, HungUpPeerIsReadableAndNamed)
{
    const Peer peer(1);
    TcpLink link = linkTo(peer);
    peer.accept();
    ASSERT_TRUE(isReadable(link.descriptor(), LONG_WAIT_MS));
    EXPECT_EQ("127.0.0.1, port " + std::to_string(peer.port()) + ": the peer closed the connection",
              failure([&link] { link.read(); }));
}

TEST_F(TcpLinkTest, ReadWithoutReceivedBytesIsEmpty)
{
    const Peer peer(1);
    EXPECT_EQ("", linkTo(peer).read().toStdString());
}

TEST_F(TcpLinkTest, ConnectingEndsAtOnceWhenCancelled)
{
    Peer peer(0);
    peer.fillBacklog();
    const int before = unansweredTo(peer.port());
    Cancellation cancellation;
    std::string reason;
    std::thread connecting([&] {
        reason =
            failure([&] { TcpLink(QString::fromLatin1("127.0.0.1"), peer.port(), cancellation); });
    });
    while (unansweredTo(peer.port()) == before)
        std::this_thread::yield();
    const Clock::time_point start = Clock::now();
    cancellation.ask();
    connecting.join();
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
    EXPECT_EQ("127.0.0.1, port " + std::to_string(peer.port()) + ": interrupted", reason);
}

TEST_F(TcpLinkTest, NameLookupEndsAtOnceWhenCancelled)
{
    SilentNameServer& server = nameServer();
    Cancellation cancellation;
    Clock::time_point start;
    std::thread cancelling([&] {
        server.asked.get_future().wait();
        start = Clock::now();
        cancellation.ask();
    });
    EXPECT_EQ("plc, port 502: interrupted",
              failure([&] { TcpLink(QString::fromLatin1("plc"), 502, cancellation); }));
    const Clock::time_point end = Clock::now();
    cancelling.join();
    EXPECT_LT(end - start, std::chrono::milliseconds(500));
    EXPECT_TRUE(TcpLink::hasLeftLookupBehind());
    server.answer.set_value();
}

TEST_F(TcpLinkTest, SilentNameServerIsGivenUpAfterSeconds)
{
    SilentNameServer& server = nameServer();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ("plc, port 502: the name lookup takes too long",
              failure([] { TcpLink(QString::fromLatin1("plc"), 502); }));
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(3));
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(LONG_WAIT_MS / 2));
    server.asked.get_future().wait();
    server.answer.set_value();
}

TEST_F(TcpLinkTest, CancellationAlsoEndsLaterOpenings)
{
    Cancellation cancellation;
    cancellation.ask();
    Peer full(0);
    full.fillBacklog();
    const Clock::time_point start = Clock::now();
    for (int attempt = 0; attempt < 2; ++attempt) {
        EXPECT_EQ("127.0.0.1, port " + std::to_string(full.port()) + ": interrupted", failure([&] {
                      TcpLink(QString::fromLatin1("127.0.0.1"), full.port(), cancellation);
                  }));
    }
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(TcpLinkTest, ConnectsToAHostByName)
{
    const Peer peer(1);
    TcpLink link(QString::fromLatin1("localhost"), peer.port());
    EXPECT_EQ(4, write(peer.accept().number(), "here", 4));
    ASSERT_TRUE(isReadable(link.descriptor(), LONG_WAIT_MS));
    EXPECT_EQ("here", link.read().toStdString());
}

TEST_F(TcpLinkTest, UnknownHostIsNamed)
{
    EXPECT_EQ("no host, port 502: Host not found",
              failure([] { TcpLink(QString::fromLatin1("no host"), 502); }));
}

TEST_F(TcpLinkTest, HostNameKeepsItsPercentSign)
{
    EXPECT_EQ("no%2host%1, port 502: Host not found",
              failure([] { TcpLink(QString::fromLatin1("no%2host%1"), 502); }));
}

TEST_F(TcpLinkTest, RefusedPortIsNamed)
{
    const int port = Peer(1).port();
    EXPECT_EQ("127.0.0.1, port " + std::to_string(port) + ": Connection refused",
              failure([port] { TcpLink(QString::fromLatin1("127.0.0.1"), port); }));
}
