#include "hexText.h"
#include "openLine.h"
#include "uniqueDescriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

const char* const REQUEST = "11 03 00 13 0D 0A 76 87"; // with bytes that a terminal would change

std::unique_ptr<LineEnd> terminalLine(const std::string& linkPath = {})
{
    SimulatorOptions options;
    options.linkPath = linkPath;
    return openLine(options);
}

/// What opening says; empty: it was opened, and `line` keeps it.
std::string troubleOf(const std::string& linkPath, std::unique_ptr<LineEnd>* line = nullptr)
{
    try {
        std::unique_ptr<LineEnd> opened = terminalLine(linkPath);
        if (line) *line = std::move(opened);
    } catch (const LinkError& error) {
        return error.what();
    }
    return {};
}

bool isReadable(int descriptor)
{
    pollfd looked = {descriptor, POLLIN, 0};
    return poll(&looked, 1, 0) == 1;
}

/// A host that opened the terminal.
class TerminalHost
{
public:
    explicit TerminalHost(const std::string& path)
        : m_port(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        if (m_port.get() < 0) failLink(path);
    }
    void send(const std::string& hex)
    {
        const Bytes bytes = bytesOf(hex);
        ASSERT_EQ(ssize_t(bytes.size()), write(m_port.get(), bytes.data(), bytes.size()));
    }
    std::string received()
    {
        Bytes bytes(READ_BYTES);
        const ssize_t count = read(m_port.get(), bytes.data(), bytes.size());
        bytes.resize(count > 0 ? std::size_t(count) : 0);
        return hexOf(bytes);
    }

private:
    UniqueDescriptor m_port;
};

/// A folder for links that is removed after the test.
class LinkedTerminal : public ::testing::Test
{
protected:
    void SetUp() override
    {
        std::string pattern = ::testing::TempDir() + "terminalXXXXXX";
        ASSERT_NE(nullptr, mkdtemp(&pattern[0]));
        m_folder = pattern;
    }
    void TearDown() override
    {
        std::filesystem::remove_all(m_folder);
    }
    std::filesystem::path link() const
    {
        return m_folder / "plc";
    }
    std::string target() const
    {
        return std::filesystem::read_symlink(link()).string();
    }
    bool isThere() const
    {
        return std::filesystem::is_symlink(link());
    }

    std::filesystem::path m_folder;
};

} // namespace

TEST(PseudoTerminal, BytesPassUnchangedBothWays)
{
    const std::unique_ptr<LineEnd> line = terminalLine();
    TerminalHost host(line->address());
    host.send(REQUEST);
    EXPECT_EQ(REQUEST, hexOf(line->receive()));
    EXPECT_EQ("", hexOf(line->receive()));
    line->send(bytesOf(REQUEST));
    EXPECT_EQ(REQUEST, host.received());
}

TEST(PseudoTerminal, LineStaysOpenBetweenHosts)
{
    const std::unique_ptr<LineEnd> line = terminalLine();
    TerminalHost(line->address()).send(REQUEST);
    EXPECT_EQ(REQUEST, hexOf(line->receive()));
    EXPECT_EQ("", hexOf(line->receive()));
    TerminalHost next(line->address());
    next.send(REQUEST);
    EXPECT_EQ(REQUEST, hexOf(line->receive()));
}

TEST(PseudoTerminal, DepartureOfAHostIsToldOnce)
{
    const std::unique_ptr<LineEnd> line = terminalLine();
    {
        const TerminalHost host(line->address());
        EXPECT_FALSE(isReadable(line->departures()));
    }
    EXPECT_TRUE(isReadable(line->departures()));
    line->hostLeft();
    EXPECT_FALSE(isReadable(line->departures()));
}

TEST_F(LinkedTerminal, LinkLeadsToTheTerminalForItsLifetime)
{
    {
        const std::unique_ptr<LineEnd> line = terminalLine(link());
        EXPECT_EQ(line->address(), target());
    }
    EXPECT_FALSE(isThere());
}

TEST_F(LinkedTerminal, LiveLinkIsKeptAndItsHolderIsNamed)
{
    const std::unique_ptr<LineEnd> first = terminalLine(link());
    std::string name;
    std::getline(std::ifstream("/proc/self/comm"), name);
    EXPECT_EQ(link().string() + ": already leads to " + first->address() + ", which is in use by " +
                  name + ", process " + std::to_string(getpid()),
              troubleOf(link()));
    EXPECT_EQ(first->address(), target());
}

TEST_F(LinkedTerminal, LinkToAFileIsKept)
{
    std::ofstream(m_folder / "file") << "kept";
    std::filesystem::create_symlink(m_folder / "file", link());
    EXPECT_EQ(link().string() + ": already leads to " + (m_folder / "file").string() +
                  ", which is there",
              troubleOf(link()));
    EXPECT_EQ((m_folder / "file").string(), target());
}

TEST_F(LinkedTerminal, LinkWhoseTargetIsGoneIsReplaced)
{
    std::filesystem::create_symlink("/dev/pts/gone", link());
    const std::unique_ptr<LineEnd> line = terminalLine(link());
    EXPECT_EQ(line->address(), target());
}

// A killed PLC leaves its link behind, and the next one often gets the same terminal. Other tests
// may take the terminal in between; then it is tried again.
TEST_F(LinkedTerminal, LinkOfAKilledPlcWithTheSameTerminalIsReplaced)
{
    const int mostTries = 1000;
    std::string trouble;
    for (int tried = 0; tried < mostTries; ++tried) {
        const std::string address = terminalLine()->address();
        std::filesystem::remove(link());
        std::filesystem::create_symlink(address, link());
        std::unique_ptr<LineEnd> line;
        trouble = troubleOf(link(), &line);
        if (line && line->address() == address) {
            EXPECT_EQ(address, target());
            return;
        }
    }
    FAIL() << trouble;
}

TEST_F(LinkedTerminal, LinkThatWasReplacedMeanwhileIsNotRemoved)
{
    std::unique_ptr<LineEnd> line = terminalLine(link());
    std::filesystem::remove(link());
    std::filesystem::create_symlink("/dev/null", link());
    line.reset();
    EXPECT_EQ("/dev/null", target());
}

TEST_F(LinkedTerminal, FileThatIsNoLinkIsKept)
{
    std::ofstream(link()) << "kept";
    EXPECT_EQ(link().string() + ": File exists", troubleOf(link()));
    EXPECT_TRUE(std::filesystem::is_regular_file(link()));
}

TEST_F(LinkedTerminal, LinkInAMissingFolderFails)
{
    EXPECT_THROW(terminalLine(m_folder / "missing" / "plc"), LinkError);
}
