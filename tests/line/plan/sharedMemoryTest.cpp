#include "plan/sharedMemory.h"

#include <gtest/gtest.h>

// Numbers and memory by the driver's header: MW n / 2 and MX start at 3000, all others at 0; bit k
// of word w is bit 16 w + k.

namespace {

using Pairs = std::vector<std::pair<size_t, size_t>>;

Tag tagAt(const char* area, int number, Tag::Type type = Tag::UINT16, int station = 1)
{
    Tag tag;
    tag.station = station;
    tag.area = QLatin1String(area);
    tag.number = number;
    tag.type = isBitArea(tag.area) ? Tag::BOOL : type;
    return tag;
}

bool share(const Tag& a, const Tag& b)
{
    return !sharingTags({a, b}).empty();
}

bool isWritable(const char* area, int number, int count = 1)
{
    return coilProblem(QLatin1String(area), number, count).isEmpty();
}

} // namespace

TEST(SharedMemory, AWordSharesItsSixteenBits)
{
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(bit / 16 == 2, share(tagAt("MW", 3002), tagAt("MX", 3000 + bit))) << bit;
        EXPECT_EQ(bit / 16 == 2, share(tagAt("QX", bit), tagAt("QW", 2))) << bit;
        EXPECT_EQ(bit / 16 == 1 || bit / 16 == 2,
                  share(tagAt("MW", 3001, Tag::FLOAT32), tagAt("MX", 3000 + bit)))
            << bit;
    }
}

TEST(SharedMemory, TagsOfOneKindShareTheirCommonUnits)
{
    EXPECT_TRUE(share(tagAt("MW", 3100), tagAt("MW", 3100)));
    EXPECT_TRUE(share(tagAt("QX", 7), tagAt("QX", 7)));
    EXPECT_TRUE(share(tagAt("MW", 3101), tagAt("MW", 3100, Tag::UINT32)));
    EXPECT_FALSE(share(tagAt("MW", 3102), tagAt("MW", 3100, Tag::UINT32)));
    EXPECT_FALSE(share(tagAt("QX", 7), tagAt("QX", 8)));
}

TEST(SharedMemory, StationsAndLettersHaveMemoryOfTheirOwn)
{
    EXPECT_FALSE(share(tagAt("MW", 3000), tagAt("MX", 3000, Tag::BOOL, 2)));
    EXPECT_FALSE(share(tagAt("QW", 0), tagAt("MX", 3000)));
    EXPECT_FALSE(share(tagAt("QW", 0), tagAt("IX", 0)));
}

TEST(SharedMemory, AllPairsAreNamedInOrder)
{
    EXPECT_EQ((Pairs{{0, 2}, {0, 3}, {1, 4}, {2, 3}}),
              sharingTags({tagAt("MW", 3000, Tag::UINT32), tagAt("QX", 17), tagAt("MW", 3001),
                           tagAt("MX", 3031), tagAt("QW", 1)}));
}

// Coil 3000 is the first marker's.
TEST(SharedMemory, BitsWhoseCoilsAreTheMarkersCannotBeWritten)
{
    EXPECT_TRUE(isWritable("QX", 2999));
    EXPECT_FALSE(isWritable("QX", 3000));
    EXPECT_FALSE(isWritable("QX", 4095));
    EXPECT_TRUE(isWritable("QX", 2992, 8));
    EXPECT_FALSE(isWritable("QX", 2993, 8));
    for (const char* area : {"MX", "MW", "QW"})
        EXPECT_TRUE(isWritable(area, 3000)) << area;
    EXPECT_EQ(
        "QX 375.0 and above can be read but not written: their coils are those of the markers",
        coilProblem(QLatin1String("QX"), 3000, 1).toStdString());
}
