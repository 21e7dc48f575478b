#include "hexText.h"
#include "openLine.h"
#include "uniqueDescriptor.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>

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

TEST_F(LinkedTerminal, LinkOfAnotherTerminalIsReplacedAndNotRemoved)
{
    std::unique_ptr<LineEnd> first = terminalLine(link());
    const std::unique_ptr<LineEnd> second = terminalLine(link());
    EXPECT_EQ(second->address(), target());
    first.reset();
    EXPECT_EQ(second->address(), target());
}

TEST_F(LinkedTerminal, FileThatIsNoLinkIsKept)
{
    std::ofstream(link()) << "kept";
    try {
        terminalLine(link());
        FAIL() << "the file was replaced";
    } catch (const LinkError& error) {
        EXPECT_EQ(link().string() + ": File exists", error.what());
    }
    EXPECT_TRUE(std::filesystem::is_regular_file(link()));
}

TEST_F(LinkedTerminal, LinkInAMissingFolderFails)
{
    EXPECT_THROW(terminalLine(m_folder / "missing" / "plc"), LinkError);
}
