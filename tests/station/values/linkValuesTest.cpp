#include "valuesFixture.h"

// Which value, quality, time and trouble a tag shows. Each table above a test says what is true at
// which time; times are those since the first answer.

//  time      never   0          2.000 s    2.001 s   an answer
//  fast      bad     good       good       stale     good
TEST_F(LinkValuesTest, FastTagIsStaleAfterTwoSecondsWithoutAnAnswer)
{
    EXPECT_EQ(BAD, quality(FAST));
    EXPECT_EQ("not read yet", trouble(FAST));
    EXPECT_EQ(QByteArray(), values.reading(FAST).bytes);
    read(FAST, 7);
    EXPECT_EQ(GOOD, quality(FAST));
    EXPECT_EQ("", trouble(FAST));
    clock.passMs(2000);
    EXPECT_EQ(GOOD, quality(FAST));
    clock.passMs(1);
    EXPECT_EQ(STALE, quality(FAST));
    EXPECT_EQ("no answer for more than 2s", trouble(FAST));
    EXPECT_EQ(bytesOf(7), values.reading(FAST).bytes);
    EXPECT_EQ(wallAtStart, values.reading(FAST).time);
    EXPECT_EQ(wallAtStart + 2000, values.reading(FAST).staleSince);
    read(FAST, 7);
    EXPECT_EQ(GOOD, quality(FAST));
    EXPECT_EQ(wallAtStart + 2001, values.reading(FAST).time);
    EXPECT_EQ(wallAtStart, values.reading(FAST).changed);
}

//  time              0      30.000 s   30.001 s   a year
//  slow (10 s)       good   good       stale      stale
//  once              good   good       good       good
TEST_F(LinkValuesTest, SlowTagHasThreeTurnsAndATagReadOnceNoLimit)
{
    read(SLOW, 1);
    read(ONCE, 2);
    clock.passMs(30000);
    EXPECT_EQ(GOOD, quality(SLOW));
    clock.passMs(1);
    EXPECT_EQ(STALE, quality(SLOW));
    EXPECT_EQ("no answer for more than 30s", trouble(SLOW));
    clock.passMs(365LL * 24 * 3600 * 1000);
    EXPECT_EQ(GOOD, quality(ONCE));
}

TEST_F(LinkValuesTest, SomebodyWhoSetsTheClockMakesNoValueOldOrNew)
{
    read(FAST, 1);
    clock.setWall(wallAtStart - 3600000);
    EXPECT_EQ(GOOD, quality(FAST));
    clock.passMs(2001);
    clock.setWall(wallAtStart);
    EXPECT_EQ(STALE, quality(FAST));
}

//  time       0        1 s     1 s ......... 11 s      11 s
//  process    reads    asks    stopped                 finds the answer
//  bytes                         come
//  shown      good                                     stale, with the time of the last look
TEST_F(LinkValuesTest, BytesThatAStoppedProcessFindsAreAsOldAsItsLastLook)
{
    read(FAST, 1);
    clock.passMs(1000);
    const qint64 looked = linkNow();
    clock.passMs(10000);
    answer(FAST, 2, looked);
    EXPECT_EQ(STALE, quality(FAST));
    EXPECT_EQ(bytesOf(2), values.reading(FAST).bytes);
    EXPECT_EQ(wallAtStart + 1000, values.reading(FAST).time);
    read(FAST, 2);
    EXPECT_EQ(GOOD, quality(FAST));
    EXPECT_EQ(wallAtStart + 11000, values.reading(FAST).time);
}

TEST_F(LinkValuesTest, AnswerThatCameTooLateIsAsOldAsItsRequest)
{
    read(FAST, 1);
    clock.passMs(1000);
    const qint64 asked = linkNow();
    clock.passMs(3000);
    values.bytesCame(linkNow(), linkNow());
    values.tagRead(FAST, bytesOf(2), asked);
    EXPECT_EQ(STALE, quality(FAST));
    EXPECT_EQ(bytesOf(2), values.reading(FAST).bytes);
    EXPECT_EQ(wallAtStart + 1000, values.reading(FAST).time);
}

// The thread takes its time, is stopped, and tells it 10 s later: the clocks of thread and station
// then seem to differ by 10 s more than they do.
TEST_F(LinkValuesTest, StopBetweenTheThreadsClockAndItsCallDoesNotMakeBytesYoung)
{
    const qint64 looked = linkNow();
    const qint64 cameAt = linkNow();
    clock.passMs(10000);
    values.bytesCame(looked, cameAt);
    values.tagRead(FAST, bytesOf(1), cameAt);
    EXPECT_EQ(STALE, quality(FAST));
}

TEST_F(LinkValuesTest, LostLinkMakesEveryTagBadAtOnceAndKeepsItsValueAndTime)
{
    read(FAST, 1);
    read(ONCE, 2);
    clock.passMs(500);
    values.linkChanged(false, QLatin1String("unplugged"), linkNow());
    for (const int tag : {FAST, SLOW, ONCE}) {
        EXPECT_EQ(BAD, quality(tag));
        EXPECT_EQ("link lost: unplugged", trouble(tag));
    }
    EXPECT_EQ(bytesOf(1), values.reading(FAST).bytes);
    EXPECT_EQ(wallAtStart, values.reading(FAST).time);
    EXPECT_EQ(QByteArray(), values.reading(SLOW).bytes);
    values.linkChanged(true, QString(), linkNow());
    EXPECT_EQ(BAD, quality(FAST)); // until it is read
    read(FAST, 1);
    EXPECT_EQ(GOOD, quality(FAST));
}

TEST_F(LinkValuesTest, TagsOfASilentStationAndRefusedTagsAreBadWithTheReason)
{
    read(FAST, 1);
    read(ONCE, 2);
    values.tagsBad({ONCE}, QLatin1String("station 2 does not answer"), linkNow());
    EXPECT_EQ("station 2 does not answer", trouble(ONCE));
    EXPECT_EQ(BAD, quality(ONCE));
    EXPECT_EQ(GOOD, quality(FAST));
    clock.passMs(60000); // bad stays bad, with its reason, however old it is
    EXPECT_EQ("station 2 does not answer", trouble(ONCE));
    EXPECT_EQ(bytesOf(2), values.reading(ONCE).bytes);
}

//  time         0      a read is given up    2.001 s          an answer
//  fast         good   good                  stale: reason    good
TEST_F(LinkValuesTest, TagWhoseReadIsGivenUpForNoiseStaysGoodUntilItIsOld)
{
    const QString noise = QLatin1String("station 1 gave no usable answer");
    read(FAST, 1);
    values.tagsUnanswered({FAST, SLOW}, noise, linkNow());
    EXPECT_EQ(GOOD, quality(FAST));
    EXPECT_EQ(BAD, quality(SLOW)); // it was never answered
    EXPECT_EQ(noise.toStdString(), trouble(SLOW));
    clock.passMs(2001);
    EXPECT_EQ(STALE, quality(FAST));
    EXPECT_EQ(noise.toStdString(), trouble(FAST));
    read(FAST, 1);
    clock.passMs(2001);
    EXPECT_EQ("no answer for more than 2s", trouble(FAST));
}

//  driver's cache   1   2 (to be written)
//  PLC              1                       2
//  told             1                       echo
//  shown            1   1                   2, when jobEnded() runs
TEST_F(LinkValuesTest, WrittenValueIsShownWithItsEchoAndNotBefore)
{
    read(FAST, 1);
    TagReading atTheEnd;
    values.setJobEnded([&](const JobEnd&) { atTheEnd = values.reading(FAST); }, nullptr);
    clock.passMs(50);
    values.tagValue(FAST, bytesOf(2), linkNow());
    values.tagShown(FAST, bytesOf(2), linkNow());
    EXPECT_EQ(bytesOf(1), values.reading(FAST).bytes);
    EXPECT_EQ(wallAtStart, values.reading(FAST).time);
    clock.passMs(50);
    read(FAST, 2);
    values.jobEnded(JobEnd());
    EXPECT_EQ(bytesOf(2), atTheEnd.bytes);
    EXPECT_EQ(wallAtStart + 100, atTheEnd.time);
}
