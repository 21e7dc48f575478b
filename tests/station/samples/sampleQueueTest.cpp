#include "samples/sampleQueue.h"

#include "values/testClock.h"

#include <gtest/gtest.h>

namespace {

Sample row(quint64 number, const char* tag, double value = 0)
{
    Sample sample;
    sample.link = QLatin1String("plc");
    sample.tag = QLatin1String(tag);
    sample.number = number;
    sample.value = value;
    sample.hasValue = true;
    sample.quality = GOOD;
    return sample;
}

/// Such as "1 a, gap 4, plc-2 silent".
std::string textOf(const std::vector<Sample>& samples)
{
    QStringList words;
    for (const Sample& sample : samples) {
        if (sample.kind == Sample::GAP)
            words << QLatin1String("gap ") + QString::number(sample.number);
        else if (sample.kind == Sample::READING)
            words << QString::number(sample.number) + QLatin1Char(' ') + sample.tag;
        else
            words << sample.link + QLatin1Char('-') + QString::number(sample.station) +
                         QLatin1String(sample.answers ? " answers" : " silent");
    }
    return words.join(QLatin1String(", ")).toStdString();
}

class SampleQueueTest : public testing::Test
{
protected:
    enum { MOST = 3 };

    void put(const std::vector<Sample>& samples)
    {
        for (const Sample& sample : samples)
            queue.rowNoted(sample);
    }

    /// A link with a tag in each of two stations.
    std::shared_ptr<LinkValues> link(const char* name = "plc")
    {
        std::vector<Tag> tags(2);
        tags[0].station = 1;
        tags[1].station = 2;
        auto values = std::make_shared<LinkValues>(QLatin1String(name), tags, clock);
        values->addListener(&queue);
        return values;
    }

    TestClock clock;
    int wakes = 0;
    SampleQueue queue{[this] { ++wakes; }, MOST};
};

} // namespace

TEST_F(SampleQueueTest, GivesWhatCameInItsOrder)
{
    put({row(1, "a", 5), row(0, "b"), row(2, "a")});
    const std::vector<Sample> taken = queue.take();
    EXPECT_EQ("1 a, 0 b, 2 a", textOf(taken));
    EXPECT_EQ(5, taken[0].value);
    EXPECT_TRUE(queue.take().empty());
}

TEST_F(SampleQueueTest, WakesOnceUntilItIsEmptied)
{
    put({row(1, "a"), row(2, "a"), row(3, "a"), row(4, "a")});
    EXPECT_EQ(1, wakes);
    queue.take();
    put({row(5, "a")});
    EXPECT_EQ(2, wakes);
}

TEST_F(SampleQueueTest, KeepsTheNewestOfEachTagWhenItIsFullAndTellsTheGaps)
{
    put({row(1, "a"), row(2, "a"), row(3, "a")});
    put({row(4, "a"), row(5, "b"), row(6, "a"), row(7, "a"), row(8, "c")});
    EXPECT_EQ("1 a, 2 a, 3 a, gap 4, 5 b, gap 6, 7 a, 8 c", textOf(queue.take()));
    put({row(9, "a")});
    EXPECT_EQ("9 a", textOf(queue.take()));
}

TEST_F(SampleQueueTest, TellsAGapBehindTheLastRowWhenItsTagHadNoRoomLater)
{
    put({row(1, "a"), row(2, "a"), row(3, "a"), row(4, "b"), row(5, "a"), row(0, "a")});
    EXPECT_EQ("1 a, 2 a, 3 a, 4 b, 0 a, gap 5", textOf(queue.take()));
}

TEST_F(SampleQueueTest, TellsNoGapWhenOnlyUnkeptRowsAreLate)
{
    put({row(1, "a"), row(2, "a"), row(3, "a"), row(0, "a"), row(0, "a")});
    EXPECT_EQ("1 a, 2 a, 3 a, 0 a", textOf(queue.take()));
}

TEST_F(SampleQueueTest, TellsAStationThatAnswersOrFallsSilentOnce)
{
    const auto values = link();
    values->linkChanged(true, QString(), 0);
    EXPECT_TRUE(queue.take().empty());
    clock.passMs(5000);
    values->stationChanged(2, true, QString(), 0);
    values->stationChanged(2, true, QString(), 0);
    const std::vector<Sample> taken = queue.take();
    EXPECT_EQ("plc-2 answers", textOf(taken));
    EXPECT_EQ(clock.wall(), taken[0].time);
    values->stationChanged(2, false, QString(), 0);
    EXPECT_EQ("plc-2 silent", textOf(queue.take()));
}

TEST_F(SampleQueueTest, TellsAtALossEachStationThatAnswered)
{
    const auto values = link();
    values->linkChanged(true, QString(), 0);
    values->stationChanged(1, true, QString(), 0);
    values->stationChanged(2, true, QString(), 0);
    queue.take();
    values->linkChanged(false, QLatin1String("unplugged"), 0);
    EXPECT_EQ("plc-1 silent, plc-2 silent", textOf(queue.take()));
    values->linkChanged(false, QLatin1String("still unplugged"), 0);
    EXPECT_TRUE(queue.take().empty());
}

TEST_F(SampleQueueTest, TellsALinkThatWasReplacedWhileItsStationsAnswered)
{
    link()->stationChanged(1, true, QString(), 0);
    queue.take();
    link()->linkChanged(true, QString(), 0);
    EXPECT_EQ("plc-1 silent", textOf(queue.take()));
}

TEST_F(SampleQueueTest, KeepsTheStationsOfLinksApart)
{
    link("a")->stationChanged(1, true, QString(), 0);
    link("b")->stationChanged(1, true, QString(), 0);
    EXPECT_EQ("a-1 answers, b-1 answers", textOf(queue.take()));
}

TEST_F(SampleQueueTest, LosesNoStandingWhenItIsFull)
{
    const auto values = link();
    values->linkChanged(true, QString(), 0);
    put({row(1, "a"), row(2, "a"), row(3, "a"), row(4, "a")});
    for (int i = 0; i < 100; ++i)
        values->stationChanged(1, i % 2 == 0, QString(), 0);
    put({row(5, "a")});
    values->stationChanged(2, true, QString(), 0);
    EXPECT_EQ("1 a, 2 a, 3 a, plc-1 silent, gap 4, 5 a, plc-2 answers", textOf(queue.take()));
}
