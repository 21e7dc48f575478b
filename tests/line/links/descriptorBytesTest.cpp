#include "links/descriptorBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <deque>

namespace {

// A writer takes no data of the test's own.
enum { INTERRUPTED = -1, PORT_IS_GONE = -2 };
std::deque<int> takes; ///< by call: how many bytes are taken, or a failure; then as many as come
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
    /// @return what writeAll() returns when the system takes the bytes in these portions
    static int write(const QByteArray& bytes, const std::deque<int>& portions)
    {
        takes = portions;
        taken.clear();
        return writeAll(-1, bytes, writeSome);
    }
};

} // namespace

TEST_F(DescriptorBytesTest, APartialWriteGoesOnBehindWhatWasTaken)
{
    EXPECT_EQ(0, write("0123456789", {3, 0, 1, 4}));
    EXPECT_EQ("0123456789", taken.toStdString());
}

TEST_F(DescriptorBytesTest, AnInterruptedWriteIsRepeatedWhereItWas)
{
    EXPECT_EQ(0, write("0123456789", {INTERRUPTED, 6, INTERRUPTED, INTERRUPTED}));
    EXPECT_EQ("0123456789", taken.toStdString());
}

TEST_F(DescriptorBytesTest, AFailureBehindAPartialWriteEndsIt)
{
    EXPECT_EQ(EIO, write("0123456789", {4, PORT_IS_GONE}));
    EXPECT_EQ("0123", taken.toStdString());
}

TEST_F(DescriptorBytesTest, NoBytesAreNoWrite)
{
    EXPECT_EQ(0, write(QByteArray(), {PORT_IS_GONE}));
    EXPECT_EQ(1u, takes.size());
}
