#include "plan/sharedMemory.h"

#include <gtest/gtest.h>

// Numbers and memory as in the driver's header: MW n / 2 and MX start at 3000, the other areas at
// 0; bit k of word w is bit 16 w + k.

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

TEST(SharedMemory, WordSharesItsSixteenBits)
{
    for (int bit = 0; bit < 64; ++bit) {
        EXPECT_EQ(bit / 16 == 2, share(tagAt("MW", 3002), tagAt("MX", 3000 + bit))) << bit;
        EXPECT_EQ(bit / 16 == 2, share(tagAt("QX", bit), tagAt("QW", 2))) << bit;
        EXPECT_EQ(bit / 16 == 1 || bit / 16 == 2,
                  share(tagAt("MW", 3001, Tag::FLOAT32), tagAt("MX", 3000 + bit)))
            << bit;
    }
}

TEST(SharedMemory, EveryBitHasItsWord)
{
    static const struct
    {
        const char* area;
        int number;
        const char* words;
        int word;
        int bit;
    } PLACES[] = {
        {"MX", 3000, "MW", 3000, 0}, {"MX", 3015, "MW", 3000, 15},
        {"MX", 3016, "MW", 3001, 0}, {"MX", 65535, "MW", 6908, 7}, // 62535 is 3908 * 16 + 7
        {"IX", 0, "IW", 0, 0},       {"IX", 4095, "IW", 255, 15},
        {"QX", 3000, "QW", 187, 8},  {"QX", 4095, "QW", 255, 15},
    };
    for (const auto& place : PLACES) {
        const WordBit word = wordBitOf(QLatin1String(place.area), place.number);
        EXPECT_EQ(QLatin1String(place.words), word.area) << place.area << place.number;
        EXPECT_EQ(place.word, word.number) << place.area << place.number;
        EXPECT_EQ(place.bit, word.bit) << place.area << place.number;
    }
}

TEST(SharedMemory, OverlappingTagsShareTheirCommonUnits)
{
    EXPECT_TRUE(share(tagAt("MW", 3100), tagAt("MW", 3100)));
    EXPECT_TRUE(share(tagAt("QX", 7), tagAt("QX", 7)));
    EXPECT_TRUE(share(tagAt("MW", 3101), tagAt("MW", 3100, Tag::UINT32)));
    EXPECT_FALSE(share(tagAt("MW", 3102), tagAt("MW", 3100, Tag::UINT32)));
    EXPECT_FALSE(share(tagAt("QX", 7), tagAt("QX", 8)));
}

TEST(SharedMemory, StationsAndLettersHaveSeparateMemory)
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

// Coil 3000 belongs to the first marker.
TEST(SharedMemory, BitsWithCoilNumbersOfMarkersCannotBeWritten)
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
