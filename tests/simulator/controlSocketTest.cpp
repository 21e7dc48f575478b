#include "controlSocket.h"

#include "lineEnd.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// A client that neither waits nor reads unless a test says so.
class Client
{
public:
    explicit Client(const std::string& path)
        : m_socket(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (connect(m_socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            failLink(path);
    }
    /// @return how many bytes the socket took
    std::size_t send(const std::string& text)
    {
        const ssize_t count = ::send(m_socket.get(), text.data(), text.size(), MSG_NOSIGNAL);
        return count > 0 ? std::size_t(count) : 0;
    }
    void endSending()
    {
        shutdown(m_socket.get(), SHUT_WR);
    }
    void hangUp()
    {
        m_socket.reset();
    }
    /// What has come since the last call; "closed" behind it when the other side has closed.
    std::string received()
    {
        std::string all;
        std::vector<char> bytes(65536);
        ssize_t count = 0;
        while ((count = recv(m_socket.get(), bytes.data(), bytes.size(), 0)) > 0)
            all.append(bytes.data(), std::size_t(count));
        return count == 0 ? all + "closed" : all;
    }

private:
    UniqueDescriptor m_socket;
};

/// A folder for sockets that is removed after the test.
class SocketFolder : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = ::testing::TempDir() + "socketXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(&pattern[0]));
        m_folder = pattern;
    }
    void TearDown() override
    {
        fs::remove_all(m_folder);
    }
    std::string path() const
    {
        return m_folder / "control";
    }
    std::string troubleOf(const std::string& socketPath)
    {
        try {
            const ControlSocket opened(socketPath);
        } catch (const LinkError& error) {
            return error.what();
        }
        return {};
    }

    fs::path m_folder;
};

/// A socket whose answers are "ok LINE".
class ServedSocket : public SocketFolder
{
protected:
    void SetUp() override
    {
        SocketFolder::SetUp();
        m_socket = std::make_unique<ControlSocket>(path());
    }
    /// Serves as the loop does, until nothing is left to do.
    void serveAll()
    {
        pollfd looked = {m_socket->descriptor(), POLLIN, 0};
        while (poll(&looked, 1, 0) > 0)
            serve();
    }
    void serve()
    {
        m_socket->serve([this](const std::string& line) {
            m_lines.push_back(line);
            return "ok " + line;
        });
    }

    std::unique_ptr<ControlSocket> m_socket;
    std::vector<std::string> m_lines;
};

} // namespace

TEST_F(ServedSocket, EachLineIsAnsweredByOneLine)
{
    Client client(path());
    client.send("one\ntwo\nthr");
    serveAll();
    EXPECT_EQ("ok one\nok two\n", client.received());
    client.send("ee\n\n");
    serveAll();
    EXPECT_EQ("ok three\nok \n", client.received());
}

TEST_F(ServedSocket, LastLineMayLackItsEnd)
{
    Client client(path());
    client.send("one\ntwo");
    client.endSending();
    serveAll();
    EXPECT_EQ("ok one\nok two\nclosed", client.received());
}

TEST_F(ServedSocket, ClientsGetTheirOwnAnswers)
{
    Client first(path());
    Client second(path());
    first.send("on");
    second.send("two\n");
    serveAll();
    first.send("e\n");
    serveAll();
    EXPECT_EQ("ok one\n", first.received());
    EXPECT_EQ("ok two\n", second.received());
}

TEST_F(ServedSocket, LongLineIsAnErrorAndTheNextLineIsTaken)
{
    Client client(path());
    client.send(std::string(256, 'x') + "\n" + std::string(257, 'y') + "\n" +
                std::string(100000, 'z') + "\nnext\n");
    serveAll();
    const std::string tooLong = "error the line has more than 256 bytes\n";
    EXPECT_EQ("ok " + std::string(256, 'x') + "\n" + tooLong + tooLong + "ok next\n",
              client.received());
}

// The client's bytes stay in the system's buffers once its answers do not fit there.
TEST_F(ServedSocket, ClientThatReadsNoAnswersIsNotReadAndDelaysNobody)
{
    Client deaf(path());
    std::size_t sent = 0;
    for (std::size_t taken = 1; taken > 0; sent += taken) {
        std::string lines;
        for (int i = 0; i < 100; ++i)
            lines += "a line of some length\n";
        taken = deaf.send(lines);
        serveAll();
    }
    EXPECT_LT(m_lines.size(), sent / 22); // some lines are not read yet
    Client other(path());
    other.send("one\n");
    serveAll();
    EXPECT_EQ("ok one\n", other.received());
    std::size_t answered = 0;
    for (std::string text = deaf.received(); !text.empty(); text = deaf.received()) {
        answered += std::size_t(std::count(text.begin(), text.end(), '\n'));
        serveAll();
    }
    EXPECT_EQ(sent / 22, answered);
}

TEST_F(ServedSocket, ClientThatHangsUpIsForgotten)
{
    for (int i = 0; i < 3 * ControlSocket::MOST_CLIENTS; ++i) {
        Client client(path());
        client.send("one\n");
        if (i % 2 == 0) serveAll();
        client.hangUp();
        serveAll();
    }
    Client last(path());
    last.send("last\n");
    serveAll();
    EXPECT_EQ("ok last\n", last.received());
}

TEST_F(ServedSocket, ClientsAreLimitedInNumber)
{
    std::vector<std::unique_ptr<Client>> clients;
    for (int i = 0; i < ControlSocket::MOST_CLIENTS; ++i) {
        clients.push_back(std::make_unique<Client>(path()));
        serveAll();
    }
    Client next(path());
    serveAll();
    EXPECT_EQ("error there are 16 clients already\nclosed", next.received());
    clients[0]->send("one\n");
    serveAll();
    EXPECT_EQ("ok one\n", clients[0]->received());
}

TEST_F(ServedSocket, OneCallReadsABoundedNumberOfLines)
{
    Client client(path());
    serve();
    client.send(std::string(10000, '\n'));
    serve();
    EXPECT_EQ(512u, m_lines.size());
    serveAll();
    EXPECT_EQ(10000u, m_lines.size());
}

TEST_F(ServedSocket, FileIsThereForTheSocketsLifetimeAndForItsOwnerAlone)
{
    EXPECT_TRUE(fs::is_socket(path()));
    EXPECT_EQ(fs::perms(0700), fs::status(path()).permissions());
    m_socket.reset();
    EXPECT_TRUE(fs::is_empty(m_folder));
}

TEST_F(ServedSocket, LivingSocketIsKept)
{
    EXPECT_EQ(path() + ": in use by another program", troubleOf(path()));
    Client client(path());
    client.send("one\n");
    serveAll();
    EXPECT_EQ("ok one\n", client.received());
}

TEST_F(ServedSocket, FileThatTookTheSocketsPlaceIsNotRemoved)
{
    fs::remove(path());
    std::ofstream(path()) << "kept";
    m_socket.reset();
    EXPECT_TRUE(fs::is_regular_file(path()));
}

TEST_F(SocketFolder, SocketThatAKilledProgramLeftIsReplaced)
{
    {
        const UniqueDescriptor killed(socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path().copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(0, bind(killed.get(), reinterpret_cast<sockaddr*>(&address), sizeof address));
    }
    EXPECT_TRUE(fs::is_socket(path()));
    EXPECT_EQ("", troubleOf(path()));
    EXPECT_TRUE(fs::is_empty(m_folder));
}

TEST_F(SocketFolder, FileThatIsNoSocketIsKept)
{
    std::ofstream(path()) << "kept";
    EXPECT_EQ(path() + ": File exists", troubleOf(path()));
    EXPECT_TRUE(fs::is_regular_file(path()));
}

TEST_F(SocketFolder, PathHasALongestLength)
{
    const std::string longest = path() + std::string(99 - path().size(), 'x');
    EXPECT_EQ("", troubleOf(longest));
    EXPECT_EQ(longest + "x: the path of a socket has 1 to 99 bytes", troubleOf(longest + "x"));
}
