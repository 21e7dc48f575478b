#include "hexText.h"
#include "openLine.h"
#include "uniqueDescriptor.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

namespace {

const char* const REQUEST = "01 03 00 00 00 01 84 0A"; // pymodbus 3.0's RTU framer
const int LONGEST_WAIT_MS = 10000;

std::unique_ptr<LineEnd> tcpLine(int port)
{
    SimulatorOptions options;
    options.tcpPort = port;
    return openLine(options);
}

int portOf(const LineEnd& line)
{
    return std::stoi(line.address().substr(line.address().find(',') + 1));
}

bool becomesReadable(int descriptor)
{
    pollfd awaited = {descriptor, POLLIN, 0};
    return poll(&awaited, 1, LONGEST_WAIT_MS) == 1;
}

/// A host's end of a connection to 127.0.0.1.
class TcpHost
{
public:
    explicit TcpHost(int port) : m_socket(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (connect(m_socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            failLink("connect");
    }
    void send(const std::string& hex)
    {
        const Bytes bytes = bytesOf(hex);
        ASSERT_EQ(ssize_t(bytes.size()), ::send(m_socket.get(), bytes.data(), bytes.size(), 0));
    }
    /// "closed" when the other side has closed the connection.
    std::string received()
    {
        Bytes bytes(READ_BYTES);
        if (!becomesReadable(m_socket.get())) return "nothing";
        const ssize_t count = recv(m_socket.get(), bytes.data(), bytes.size(), 0);
        if (count <= 0) return "closed";
        bytes.resize(std::size_t(count));
        return hexOf(bytes);
    }
    void hangUp()
    {
        m_socket.reset();
    }

private:
    UniqueDescriptor m_socket;
};

/// A port with one host that is connected.
class ConnectedPort : public ::testing::Test
{
protected:
    void SetUp() override
    {
        accept();
    }
    void accept()
    {
        ASSERT_TRUE(becomesReadable(m_line->listener()));
        m_line->acceptHost();
    }
    std::string receivedByThePlc()
    {
        return becomesReadable(m_line->descriptor()) ? hexOf(m_line->receive()) : "nothing";
    }

    std::unique_ptr<LineEnd> m_line = tcpLine(0);
    TcpHost m_host{portOf(*m_line)};
};

} // namespace

TEST(TcpPort, PortZeroIsAnyFreePort)
{
    const std::unique_ptr<LineEnd> first = tcpLine(0);
    const std::unique_ptr<LineEnd> second = tcpLine(0);
    EXPECT_EQ("tcp:127.0.0.1," + std::to_string(portOf(*first)), first->address());
    EXPECT_GT(portOf(*first), 0);
    EXPECT_NE(portOf(*first), portOf(*second));
    EXPECT_EQ(-1, first->descriptor()); // no host yet
}

TEST(TcpPort, OpeningFailureNamesAddressAndReason)
{
    const std::unique_ptr<LineEnd> line = tcpLine(0);
    try {
        tcpLine(portOf(*line));
        FAIL() << "the port was opened twice";
    } catch (const LinkError& error) {
        EXPECT_EQ(line->address() + ": in use by another program", error.what());
    }
}

TEST(TcpPort, AHostNameIsNoBindAddress)
{
    SimulatorOptions options;
    options.tcpPort = 0;
    options.bindAddress = "nowhere";
    EXPECT_THROW(openLine(options), LinkError);
}

TEST_F(ConnectedPort, BytesPassBothWays)
{
    m_host.send(REQUEST);
    EXPECT_EQ(REQUEST, receivedByThePlc());
    EXPECT_EQ("", hexOf(m_line->receive()));
    m_line->send(bytesOf("01 02"));
    EXPECT_EQ("01 02", m_host.received());
}

TEST_F(ConnectedPort, NewHostReplacesThePreviousHost)
{
    TcpHost next(portOf(*m_line));
    accept();
    EXPECT_EQ("closed", m_host.received());
    next.send(REQUEST);
    EXPECT_EQ(REQUEST, receivedByThePlc());
    m_line->send(bytesOf("01 02"));
    EXPECT_EQ("01 02", next.received());
}

TEST_F(ConnectedPort, BytesForAHostThatHungUpAreLost)
{
    m_host.hangUp();
    EXPECT_EQ("", receivedByThePlc());
    EXPECT_EQ(-1, m_line->descriptor());
    EXPECT_NO_THROW(m_line->send(bytesOf("01 02")));
    TcpHost next(portOf(*m_line));
    accept();
    next.send(REQUEST);
    EXPECT_EQ(REQUEST, receivedByThePlc());
}
