#include "values/writtenValue.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace {

Tag tagOf(Tag::Type type)
{
    Tag tag;
    tag.area = QLatin1String(type == Tag::BOOL ? "MX" : "MW");
    tag.type = type;
    return tag;
}

std::variant<QByteArray, UnfitValue> written(const Tag& tag, const QByteArray& json)
{
    const QJsonDocument document = QJsonDocument::fromJson('[' + json + ']');
    EXPECT_EQ(1, document.array().size()) << json.constData();
    return writtenBytes(tag, document.array().at(0));
}

/// In hexadecimal; the problem when the value does not fit.
std::string writtenText(const Tag& tag, const QByteArray& json)
{
    const std::variant<QByteArray, UnfitValue> bytes = written(tag, json);
    if (const auto* const unfit = std::get_if<UnfitValue>(&bytes))
        return unfit->problem.toStdString();
    return std::get<QByteArray>(bytes).toHex().toStdString();
}

std::string writtenText(Tag::Type type, const QByteArray& json)
{
    return writtenText(tagOf(type), json);
}

} // namespace

TEST(WrittenValue, OfABitIsTrueFalseOneOrZero)
{
    EXPECT_EQ("01", writtenText(Tag::BOOL, "true"));
    EXPECT_EQ("00", writtenText(Tag::BOOL, "false"));
    EXPECT_EQ("01", writtenText(Tag::BOOL, "1"));
    EXPECT_EQ("00", writtenText(Tag::BOOL, "0"));
    for (const char* const json : {"2", "-1", "0.5", "\"1\"", "null", "[1]", "{}", "256"})
        EXPECT_NE(std::string::npos,
                  writtenText(Tag::BOOL, json).find("does not fit bool: 0, 1, true or false"))
            << json;
}

TEST(WrittenValue, OfAnIntegerIsAWholeNumberOfItsRange)
{
    EXPECT_EQ("0080", writtenText(Tag::INT16, "-32768"));
    EXPECT_EQ("ff7f", writtenText(Tag::INT16, "32767"));
    EXPECT_EQ("ffff", writtenText(Tag::UINT16, "65535"));
    EXPECT_EQ("e803", writtenText(Tag::UINT16, "1e3"));
    EXPECT_EQ("0500", writtenText(Tag::UINT16, "5.0"));
    EXPECT_EQ("0000", writtenText(Tag::UINT16, "-0"));
    EXPECT_EQ("00000080", writtenText(Tag::INT32, "-2147483648"));
    EXPECT_EQ("ffffff7f", writtenText(Tag::INT32, "2147483647"));
    EXPECT_EQ("ffffffff", writtenText(Tag::UINT32, "4294967295"));
}

TEST(WrittenValue, NamesTheRangeThatANumberIsBeyond)
{
    EXPECT_EQ("65536 does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "65536"));
    EXPECT_EQ("-1 does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "-1"));
    EXPECT_EQ("32768 does not fit int16: -32768 to 32767", writtenText(Tag::INT16, "32768"));
    EXPECT_EQ("4294967296 does not fit uint32: 0 to 4294967295",
              writtenText(Tag::UINT32, "4294967296"));
    EXPECT_EQ("1e+300 does not fit int32: -2147483648 to 2147483647",
              writtenText(Tag::INT32, "1e300"));
    EXPECT_EQ("5.5 does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "5.5"));
}

// A number that stands for one beyond a double is not told with its own digits.
TEST(WrittenValue, NamesTheRangeForANumberBeyondEveryType)
{
    EXPECT_EQ("a number of this size does not fit uint32: 0 to 4294967295",
              writtenText(Tag::UINT32, "-1e308"));
    EXPECT_EQ(
        0u, writtenText(Tag::FLOAT32, "1e308").find("a number of this size does not fit float32"));
}

TEST(WrittenValue, IsNeverATextOrABooleanForANumber)
{
    EXPECT_EQ("a text does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "\"5\""));
    EXPECT_EQ("true does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "true"));
    EXPECT_EQ("null does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "null"));
    EXPECT_EQ("an array does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "[5]"));
    EXPECT_EQ("an object does not fit uint16: 0 to 65535", writtenText(Tag::UINT16, "{}"));
    for (const char* const json : {"\"nan\"", "\"inf\"", "\"1.5\"", "null", "false"})
        EXPECT_NE(std::string::npos,
                  writtenText(Tag::FLOAT32, json).find(" does not fit float32: -3.40282"))
            << json;
}

TEST(WrittenValue, OfAHexadecimalTagIsANumberLikeAnyOther)
{
    Tag tag = tagOf(Tag::UINT16);
    tag.format = Tag::HEXADECIMAL;
    EXPECT_EQ("ff00", writtenText(tag, "255"));
}

// IEEE 754: 21.5 is 0x41AC0000, 0.1 is nearest to 0x3DCCCCCD, the largest float is 0x7F7FFFFF.
TEST(WrittenValue, OfAFloatIsTheNearestFloat)
{
    EXPECT_EQ("0000ac41", writtenText(Tag::FLOAT32, "21.5"));
    EXPECT_EQ("cdcccc3d", writtenText(Tag::FLOAT32, "0.1"));
    EXPECT_EQ("0000803f", writtenText(Tag::FLOAT32, "1"));
    EXPECT_EQ("00000000", writtenText(Tag::FLOAT32, "1e-60"));
    EXPECT_EQ("00000000", writtenText(Tag::FLOAT32, "-1e-60"));
    EXPECT_EQ("00000000", writtenText(Tag::FLOAT32, "-0.0"));
    EXPECT_EQ("01000000", writtenText(Tag::FLOAT32, "1e-45"));
    EXPECT_EQ("01000080", writtenText(Tag::FLOAT32, "-1e-45"));
    EXPECT_EQ("ffff7f7f", writtenText(Tag::FLOAT32, "3.4028234663852886e38"));
    Tag highFirst = tagOf(Tag::FLOAT32);
    highFirst.wordOrder = Tag::HIGH_WORD_FIRST;
    EXPECT_EQ("ac410000", writtenText(highFirst, "21.5"));
}

// Half way between the largest float and 2^128 lies 340282356779733661637539395458142568448.
TEST(WrittenValue, OfAFloatEndsWhereTheNearestFloatIsInfinite)
{
    EXPECT_EQ("ffff7f7f", writtenText(Tag::FLOAT32, "3.4028235677973362e38"));
    EXPECT_EQ("ffff7fff", writtenText(Tag::FLOAT32, "-3.4028235677973362e38"));
    for (const char* const json : {"3.4028235677973366e38", "-3.4028235677973366e38", "1e39"})
        EXPECT_NE(std::string::npos, writtenText(Tag::FLOAT32, json).find("does not fit float32"))
            << json;
}
