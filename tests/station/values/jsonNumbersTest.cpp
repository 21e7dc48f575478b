#include "values/jsonNumbers.h"

#include <gtest/gtest.h>

// RFC 8259, 6.

namespace {

std::string problemOf(const QByteArray& json)
{
    return jsonNumbersOf(json).problem.toStdString();
}

std::string readableOf(const QByteArray& json)
{
    return jsonNumbersOf(json).json.toStdString();
}

} // namespace

TEST(JsonNumbers, HaveDigitsBeforeAndBehindThePoint)
{
    for (const char* const number :
         {".5",  "1.",    "-.5",   "-1.",   "1.e3", "+1",  "01",   "-01",
          "00",  "-",     "+",     ".",     "1e",   "1e+", "1E-",  "1.5e",
          "--1", "1.2.3", "1e1e1", "1e1.5", "1-1",  "-e5", "1e5.", "9+"}) {
        EXPECT_EQ(std::string("the number ") + number + " is not JSON",
                  problemOf(QByteArray("[1,") + number + ']'));
    }
}

TEST(JsonNumbers, OfJsonStayAsTheyAre)
{
    for (const char* const number :
         {"0", "-0", "5", "-17", "0.5", "-0.05", "1e3", "1E3", "1e+3", "1e-3", "0e0", "12.50e-07",
          "1.7976931348623157e308", "9007199254740993", "5e-324"}) {
        const QByteArray json = QByteArray("{\"a\":[") + number + ",true]}";
        EXPECT_EQ("", problemOf(json));
        EXPECT_EQ(json.toStdString(), readableOf(json));
    }
}

TEST(JsonNumbers, BeyondADoubleStayAsLargeAsTheyCan)
{
    EXPECT_EQ("[1e308]", readableOf("[1e400]"));
    EXPECT_EQ("[1e308]", readableOf("[2e308]"));
    EXPECT_EQ("[-1e308]", readableOf("[-1E999]"));
    EXPECT_EQ("[1e308         ,5]", readableOf("[1000000.0e1000,5]"));
    EXPECT_EQ("[1e308" + std::string(402, ' ') + "]",
              readableOf("[0." + QByteArray(400, '0') + "1e999]"));
    EXPECT_EQ("[1e308                    ]", readableOf("[1e+9999999999999999999999]"));
    EXPECT_EQ("[1e308" + std::string(395, ' ') + "]", readableOf('[' + QByteArray(400, '9') + ']'));
}

TEST(JsonNumbers, BelowTheLeastDoubleAreZero)
{
    EXPECT_EQ("[0     ,1]", readableOf("[1e-400,1]"));
    EXPECT_EQ("[-0       ]", readableOf("[-0.1e-400]"));
    EXPECT_EQ("[0" + std::string(408, ' ') + "]",
              readableOf("[0." + QByteArray(400, '0') + "1e-9999]"));
    EXPECT_EQ("[0" + std::string(405, ' ') + "]",
              readableOf("[1" + QByteArray(400, '0') + "e-800]"));
    EXPECT_EQ("[0                        ]", readableOf("[1e-9999999999999999999999]"));
}

TEST(JsonNumbers, AreNotSoughtInTexts)
{
    for (const char* const json :
         {"{\".5\":\"1.\"}", "[\"\\\"01\",1]", "[\"1e400\"]", "[\"\\\\\",true,false,null]"}) {
        EXPECT_EQ("", problemOf(json));
        EXPECT_EQ(json, readableOf(json));
    }
    EXPECT_EQ("the number 01 is not JSON", problemOf("[\"\\\\\",01]"));
}

TEST(JsonNumbers, SurviveWhatIsNoJson)
{
    for (const char* const json : {"", "\"", "\"\\", "\"1", "1\"", "e5", "}1]", "truE5"})
        EXPECT_EQ("", problemOf(json)) << json;
    EXPECT_EQ("the number " + std::string(40, '0') + " is not JSON",
              problemOf(QByteArray(60000, '0')));
}

TEST(JsonNumbers, AreWholeWithoutAFractionAndWhereAllReadersAgree)
{
    EXPECT_EQ(5, wholeNumber(QJsonValue(5.0)));
    EXPECT_EQ(-9007199254740991, wholeNumber(QJsonValue(-9007199254740991.0)));
    for (const QJsonValue& none :
         {QJsonValue(5.5), QJsonValue(9007199254740992.0), QJsonValue(BEYOND_DOUBLE),
          QJsonValue(true), QJsonValue(QLatin1String("5")), QJsonValue()})
        EXPECT_EQ(std::nullopt, wholeNumber(none));
}
