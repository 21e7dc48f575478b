#include "values/linkValues.h"

#include "values/testClock.h"

#include <gtest/gtest.h>

namespace {

std::vector<Tag> oneWord()
{
    Tag tag;
    tag.name = QLatin1String("level");
    tag.area = QLatin1String("MW");
    tag.address = QLatin1String("100");
    return {tag};
}

} // namespace

TEST(LinkValues, KeepValueAndTimeOfAnAnswer)
{
    TestClock clock;
    LinkValues values(QLatin1String("plc"), oneWord(), clock);
    EXPECT_EQ(BAD, values.reading(0).quality);
    values.tagRead(0, QByteArray("\x07\x00", 2), 0);
    const TagReading reading = values.reading(0);
    EXPECT_EQ(GOOD, reading.quality);
    EXPECT_EQ(QByteArray("\x07\x00", 2), reading.bytes);
    EXPECT_EQ(clock.wall(), reading.time);
}
