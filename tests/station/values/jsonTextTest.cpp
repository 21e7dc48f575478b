#include "values/jsonText.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <limits>

namespace {

QString backFromJson(const QString& text)
{
    JsonText json;
    json.beginArray().text(text).endArray();
    return QJsonDocument::fromJson(json.document()).array().at(0).toString();
}

QByteArray numberText(double value)
{
    return JsonText().number(value).document();
}

} // namespace

TEST(JsonText, PutCommasBetweenValuesOnly)
{
    JsonText json;
    json.beginObject().key("a").integer(-1).key("b").beginArray().endArray();
    json.key("c").beginArray().beginObject().endObject().boolean(true).null().endArray();
    json.key("d").word("up").key("e").raw("[1,2]").endObject();
    EXPECT_EQ(R"({"a":-1,"b":[],"c":[{},true,null],"d":"up","e":[1,2]})", json.document());
}

TEST(JsonText, EscapeWhatWouldEndATextOrALine)
{
    JsonText json;
    json.text(QString::fromLatin1("a\"b\\c\nd\x1f"));
    EXPECT_EQ(R"("a\"b\\c\u000ad\u001f")", json.document());
}

TEST(JsonText, GiveEachCharacterBackFromAParser)
{
    QString all;
    for (int code = 0; code < 0x300; ++code)
        all += QChar(code);
    all += QString::fromUtf8("\xE2\x80\xA8\xF0\x9F\x94\xA7");
    EXPECT_EQ(all, backFromJson(all));
}

TEST(JsonText, WriteHalfASurrogatePairAsValidUtf8)
{
    EXPECT_EQ(3, backFromJson(QString(QLatin1String("a%1b")).arg(QChar(0xD800))).size());
}

TEST(JsonText, WriteNumbersWithTheFewestDigits)
{
    EXPECT_EQ("0.1", numberText(0.1));
    EXPECT_EQ("21.5", numberText(21.5));
    EXPECT_EQ("4294967295", numberText(4294967295.0));
    EXPECT_EQ("-3", numberText(-3));
    EXPECT_EQ("0", numberText(0));
}

TEST(JsonText, GiveEachNumberBackFromAParser)
{
    using Limits = std::numeric_limits<double>;
    for (const double value : {Limits::max(), Limits::lowest(), Limits::denorm_min(), 1.0 / 3}) {
        JsonText json;
        json.beginArray().number(value).endArray();
        EXPECT_EQ(value, QJsonDocument::fromJson(json.document()).array().at(0).toDouble());
    }
}

TEST(JsonText, WriteTextsForWhatIsNoNumber)
{
    EXPECT_EQ("\"nan\"", numberText(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ("\"inf\"", numberText(std::numeric_limits<double>::infinity()));
    EXPECT_EQ("\"-inf\"", numberText(-std::numeric_limits<double>::infinity()));
}

TEST(JsonText, WriteTheEndsOfTheIntegers)
{
    JsonText json;
    json.beginArray().integer(std::numeric_limits<qint64>::min());
    json.integer(std::numeric_limits<qint64>::max()).endArray();
    EXPECT_EQ("[-9223372036854775808,9223372036854775807]", json.document());
}
