#include "api/valueDocument.h"

#include <gtest/gtest.h>

namespace {

Tag level()
{
    Tag tag;
    tag.name = QLatin1String("tank \"1\"");
    tag.station = 3;
    tag.area = QLatin1String("MW");
    tag.address = QLatin1String("100");
    tag.type = Tag::FLOAT32;
    tag.wordOrder = Tag::HIGH_WORD_FIRST;
    tag.access = Tag::READ_WRITE;
    return tag;
}

TagReading goodReading()
{
    TagReading reading;
    reading.bytes = QByteArray("\xAC\x41\x00\x00", 4); // 21.5 is 0x41AC0000
    reading.quality = GOOD;
    reading.time = 1700000000123;
    reading.changed = 1700000000001;
    return reading;
}

QByteArray changeText(const TagReading& before, const TagReading& now)
{
    JsonText json;
    appendChange(json, QLatin1String("plc"), level(), before, now);
    return json.document();
}

} // namespace

TEST(ValueDocument, TellsAllThatIsKnown)
{
    JsonText json;
    appendValue(json, QLatin1String("plc"), level(), goodReading(), true);
    EXPECT_EQ(R"({"link":"plc","tag":"tank \"1\"","station":3,"address":"MW100",)"
              R"("type":"float32:high","value":21.5,"quality":"good","time":1700000000123,)"
              R"("changed":1700000000001,"trouble":null,"writable":true})",
              json.document());
}

TEST(ValueDocument, KeepsValueAndTimeOfABadReading)
{
    TagReading reading = goodReading();
    reading.quality = BAD;
    reading.trouble = QLatin1String("station 3 is silent");
    JsonText json;
    appendValue(json, QLatin1String("plc"), level(), reading, false);
    EXPECT_TRUE(json.document().contains(
        R"("value":21.5,"quality":"bad","time":1700000000123,"changed":1700000000001,)"
        R"("trouble":"station 3 is silent","writable":false})"))
        << json.document().constData();
}

TEST(ValueDocument, HasNoValueAndNoTimeBeforeTheFirstAnswer)
{
    TagReading reading;
    reading.trouble = QLatin1String("not read yet");
    JsonText json;
    appendValue(json, QLatin1String("plc"), level(), reading, false);
    EXPECT_TRUE(json.document().contains(
        R"("value":null,"quality":"bad","time":null,"changed":null,"trouble":"not read yet")"))
        << json.document().constData();
}

TEST(ValueDocument, TellsOnlyTheFieldsThatChanged)
{
    TagReading later = goodReading();
    later.time = 1700000000223;
    EXPECT_EQ(R"({"link":"plc","tag":"tank \"1\"","time":1700000000223})",
              changeText(goodReading(), later));
    later.bytes = QByteArray("\xB0\x41\x00\x00", 4); // 22 is 0x41B00000
    later.changed = later.time;
    EXPECT_EQ(R"({"link":"plc","tag":"tank \"1\"","value":22,"time":1700000000223,)"
              R"("changed":1700000000223})",
              changeText(goodReading(), later));
}

TEST(ValueDocument, TellsWhenATroubleEnds)
{
    TagReading lost = goodReading();
    lost.quality = BAD;
    lost.trouble = QLatin1String("the link is lost");
    EXPECT_EQ(R"({"link":"plc","tag":"tank \"1\"","quality":"bad","trouble":"the link is lost"})",
              changeText(goodReading(), lost));
    EXPECT_EQ(R"({"link":"plc","tag":"tank \"1\"","quality":"good","trouble":null})",
              changeText(lost, goodReading()));
}

TEST(ValueDocument, IsWritableOnlyWithBothConsents)
{
    Tag tag = level();
    EXPECT_TRUE(isWritable(tag, true));
    EXPECT_FALSE(isWritable(tag, false));
    tag.access = Tag::READ_ONLY;
    EXPECT_FALSE(isWritable(tag, true));
}
