#include "output/changeLines.h"

#include <gtest/gtest.h>

namespace {

enum { TIME = 12345678 };

WatchRow level()
{
    WatchRow row;
    row.name = QString::fromLatin1("level");
    row.address = QString::fromLatin1("MW100");
    row.value = QString::fromLatin1("17");
    row.good = true;
    return row;
}

WatchRow badLevel(const char* trouble)
{
    WatchRow row = level();
    row.good = false;
    row.trouble = QString::fromLatin1(trouble);
    return row;
}

std::string jsonOfValue(const char* value)
{
    WatchRow row = level();
    row.value = QString::fromLatin1(value);
    const std::string json = changeJson(row, TIME).toStdString();
    const std::size_t begin = json.find("\"value\":") + 8;
    return json.substr(begin, json.find('}') - begin);
}

} // namespace

TEST(ChangeLines, ChangeHasTimeNameAddressAndValue)
{
    EXPECT_EQ("12.345678  level  MW100 = 17", changeLine(level(), TIME).toStdString());
}

TEST(ChangeLines, BadTagHasItsReason)
{
    EXPECT_EQ("12.345678  level  MW100 bad: station 1 does not answer",
              changeLine(badLevel("station 1 does not answer"), TIME).toStdString());
}

TEST(ChangeLines, BadTagWithoutReasonSaysBad)
{
    EXPECT_EQ("12.345678  level  MW100 bad", changeLine(badLevel(""), TIME).toStdString());
}

TEST(ChangeLines, FractionOfASecondKeepsItsZeros)
{
    EXPECT_EQ("3.000070  level  MW100 = 17", changeLine(level(), 3000070).toStdString());
    EXPECT_EQ("0.000000  level  MW100 = 17", changeLine(level(), 0).toStdString());
}

TEST(ChangeLines, ControlCharactersCannotBreakALine)
{
    WatchRow row = level();
    row.name = QString::fromLatin1("le\nvel");
    row.value = QString::fromLatin1("1\x1b[2J");
    EXPECT_EQ("12.345678  le?vel  MW100 = 1?[2J", changeLine(row, TIME).toStdString());
}

TEST(ChangeLines, JsonOfAChangeIsACompactObject)
{
    EXPECT_EQ("{\"address\":\"MW100\",\"good\":true,\"name\":\"level\",\"timeS\":12.345678,"
              "\"trouble\":\"\",\"value\":17}",
              changeJson(level(), TIME).toStdString());
}

TEST(ChangeLines, JsonOfABadTagHasReasonAndValue)
{
    EXPECT_EQ("{\"address\":\"MW100\",\"good\":false,\"name\":\"level\",\"timeS\":12.345678,"
              "\"trouble\":\"no answer\",\"value\":17}",
              changeJson(badLevel("no answer"), TIME).toStdString());
}

TEST(ChangeLines, JsonValueIsANumberWherePossible)
{
    const struct
    {
        const char* value;
        const char* json;
    } rows[] = {{"-1.5", "-1.5"},    {"4294967295", "4294967295"}, {"0.1", "0.1"},
                {"nan", "\"nan\""},  {"-inf", "\"-inf\""},         {"", "null"},
                {"open", "\"open\""}};
    for (const auto& row : rows)
        EXPECT_EQ(row.json, jsonOfValue(row.value)) << row.value;
}

TEST(ChangeLines, LineBreakInANameIsEscapedInJson)
{
    WatchRow row = level();
    row.name = QString::fromLatin1("le\nvel");
    const std::string json = changeJson(row, TIME).toStdString();
    EXPECT_NE(std::string::npos, json.find("\"name\":\"le\\nvel\"")) << json;
}

TEST(ChangeLines, EventHasTimeAndText)
{
    EXPECT_EQ("12.345678  link lost",
              eventLine(QString::fromLatin1("link lost"), TIME).toStdString());
}

TEST(ChangeLines, ControlCharactersCannotBreakAnEvent)
{
    EXPECT_EQ("12.345678  link?lost",
              eventLine(QString::fromLatin1("link\nlost"), TIME).toStdString());
}

TEST(ChangeLines, JsonOfAnEventIsACompactObject)
{
    EXPECT_EQ("{\"event\":\"link back\",\"timeS\":12.345678}",
              eventJson(QString::fromLatin1("link back"), TIME).toStdString());
}
