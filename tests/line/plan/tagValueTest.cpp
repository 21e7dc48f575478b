#include "plan/tagValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>

// Bytes by python3's struct.pack: "<h", "<H", "<i", "<I" and "<f"; with the high word first the two
// words change places.

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

class TagValueRefused : public testing::TestWithParam<Text>
{
};

TEST_P(TagValueRefused, IsNoValueOfTheType)
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
        Text{Tag::UINT16, "10h"}, Text{Tag::INT32, "2147483648"}, Text{Tag::INT32, "-2147483649"},
        Text{Tag::UINT32, "4294967296"}, Text{Tag::UINT32, "18446744073709551617"},
        Text{Tag::FLOAT32, ""}, Text{Tag::FLOAT32, "1,5"}, Text{Tag::FLOAT32, "1e39"},
        Text{Tag::FLOAT32, "3.4028236e38"}, Text{Tag::FLOAT32, "1.5x"}, Text{Tag::FLOAT32, "+-1"},
        Text{Tag::FLOAT32, "0x10"}, Text{Tag::FLOAT32, "nan(1)"}, Text{Tag::FLOAT32, "."}));

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

TEST(TagValue, BlanksAndAPlusSignDoNotMatter)
{
    EXPECT_EQ(QByteArray::fromHex("0700"), bytesOf(Tag::INT16, " +7 "));
    EXPECT_EQ(QByteArray::fromHex("0000c03f"), bytesOf(Tag::FLOAT32, " +1.5 "));
}

TEST(TagValue, AFloatsMinusZeroCanBeWrittenAndIsShownAsZero)
{
    const QByteArray minusZero = QByteArray::fromHex("00000080");
    EXPECT_EQ(minusZero, bytesOf(Tag::FLOAT32, "-0"));
    EXPECT_EQ(QString::fromLatin1("0"), textOf(Tag::FLOAT32, minusZero));
}

TEST(TagValue, BytesBeyondTheValueAreNotLookedAt)
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

TEST(TagValue, AFloatsTextBringsBackItsBits)
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
