#include "builtDriver.h"
#include "plan/typedAddress.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

struct AddressText
{
    const char* text;
    int station;
    const char* area;
    const char* address;
    int number;
    Tag::Type type;
};

std::ostream& operator<<(std::ostream& out, const AddressText& address)
{
    return out << address.text;
}

struct BadLine
{
    const char* line;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const BadLine& bad)
{
    return out << bad.line;
}

} // namespace

class TagFromAddress : public testing::TestWithParam<AddressText>
{
};

TEST_P(TagFromAddress, IsNamedByItsText)
{
    const AddressText& expected = GetParam();
    const Tag tag = tagFromAddress(text(expected.text), driver());
    EXPECT_EQ(text(expected.text), tag.name);
    EXPECT_EQ(expected.station, tag.station);
    EXPECT_EQ(text(expected.area), tag.area);
    EXPECT_EQ(text(expected.address), tag.address);
    EXPECT_EQ(expected.number, tag.number);
    EXPECT_EQ(expected.type, tag.type);
}

INSTANTIATE_TEST_SUITE_P(, TagFromAddress,
                         testing::Values(AddressText{"MW100", 1, "MW", "100", 3050, Tag::UINT16},
                                         AddressText{"MX12.3", 1, "MX", "12.3", 3099, Tag::BOOL},
                                         AddressText{"2:QW8", 2, "QW", "8", 4, Tag::UINT16},
                                         AddressText{"247:IX0.0", 247, "IX", "0.0", 0, Tag::BOOL},
                                         AddressText{"MW100:int16", 1, "MW", "100", 3050,
                                                     Tag::INT16}));

class TagFromBadAddress : public testing::TestWithParam<BadLine>
{
};

TEST_P(TagFromBadAddress, IsRefusedWithTheReason)
{
    try {
        tagFromAddress(text(GetParam().line), driver());
        FAIL() << "no error";
    } catch (const TagFileError& error) {
        EXPECT_EQ(std::string(GetParam().line) + ": " + GetParam().reason, error.what());
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TagFromBadAddress,
    testing::Values(
        BadLine{"MW101", "odd: a word starts at an even number"},
        BadLine{"MW8192", "past the end of MW, whose last address is 8190"},
        BadLine{"MW-2", "below 0, the lowest address"},
        BadLine{"MX12", "malformed: MX takes a byte, a dot and a bit, from 0.0 to 7816.7"},
        BadLine{"MX12.9", "the bit is 0 to 7; did you mean MX13.1?"},
        BadLine{"qx12.10", "the bit is 0 to 7; did you mean QX13.2?"},
        BadLine{"QX511.8", "the bit is 0 to 7"}, BadLine{"QX0.99999999999", "the bit is 0 to 7"},
        BadLine{"", "there is no area \"\"; the areas are MW, IW, QW, MX, IX, QX"},
        BadLine{"100", "there is no area \"\"; the areas are MW, IW, QW, MX, IX, QX"},
        BadLine{"MW", "malformed: MW takes an even number, from 0 to 8190"},
        BadLine{"level", "there is no area \"level\"; the areas are MW, IW, QW, MX, IX, QX"},
        BadLine{"MW0:bool", "MW holds words, which are not of type bool"},
        BadLine{"MX0.0:hex", "MX holds bits, which are not of type hex"},
        BadLine{"QW510:float32",
                "past the end of QW: the last address that leaves room for 2 words is "
                "508"},
        BadLine{":MW0", "station \"\" is no number from 1 to 247"},
        BadLine{"0:MW0", "station \"0\" is no number from 1 to 247"},
        BadLine{"248:MW0..MW4", "station \"248\" is no number from 1 to 247"},
        BadLine{"MW0+2", "a single address is needed, not a range"}));
