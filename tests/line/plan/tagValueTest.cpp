#include "plan/tagValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>

// Expected bytes by python3's struct.pack: "<h", "<H", "<i", "<I" and "<f". With the high word
// first the two words are exchanged.

namespace {

const Tag::WordOrder LOW = Tag::LOW_WORD_FIRST;
const Tag::WordOrder HIGH = Tag::HIGH_WORD_FIRST;

Tag tagOf(Tag::Type type, Tag::WordOrder order = LOW)
{
    Tag tag;
    tag.type = type;
    tag.wordOrder = order;
    return tag;
}

QString textOf(Tag::Type type, const QByteArray& bytes, Tag::WordOrder order = LOW)
{
    return tagValueText(tagOf(type, order), bytes);
}

std::optional<QByteArray> bytesOf(Tag::Type type, const char* text)
{
    return tagValueBytes(tagOf(type), QString::fromLatin1(text));
}

QByteArray floatBytes(float value)
{
    const char* const raw = reinterpret_cast<const char*>(&value);
    return QByteArray(raw, sizeof value);
}

struct Value
{
    Tag::Type type;
    Tag::WordOrder order;
    const char* bytes;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Value& value)
{
    return out << value.text << " of type " << value.type;
}

struct Text
{
    Tag::Type type;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Text& text)
{
    return out << '"' << text.text << "\" of type " << text.type;
}

} // namespace

class TagValueBothWays : public testing::TestWithParam<Value>
{
};

TEST_P(TagValueBothWays, BytesBecomeText)
{
    const Value& value = GetParam();
    EXPECT_EQ(QString::fromLatin1(value.text),
              textOf(value.type, QByteArray::fromHex(value.bytes), value.order));
}

TEST_P(TagValueBothWays, TextBecomesBytes)
{
    const Value& value = GetParam();
    const auto bytes =
        tagValueBytes(tagOf(value.type, value.order), QString::fromLatin1(value.text));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(QByteArray::fromHex(value.bytes), *bytes) << bytes->toHex().toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    , TagValueBothWays,
    testing::Values(
        Value{Tag::BOOL, LOW, "00", "0"}, Value{Tag::BOOL, LOW, "01", "1"},
        Value{Tag::INT16, LOW, "0000", "0"}, Value{Tag::INT16, LOW, "d204", "1234"},
        Value{Tag::INT16, LOW, "0080", "-32768"}, Value{Tag::INT16, LOW, "ff7f", "32767"},
        Value{Tag::INT16, HIGH, "d204", "1234"}, Value{Tag::UINT16, LOW, "ffff", "65535"},
        Value{Tag::INT32, LOW, "40e20100", "123456"}, Value{Tag::INT32, HIGH, "010040e2", "123456"},
        Value{Tag::INT32, LOW, "00000080", "-2147483648"},
        Value{Tag::INT32, HIGH, "ffffffff", "-1"},
        Value{Tag::UINT32, LOW, "ffffffff", "4294967295"},
        Value{Tag::UINT32, HIGH, "addeefbe", "3735928559"},
        Value{Tag::FLOAT32, LOW, "0000c03f", "1.5"}, Value{Tag::FLOAT32, HIGH, "c03f0000", "1.5"},
        Value{Tag::FLOAT32, LOW, "cdcccc3d", "0.1"},
        Value{Tag::FLOAT32, LOW, "0000804b", "16777216"},
        Value{Tag::FLOAT32, LOW, "ffff7f7f", "3.4028235e+38"},
        Value{Tag::FLOAT32, LOW, "0000807f", "inf"}, Value{Tag::FLOAT32, LOW, "000080ff", "-inf"},
        Value{Tag::FLOAT32, LOW, "0000c07f", "nan"}));

namespace {

Tag shownAs(Tag::Format format, Tag::Type type, Tag::WordOrder order = LOW)
{
    Tag tag = tagOf(type, order);
    tag.format = format;
    return tag;
}

struct Pattern
{
    Tag::Type type;
    Tag::Format format;
    Tag::WordOrder order;
    const char* bytes;
    const char* text;
};

std::ostream& operator<<(std::ostream& out, const Pattern& pattern)
{
    return out << pattern.text;
}

} // namespace

// Expected texts by python3's format(): "04X", "08X", "016b" and "032b".
class TagValuePattern : public testing::TestWithParam<Pattern>
{
};

TEST_P(TagValuePattern, HasAllDigitsAndIsReadBack)
{
    const Pattern& pattern = GetParam();
    const Tag tag = shownAs(pattern.format, pattern.type, pattern.order);
    const QByteArray bytes = QByteArray::fromHex(pattern.bytes);
    EXPECT_EQ(pattern.text, tagValueText(tag, bytes).toStdString());
    EXPECT_EQ(bytes, tagValueBytes(tag, QString::fromLatin1(pattern.text)));
}

INSTANTIATE_TEST_SUITE_P(
    , TagValuePattern,
    testing::Values(Pattern{Tag::UINT16, Tag::HEXADECIMAL, LOW, "ff00", "0x00FF"},
                    Pattern{Tag::UINT16, Tag::HEXADECIMAL, LOW, "0000", "0x0000"},
                    Pattern{Tag::UINT16, Tag::BINARY, LOW, "ff00", "0b0000000011111111"},
                    Pattern{Tag::UINT16, Tag::BINARY, LOW, "0180", "0b1000000000000001"},
                    Pattern{Tag::UINT32, Tag::HEXADECIMAL, LOW, "efbeadde", "0xDEADBEEF"},
                    Pattern{Tag::UINT32, Tag::HEXADECIMAL, HIGH, "adde0000", "0xDEAD0000"},
                    Pattern{Tag::UINT32, Tag::BINARY, LOW, "05000080",
                            "0b10000000000000000000000000000101"}));

class TagValueRefused : public testing::TestWithParam<Text>
{
};

TEST_P(TagValueRefused, HasNoBytes)
{
    EXPECT_FALSE(bytesOf(GetParam().type, GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    , TagValueRefused,
    testing::Values(
        Text{Tag::BOOL, ""}, Text{Tag::BOOL, "2"}, Text{Tag::BOOL, "-1"}, Text{Tag::BOOL, "yes"},
        Text{Tag::INT16, ""}, Text{Tag::INT16, "40000"}, Text{Tag::INT16, "32768"},
        Text{Tag::INT16, "-32769"}, Text{Tag::INT16, "0x10"}, Text{Tag::INT16, "1.0"},
        Text{Tag::INT16, "1 2"}, Text{Tag::INT16, "true"}, Text{Tag::UINT16, "-1"},
        Text{Tag::UINT16, "65536"}, Text{Tag::UINT16, "0x10000"}, Text{Tag::UINT16, "0x"},
        Text{Tag::UINT16, "-0x1"}, Text{Tag::UINT16, "0x-1"}, Text{Tag::UINT16, "1,000"},
        Text{Tag::UINT16, "10h"}, Text{Tag::UINT16, "0b"}, Text{Tag::UINT16, "0b2"},
        Text{Tag::UINT16, "0b-1"}, Text{Tag::UINT16, "0b+1"}, Text{Tag::UINT16, "0x+1"},
        Text{Tag::UINT16, "0b 1"}, Text{Tag::UINT16, "0x0x1"}, Text{Tag::UINT16, "0b0b1"},
        Text{Tag::UINT16, "0b10000000000000000"}, Text{Tag::INT16, "0b1"},
        Text{Tag::FLOAT32, "0b1"}, Text{Tag::BOOL, "0b1"}, Text{Tag::INT32, "2147483648"},
        Text{Tag::INT32, "-2147483649"}, Text{Tag::UINT32, "4294967296"},
        Text{Tag::UINT32, "18446744073709551617"}, Text{Tag::FLOAT32, ""},
        Text{Tag::FLOAT32, "1,5"}, Text{Tag::FLOAT32, "1e39"}, Text{Tag::FLOAT32, "3.4028236e38"},
        Text{Tag::FLOAT32, "1.5x"}, Text{Tag::FLOAT32, "+-1"}, Text{Tag::FLOAT32, "0x10"},
        Text{Tag::FLOAT32, "nan(1)"}, Text{Tag::FLOAT32, "."}));

TEST(TagValue, TrueAndFalseAreBits)
{
    EXPECT_EQ(QByteArray::fromHex("01"), bytesOf(Tag::BOOL, "true"));
    EXPECT_EQ(QByteArray::fromHex("00"), bytesOf(Tag::BOOL, "false"));
}

TEST(TagValue, UnsignedTypesTakeHexadecimal)
{
    EXPECT_EQ(QByteArray::fromHex("feca"), bytesOf(Tag::UINT16, "0xCAFE"));
    EXPECT_EQ(QByteArray::fromHex("efbeadde"), bytesOf(Tag::UINT32, "0Xdeadbeef"));
}

TEST(TagValue, UnsignedTypesTakeBinary)
{
    EXPECT_EQ(QByteArray::fromHex("0500"), bytesOf(Tag::UINT16, "0b101"));
    EXPECT_EQ(QByteArray::fromHex("0d000000"), bytesOf(Tag::UINT32, "0B00001101"));
}

TEST(TagValue, BlanksAndAPlusSignDoNotMatter)
{
    EXPECT_EQ(QByteArray::fromHex("0700"), bytesOf(Tag::INT16, " +7 "));
    EXPECT_EQ(QByteArray::fromHex("0000c03f"), bytesOf(Tag::FLOAT32, " +1.5 "));
}

TEST(TagValue, MinusZeroIsWrittenAndShownAsZero)
{
    const QByteArray minusZero = QByteArray::fromHex("00000080");
    EXPECT_EQ(minusZero, bytesOf(Tag::FLOAT32, "-0"));
    EXPECT_EQ(QString::fromLatin1("0"), textOf(Tag::FLOAT32, minusZero));
}

TEST(TagValue, BytesBehindTheValueAreIgnored)
{
    EXPECT_EQ(QString::fromLatin1("1"), textOf(Tag::BOOL, QByteArray::fromHex("01ff")));
    EXPECT_EQ(QString::fromLatin1("7"), textOf(Tag::UINT16, QByteArray::fromHex("0700ffff")));
}

TEST(TagValue, TooFewBytesHaveNoText)
{
    EXPECT_EQ(QString(), textOf(Tag::BOOL, QByteArray()));
    EXPECT_EQ(QString(), textOf(Tag::INT16, QByteArray::fromHex("07")));
    EXPECT_EQ(QString(), textOf(Tag::UINT32, QByteArray::fromHex("070000")));
}

class TagValueProblem : public testing::TestWithParam<std::pair<Text, const char*>>
{
};

TEST_P(TagValueProblem, NamesTheTypeAndItsRange)
{
    const Text& value = GetParam().first;
    EXPECT_EQ(GetParam().second,
              valueProblem(tagOf(value.type), QString::fromLatin1(value.text), REFUSE_NON_FINITE)
                  .toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    , TagValueProblem,
    testing::Values(
        std::make_pair(Text{Tag::INT16, "40000"}, "40000 does not fit int16: -32768 to 32767"),
        std::make_pair(Text{Tag::UINT16, "-1"}, "-1 does not fit uint16: 0 to 65535"),
        std::make_pair(Text{Tag::UINT16, "0x10000"}, "0x10000 does not fit uint16: 0 to 65535"),
        std::make_pair(Text{Tag::UINT16, "1.5"}, "1.5 does not fit uint16: 0 to 65535"),
        std::make_pair(Text{Tag::UINT16, "nan"}, "\"nan\" is no value of type uint16: 0 to 65535"),
        std::make_pair(Text{Tag::INT32, "1e10"},
                       "1e10 does not fit int32: -2147483648 to 2147483647"),
        std::make_pair(Text{Tag::UINT32, "4294967296"},
                       "4294967296 does not fit uint32: 0 to 4294967295"),
        std::make_pair(Text{Tag::BOOL, "2"}, "2 does not fit bool: 0, 1, true or false"),
        std::make_pair(Text{Tag::FLOAT32, "1e39"},
                       "1e39 does not fit float32: -3.4028235e+38 to 3.4028235e+38"),
        std::make_pair(Text{Tag::FLOAT32, "warm"},
                       "\"warm\" is no value of type float32: -3.4028235e+38 to 3.4028235e+38"),
        std::make_pair(Text{Tag::FLOAT32, "nan"}, "nan is written with --allow-nan only"),
        std::make_pair(Text{Tag::FLOAT32, "-inf"}, "-inf is written with --allow-nan only"),
        std::make_pair(Text{Tag::FLOAT32, " "}, "the value is missing"),
        std::make_pair(Text{Tag::FLOAT32, " 1.5 "}, "")));

TEST(TagValue, NanAndInfinityAreValuesWhenTheUserAllowsThem)
{
    for (const char* value : {"nan", "inf", "-inf"})
        EXPECT_EQ("",
                  valueProblem(tagOf(Tag::FLOAT32), QString::fromLatin1(value), ALLOW_NON_FINITE)
                      .toStdString());
}

TEST(TagValue, FloatTextRestoresItsBits)
{
    std::mt19937 random(32);
    for (int i = 0; i < 200000; ++i) {
        const quint32 bits = quint32(random());
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isnan(value) || value == 0) continue;
        const QByteArray bytes = floatBytes(value);
        const QString text = textOf(Tag::FLOAT32, bytes);
        ASSERT_EQ(bytes, tagValueBytes(tagOf(Tag::FLOAT32), text)) << text.toStdString();
    }
}

TEST(TagValue, NeighbouringFloatsHaveDifferentTexts)
{
    float value = 1000;
    for (int i = 0; i < 1000; ++i) {
        const float next = std::nextafter(value, std::numeric_limits<float>::max());
        ASSERT_NE(textOf(Tag::FLOAT32, floatBytes(value)), textOf(Tag::FLOAT32, floatBytes(next)));
        value = next;
    }
}

TEST(TagValueNumber, IsExactForEveryType)
{
    const auto numberOf = [](Tag::Type type, const char* hex, Tag::WordOrder order = LOW) {
        return tagValueNumber(tagOf(type, order), QByteArray::fromHex(hex));
    };
    EXPECT_EQ(1.0, numberOf(Tag::BOOL, "01"));
    EXPECT_EQ(0.0, numberOf(Tag::BOOL, "00"));
    EXPECT_EQ(-32768.0, numberOf(Tag::INT16, "0080"));
    EXPECT_EQ(32768.0, numberOf(Tag::UINT16, "0080"));
    EXPECT_EQ(-2.0, numberOf(Tag::INT32, "feffffff"));
    EXPECT_EQ(4294967294.0, numberOf(Tag::UINT32, "feffffff"));
    EXPECT_EQ(65536.0, numberOf(Tag::UINT32, "01000000", HIGH));
    EXPECT_EQ(1.5, numberOf(Tag::FLOAT32, "0000c03f"));
    EXPECT_TRUE(std::isnan(*numberOf(Tag::FLOAT32, "0000c07f")));
}

TEST(TagValueNumber, IsNoneWithoutAllBytes)
{
    EXPECT_FALSE(tagValueNumber(tagOf(Tag::UINT16), QByteArray(1, 0)));
    EXPECT_FALSE(tagValueNumber(tagOf(Tag::BOOL), QByteArray()));
}
