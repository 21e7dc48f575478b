#include "links/descriptorBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <deque>

namespace {

// Global, because the write function has no argument for the test's data.
enum { INTERRUPTED = -1, PORT_IS_GONE = -2 };
std::deque<int> takes; ///< by call: number of bytes taken, or a failure; empty: all bytes
QByteArray taken;

ssize_t failWith(int number)
{
    errno = number;
    return -1;
}

ssize_t writeSome(int, const void* bytes, size_t count)
{
    int most = int(count);
    if (!takes.empty()) {
        most = takes.front();
        takes.pop_front();
    }
    if (most == INTERRUPTED) return failWith(EINTR);
    if (most == PORT_IS_GONE) return failWith(EIO);
    const int size = std::min(most, int(count));
    taken.append(static_cast<const char*>(bytes), size);
    return size;
}

class DescriptorBytesTest : public testing::Test
{
protected:
    /// @return the result of writeAll() when the system takes the bytes in these portions
    static int write(const QByteArray& bytes, const std::deque<int>& portions)
    {
        takes = portions;
        taken.clear();
        return writeAll(-1, bytes, writeSome);
    }
};

} // namespace

TEST_F(DescriptorBytesTest, PartialWriteContinuesBehindTheTakenBytes)
{
    EXPECT_EQ(0, write("0123456789", {3, 0, 1, 4}));
    EXPECT_EQ("0123456789", taken.toStdString());
}

TEST_F(DescriptorBytesTest, InterruptedWriteIsRepeatedAtItsPlace)
{
    EXPECT_EQ(0, write("0123456789", {INTERRUPTED, 6, INTERRUPTED, INTERRUPTED}));
    EXPECT_EQ("0123456789", taken.toStdString());
}

TEST_F(DescriptorBytesTest, FailureAfterAPartialWriteEndsTheWrite)
{
    EXPECT_EQ(EIO, write("0123456789", {4, PORT_IS_GONE}));
    EXPECT_EQ("0123", taken.toStdString());
}

TEST_F(DescriptorBytesTest, EmptyWriteMakesNoSystemCall)
{
    EXPECT_EQ(0, write(QByteArray(), {PORT_IS_GONE}));
    EXPECT_EQ(1u, takes.size());
}
