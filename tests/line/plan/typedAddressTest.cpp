#include "plan/typedAddress.h"

#include "builtDriver.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>
#include <string>

// Address numbers by the table of the driver's header: a word of MW has the number 3000 + address /
// 2, a bit of MX 3000 + 8 * byte + bit; IW, QW, IX and QX begin at 0.

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

struct Canonical
{
    const char* typed;
    const char* canonical;
};

std::ostream& operator<<(std::ostream& out, const Canonical& row)
{
    return out << row.typed;
}

struct Range
{
    const char* typed;
    const char* names; ///< of its tags, one blank between them
};

std::ostream& operator<<(std::ostream& out, const Range& row)
{
    return out << row.typed;
}

QString namesOf(const std::vector<Tag>& tags)
{
    QStringList names;
    for (const Tag& tag : tags)
        names << tag.name;
    return names.join(QLatin1Char(' '));
}

/// The error message for an address, without the address; empty: no error.
std::string complaintOf(const char* typed)
{
    try {
        tagsFromAddress(text(typed), driver());
    } catch (const TagFileError& error) {
        const std::string prefix = std::string(typed) + ": ";
        const std::string message = error.what();
        return message.compare(0, prefix.size(), prefix) == 0 ? message.substr(prefix.size())
                                                              : "without the address: " + message;
    }
    return std::string();
}

/// A random tag that the device has.
Tag randomTag(std::mt19937& random)
{
    struct Area
    {
        const char* name;
        int first;
        int units;
    };
    // Every area with its first number and its number of units.
    const Area areas[] = {{"MW", 3000, 4096},  {"IW", 0, 256},  {"QW", 0, 256},
                          {"MX", 3000, 62536}, {"IX", 0, 4096}, {"QX", 0, 4096}};
    const Area& area = areas[random() % 6];
    const bool bits = area.name[1] == 'X';
    Tag tag;
    tag.station = 1 + int(random() % 3) * int(random() % 124);
    tag.area = text(area.name);
    tag.type = bits ? Tag::BOOL : static_cast<Tag::Type>(1 + random() % 5);
    if (tag.units() == 2) tag.wordOrder = static_cast<Tag::WordOrder>(random() % 2);
    if (tag.type == Tag::UINT16 || tag.type == Tag::UINT32)
        tag.format = static_cast<Tag::Format>(random() % 3);
    const int offset = int(random() % unsigned(area.units - tag.units() + 1));
    tag.number = area.first + offset;
    tag.address = bits
                      ? QString::number(offset / 8) + QLatin1Char('.') + QString::number(offset % 8)
                      : QString::number(2 * offset);
    return tag;
}

void expectSame(const Tag& expected, const Tag& tag, const QString& typed)
{
    EXPECT_EQ(expected.station, tag.station) << typed.toStdString();
    EXPECT_EQ(expected.area, tag.area) << typed.toStdString();
    EXPECT_EQ(expected.address, tag.address) << typed.toStdString();
    EXPECT_EQ(expected.number, tag.number) << typed.toStdString();
    EXPECT_EQ(expected.type, tag.type) << typed.toStdString();
    EXPECT_EQ(expected.wordOrder, tag.wordOrder) << typed.toStdString();
    EXPECT_EQ(expected.format, tag.format) << typed.toStdString();
}

} // namespace

class TypedAddressCanonical : public testing::TestWithParam<Canonical>
{
};

TEST_P(TypedAddressCanonical, NamesTheTag)
{
    const Tag tag = tagFromAddress(text(GetParam().typed), driver());
    EXPECT_EQ(GetParam().canonical, tag.name.toStdString());
    EXPECT_EQ(GetParam().canonical, typedAddressText(tag).toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    , TypedAddressCanonical,
    testing::Values(Canonical{"mw100", "MW100"}, Canonical{"%MW100", "MW100"},
                    Canonical{"%mx12.3", "MX12.3"}, Canonical{"1:MW100", "MW100"},
                    Canonical{"2:%qw8", "2:QW8"}, Canonical{"MW0100", "MW100"},
                    Canonical{"MX012.03", "MX12.3"}, Canonical{"MW100:uint16", "MW100"},
                    Canonical{"MX0.0:bool", "MX0.0"}, Canonical{"IW0:hex", "IW0:hex"},
                    Canonical{"IW0:uint16:hex", "IW0:hex"}, Canonical{"IW0:bin", "IW0:bin"},
                    Canonical{"MW4:int16", "MW4:int16"},
                    Canonical{"MW100:float32:low", "MW100:float32"},
                    Canonical{"MW100:float32:high", "MW100:float32:high"},
                    Canonical{"MW100:uint32:hex", "MW100:uint32:hex"},
                    Canonical{"3:mw100:uint32:high:bin", "3:MW100:uint32:high:bin"},
                    Canonical{"MW100+1", "MW100"}, Canonical{"MW100..MW100", "MW100"}));

class TypedRange : public testing::TestWithParam<Range>
{
};

TEST_P(TypedRange, HasTheTagsFromItsStartToItsEnd)
{
    const std::vector<Tag> tags = tagsFromAddress(text(GetParam().typed), driver());
    EXPECT_EQ(GetParam().names, namesOf(tags).toStdString());
    for (size_t i = 1; i < tags.size(); ++i)
        EXPECT_EQ(tags[i - 1].number + tags[i].units(), tags[i].number);
}

INSTANTIATE_TEST_SUITE_P(
    , TypedRange,
    testing::Values(Range{"MW0..MW4", "MW0 MW2 MW4"}, Range{"MW8186..8190", "MW8186 MW8188 MW8190"},
                    Range{"%mw0..%mw2", "MW0 MW2"}, Range{"MW6+3", "MW6 MW8 MW10"},
                    Range{"2:MW0+2", "2:MW0 2:MW2"}, Range{"2:IW4..IW6", "2:IW4 2:IW6"},
                    Range{"MX0.6..MX1.1", "MX0.6 MX0.7 MX1.0 MX1.1"},
                    Range{"QX511.6+2", "QX511.6 QX511.7"},
                    Range{"MW0..MW2:int16", "MW0:int16 MW2:int16"},
                    Range{"MW0+2:float32:high", "MW0:float32:high MW4:float32:high"},
                    Range{"MW0..MW6:int32", "MW0:int32 MW4:int32"},
                    Range{"MW8188+1:uint32:hex", "MW8188:uint32:hex"}));

TEST(TypedAddress, RangeOfAWholeAreaIsWithinTheLimit)
{
    EXPECT_EQ(4096u, tagsFromAddress(text("MW0..MW8190"), driver()).size());
    EXPECT_EQ(4096u, tagsFromAddress(text("QX0.0..QX511.7"), driver()).size());
    const std::vector<Tag> bits = tagsFromAddress(text("MX0.0+4096"), driver());
    EXPECT_EQ("MX511.7", bits.back().name.toStdString());
    EXPECT_EQ(7095, bits.back().number); // 3000 + 4095
}

class TypedRangeRefused : public testing::TestWithParam<Range>
{
};

TEST_P(TypedRangeRefused, WithTheReason)
{
    EXPECT_EQ(GetParam().names, complaintOf(GetParam().typed));
}

INSTANTIATE_TEST_SUITE_P(
    , TypedRangeRefused,
    testing::Values(
        Range{"MW4..MW0", "the range ends before it begins"},
        Range{"MW0..QW4", "a range lies in one area"},
        Range{"MW0..", "the end of the range: malformed: MW takes an even number, from 0 to 8190"},
        Range{"MW0..MW3", "the end of the range: odd: a word starts at an even number"},
        Range{"MX0.0..MX0.8", "the end of the range: the bit is 0 to 7; did you mean MX1.0?"},
        Range{"MW0..MW4:int32", "the range has 3 words, but each value of type int32 takes 2"},
        Range{"MW0+0", "a range has 1 to 4096 values, not \"0\""},
        Range{"MW0+", "a range has 1 to 4096 values, not \"\""},
        Range{"MW0+-1", "a range has 1 to 4096 values, not \"-1\""},
        Range{"MX0.0+4097", "a range has 1 to 4096 values, not \"4097\""},
        Range{"MX0.0+99999999999", "a range has 1 to 4096 values, not \"99999999999\""},
        Range{"MX0.0..MX512.0", "a range has 1 to 4096 values, not 4097"},
        Range{"MW8188+3",
              "past the end of MW: the last address that leaves room for 3 words is 8186"},
        Range{"QW0+129:int32", "QW has only 256 words"}));

// Seeds are fixed: a failure comes back.
TEST(TypedAddress, CanonicalTextOfATagGivesTheTag)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        const Tag tag = randomTag(random);
        const QString typed = typedAddressText(tag);
        const Tag again = tagFromAddress(typed, driver());
        expectSame(tag, again, typed);
        EXPECT_EQ(typed, again.name);
    }
}

TEST(TypedAddress, CaseOfTheAreaAndAPercentSignDoNotMatter)
{
    std::mt19937 random(8);
    for (int i = 0; i < 5000 && !testing::Test::HasFailure(); ++i) {
        const Tag tag = randomTag(random);
        QString typed = typedAddressText(tag);
        typed.replace(tag.area,
                      (random() % 2 ? QLatin1String("%") : QLatin1String("")) + tag.area.toLower());
        expectSame(tag, tagFromAddress(typed, driver()), typed);
    }
}

TEST(TypedAddress, RangeTextGivesItsTags)
{
    std::mt19937 random(9);
    for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
        const Tag first = randomTag(random);
        const int most = 1 + int(random() % 40);
        std::vector<Tag> expected;
        try {
            expected = consecutiveTags(first, most, driver());
        } catch (const TagFileError&) {
            continue; // past the end of the area
        }
        const QString typed = placeText(first) + QLatin1Char('+') + QString::number(most);
        const QString type = typedAddressText(first).mid(placeText(first).size());
        const std::vector<Tag> tags = tagsFromAddress(typed + type, driver());
        ASSERT_EQ(expected.size(), tags.size()) << typed.toStdString();
        for (size_t tag = 0; tag < tags.size(); ++tag)
            expectSame(expected[tag], tags[tag], typed);
    }
}

// Any text is either an address or refused with a sentence; none is a crash.
TEST(TypedAddress, RandomTextIsReadOrRefused)
{
    std::mt19937 random(10);
    const QString letters = text("MWXIQ%:..++-0123456789 hexbinfloat32high\t\n\xE4");
    for (int i = 0; i < 20000; ++i) {
        QString typed;
        for (auto left = random() % 14; left > 0; --left)
            typed += letters.at(int(random() % unsigned(letters.size())));
        try {
            for (const Tag& tag : tagsFromAddress(typed, driver()))
                expectSame(tag, tagFromAddress(tag.name, driver()), typed);
        } catch (const TagFileError& error) {
            ASSERT_LT(std::string(typed.toUtf8().constData()).size() + 2,
                      std::string(error.what()).size());
        }
    }
}

TEST(TypedAddress, PlaceAndAddressMayBeOneWord)
{
    const AreaAndAddress place = areaAndAddress(text("%mx12.3"), driver());
    EXPECT_EQ("MX", place.area.toStdString());
    EXPECT_EQ("12.3", place.address.toStdString());
    EXPECT_EQ("zz", areaAndAddress(text("zz1"), driver()).area.toStdString());
}
