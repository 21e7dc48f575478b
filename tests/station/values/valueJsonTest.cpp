#include "values/valueJson.h"

#include "plan/tagValue.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

namespace {

Tag tagOf(Tag::Type type, Tag::WordOrder order = Tag::LOW_WORD_FIRST)
{
    Tag tag;
    tag.type = type;
    tag.wordOrder = order;
    tag.area = QLatin1String(type == Tag::BOOL ? "MX" : "MW");
    return tag;
}

QByteArray jsonOf(const Tag& tag, const char* text)
{
    return valueJson(tag, tagValueBytes(tag, QLatin1String(text)).value());
}

} // namespace

TEST(ValueJson, IsNullWithoutAValue)
{
    EXPECT_EQ("null", valueJson(tagOf(Tag::UINT16), QByteArray()));
    EXPECT_EQ("null", valueJson(tagOf(Tag::BOOL), QByteArray()));
    EXPECT_EQ("null", valueJson(tagOf(Tag::FLOAT32), QByteArray("\x01\x02", 2)));
}

TEST(ValueJson, IsABooleanForABit)
{
    EXPECT_EQ("true", valueJson(tagOf(Tag::BOOL), QByteArray(1, '\x01')));
    EXPECT_EQ("false", valueJson(tagOf(Tag::BOOL), QByteArray(1, '\0')));
}

TEST(ValueJson, IsANumberForEachTypeOfWords)
{
    EXPECT_EQ("-32768", jsonOf(tagOf(Tag::INT16), "-32768"));
    EXPECT_EQ("65535", jsonOf(tagOf(Tag::UINT16), "65535"));
    EXPECT_EQ("-2147483648", jsonOf(tagOf(Tag::INT32), "-2147483648"));
    EXPECT_EQ("4294967295", jsonOf(tagOf(Tag::UINT32, Tag::HIGH_WORD_FIRST), "4294967295"));
    EXPECT_EQ("21.5", jsonOf(tagOf(Tag::FLOAT32), "21.5"));
    EXPECT_EQ("0", jsonOf(tagOf(Tag::FLOAT32), "-0"));
}

TEST(ValueJson, IsDecimalAlsoForATagWithHexadecimalOrBinaryTexts)
{
    Tag tag = tagOf(Tag::UINT16);
    tag.format = Tag::HEXADECIMAL;
    EXPECT_EQ("255", valueJson(tag, QByteArray("\xFF\x00", 2)));
    tag.format = Tag::BINARY;
    EXPECT_EQ("5", valueJson(tag, QByteArray("\x05\x00", 2)));
}

TEST(ValueJson, IsATextForWhatJsonHasNoNumberFor)
{
    EXPECT_EQ("\"nan\"", jsonOf(tagOf(Tag::FLOAT32), "nan"));
    EXPECT_EQ("\"inf\"", jsonOf(tagOf(Tag::FLOAT32), "inf"));
    EXPECT_EQ("\"-inf\"", jsonOf(tagOf(Tag::FLOAT32, Tag::HIGH_WORD_FIRST), "-inf"));
}

TEST(ValueJson, IsReadBackByAJsonReaderAsTheSameFloat)
{
    for (const char* text : {"3.4028235e+38", "1.17549435e-38", "1e-45", "0.1", "-16777216"}) {
        const Tag tag = tagOf(Tag::FLOAT32);
        const QJsonDocument read = QJsonDocument::fromJson('[' + jsonOf(tag, text) + ']');
        ASSERT_TRUE(read.isArray()) << text;
        const double number = read.array().at(0).toDouble(-1);
        EXPECT_EQ(tagValueBytes(tag, QLatin1String(text)),
                  tagValueBytes(tag, QString::number(number, 'g', 9)))
            << text;
    }
}

TEST(ValueJson, OfANumberIsThatOfItsBytes)
{
    const std::pair<Tag::Type, const char*> values[] = {{Tag::BOOL, "0"},
                                                        {Tag::BOOL, "1"},
                                                        {Tag::INT16, "-32768"},
                                                        {Tag::UINT16, "65535"},
                                                        {Tag::INT32, "-2147483648"},
                                                        {Tag::UINT32, "4294967295"},
                                                        {Tag::FLOAT32, "0.1"},
                                                        {Tag::FLOAT32, "-1.5"},
                                                        {Tag::FLOAT32, "3.40282347e+38"},
                                                        {Tag::FLOAT32, "nan"},
                                                        {Tag::FLOAT32, "inf"},
                                                        {Tag::FLOAT32, "-inf"}};
    for (const auto& [type, text] : values) {
        const Tag tag = tagOf(type, Tag::HIGH_WORD_FIRST);
        const QByteArray bytes = tagValueBytes(tag, QLatin1String(text)).value_or(QByteArray());
        EXPECT_EQ(valueJson(tag, bytes), valueJson(tag, tagValueNumber(tag, bytes).value()))
            << text;
    }
    EXPECT_EQ("0.1", valueJson(tagOf(Tag::FLOAT32), double(0.1f)));
    EXPECT_EQ("4294967295", valueJson(tagOf(Tag::UINT32), 4294967295.0));
}

TEST(ValueJson, IsNullForANumberOfAnotherType)
{
    for (const Tag::Type type : {Tag::INT16, Tag::UINT32, Tag::BOOL}) {
        EXPECT_EQ("null", valueJson(tagOf(type), 1e300));
        EXPECT_EQ("null", valueJson(tagOf(type), std::numeric_limits<double>::infinity()));
        EXPECT_EQ("null", valueJson(tagOf(type), std::numeric_limits<double>::quiet_NaN()));
    }
    EXPECT_EQ("null", valueJson(tagOf(Tag::FLOAT32), -1e39));
}
