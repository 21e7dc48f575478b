#include "session/zeroPages.h"

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace {

enum { SIZE = 100000 };

/// The pages of the memory that the machine holds, see mincore(2).
auto heldPages(ZeroPages& pages)
{
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> held((pages.size() + page - 1) / page);
    EXPECT_EQ(0, mincore(pages.data(), pages.size(), held.data()));
    return std::count_if(held.begin(), held.end(), [](unsigned char one) { return one & 1; });
}

bool isZero(const ZeroPages& pages)
{
    return std::count(pages.data(), pages.data() + pages.size(), 0) == SIZE;
}

} // namespace

TEST(ZeroPages, AreZeroAtFirst)
{
    const ZeroPages pages(SIZE);
    EXPECT_EQ(size_t(SIZE), pages.size());
    EXPECT_TRUE(isZero(pages));
}

TEST(ZeroPages, TakeMemoryOnlyWhereTheyWereWritten)
{
    ZeroPages pages(SIZE);
    EXPECT_EQ(0, heldPages(pages));
    pages.data()[SIZE - 1] = 7;
    EXPECT_EQ(1, heldPages(pages));
    EXPECT_EQ(7, pages.data()[SIZE - 1]);
}

TEST(ZeroPages, AreZeroAgainAndTakeNoMemoryWhenCleared)
{
    ZeroPages pages(SIZE);
    std::fill_n(pages.data(), SIZE, static_cast<unsigned char>(7));
    pages.clear();
    EXPECT_EQ(0, heldPages(pages));
    EXPECT_TRUE(isZero(pages));
}

TEST(ZeroPages, AreZeroAgainWhenClearedWhileTheMemoryIsLocked)
{
    ZeroPages pages(SIZE);
    pages.data()[0] = 7;
    if (mlock(pages.data(), 1) != 0) GTEST_SKIP() << "this process may not lock memory";
    pages.clear();
    EXPECT_TRUE(isZero(pages));
}
