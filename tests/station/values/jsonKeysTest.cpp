#include "values/jsonKeys.h"

#include <gtest/gtest.h>

namespace {

std::string problemOf(const QByteArray& json)
{
    return jsonKeyProblem(json).toStdString();
}

} // namespace

TEST(JsonKeys, StandOnceInAnObject)
{
    EXPECT_EQ("", problemOf(R"({"a":1,"b":{"a":2},"c":[{"a":1},{"a":1}]})"));
    EXPECT_EQ("the key \"a\" stands twice", problemOf(R"({"a":1,"a":1})"));
    EXPECT_EQ("the key \"a\" stands twice", problemOf(R"({"a":{"b":1},"c":2,"a":[]})"));
    EXPECT_EQ("the key \"x\" stands twice", problemOf(R"([1,{"y":[{"x":1 , "x" :1}]}])"));
    EXPECT_EQ("the key \"\" stands twice", problemOf(R"({"":1,"":1})"));
}

TEST(JsonKeys, AreToldFromTexts)
{
    EXPECT_EQ("", problemOf(R"({"a":"a","b":"\"a\":1,","c":["a","a"]})"));
    EXPECT_EQ("", problemOf(R"({"a":"{\\","b":1})"));
    EXPECT_EQ("the key \"b\" stands twice", problemOf(R"({"a":"\\","b":1,"b":2})"));
}

TEST(JsonKeys, HaveOneSpelling)
{
    EXPECT_EQ("a key has an escape", problemOf(R"({"a":1,"\u0061":1})"));
}

TEST(JsonKeys, AreNotSoughtInTheDeep)
{
    EXPECT_EQ("", problemOf(QByteArray(16, '[') + QByteArray(16, ']')));
    EXPECT_EQ("it is nested too deeply", problemOf(QByteArray(17, '[')));
    EXPECT_EQ("it is nested too deeply", problemOf(QByteArray("{\"a\":").repeated(17)));
}

TEST(JsonKeys, SurviveWhatIsNoJson)
{
    for (const char* const json : {"", "\"", "\"\\", "}]}", "{\"a", "{\"a\\", "]{\"a\":1", "\\\"",
                                   "}{\"a\",\"a", ",,,\"a\""})
        problemOf(json);
    EXPECT_EQ("", problemOf("}]},\"a\",\"a\""));
}
