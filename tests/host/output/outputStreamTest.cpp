#include "output/outputStream.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>

namespace {

enum { SMALLEST_PIPE = 4096 };

bool goesOn()
{
    return false;
}

std::string readFrom(int descriptor)
{
    char bytes[SMALLEST_PIPE];
    const ssize_t count = read(descriptor, bytes, sizeof bytes);
    return std::string(bytes, size_t(std::max<ssize_t>(count, 0)));
}

int slowReader = -1;
std::string readSlowly;

/// The program is to end, and its reader takes something whenever it is waited for.
bool endsWhileItIsRead()
{
    readSlowly += readFrom(slowReader);
    return true;
}

Descriptor opened(const char* path)
{
    return Descriptor(open(path, O_WRONLY | O_CLOEXEC));
}

/// A pipe, and a variable such as stdout that is printed to.
class OutputStreamTest : public testing::Test
{
protected:
    OutputStreamTest()
    {
        std::signal(SIGPIPE, SIG_IGN);
        int ends[2] = {};
        EXPECT_EQ(0, pipe2(ends, O_CLOEXEC));
        EXPECT_EQ(0, fcntl(ends[0], F_SETFL, O_NONBLOCK));
        m_reader = Descriptor(ends[0]);
        m_writer = Descriptor(ends[1]);
        EXPECT_EQ(SMALLEST_PIPE, fcntl(ends[1], F_SETPIPE_SZ, SMALLEST_PIPE));
    }

    Descriptor m_reader;
    Descriptor m_writer;
    std::FILE* m_stream = nullptr;
};

} // namespace

TEST_F(OutputStreamTest, TakesTheStreamsPlaceForAsLongAsItLives)
{
    {
        const OutputStream output(m_stream, m_writer.number(), goesOn);
        ASSERT_NE(nullptr, m_stream);
        std::fputs("something", m_stream);
    }
    EXPECT_EQ(nullptr, m_stream);
    EXPECT_EQ("something", readFrom(m_reader.number()));
}

TEST_F(OutputStreamTest, TheFirstFailureIsKept)
{
    OutputStream output(m_stream, m_writer.number(), goesOn);
    m_reader = Descriptor();
    EXPECT_EQ(0, output.flush());
    std::fputs(std::string(3 * SMALLEST_PIPE, 'x').c_str(), m_stream);
    errno = 0;
    EXPECT_EQ(EPIPE, output.flush());
    EXPECT_EQ(EPIPE, output.flush());
}

TEST_F(OutputStreamTest, AFullDeviceIsNoReaderThatHasSeenEnough)
{
    const Descriptor full = opened("/dev/full");
    OutputStream output(m_stream, full.number(), goesOn);
    std::fputc('x', m_stream);
    EXPECT_EQ(ENOSPC, output.flush());
}

TEST_F(OutputStreamTest, AReaderThatTakesSomethingGetsAllEvenAtTheEnd)
{
    slowReader = m_reader.number();
    readSlowly.clear();
    const std::string printed(3 * SMALLEST_PIPE, 'x');
    OutputStream output(m_stream, m_writer.number(), endsWhileItIsRead);
    std::fputs(printed.c_str(), m_stream);
    EXPECT_EQ(0, output.flush());
    EXPECT_EQ(printed, readSlowly + readFrom(slowReader));
}

TEST_F(OutputStreamTest, WhetherAnybodyReadsIsKnownWithoutPrinting)
{
    EXPECT_FALSE(hasNoReader(m_writer.number()));
    m_reader = Descriptor();
    EXPECT_TRUE(hasNoReader(m_writer.number()));
    EXPECT_FALSE(hasNoReader(opened("/dev/null").number()));
}
