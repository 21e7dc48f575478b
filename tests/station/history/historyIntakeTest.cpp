// Which rows are told to a listener, and their numbers.
#include "historyRoom.h"

#include "history/sampleIntake.h"

#include <gtest/gtest.h>

#include <future>

namespace {

class NotingRows : public RowListener
{
public:
    void rowNoted(const Sample& reading) override
    {
        rows.push_back(reading);
    }

    /// Such as "1 tag0 5 good"; "none" without a value. They are forgotten.
    std::string take()
    {
        QStringList words;
        for (const Sample& row : rows)
            words << QString::number(row.number) + QLatin1Char(' ') + row.tag + QLatin1Char(' ') +
                         (row.hasValue ? QString::number(row.value) : QStringLiteral("none")) +
                         QLatin1Char(' ') + QLatin1String(qualityText(row.quality));
        rows.clear();
        return words.join(QLatin1String(", ")).toStdString();
    }

    std::vector<Sample> rows;
};

} // namespace

TEST(HistoryIntake, TellsEachRowWithTheNextNumber)
{
    HistoryRoom room(historyTags(2));
    NotingRows rows;
    room.intake->setRowListener(&rows);
    room.answer(0, 5);
    room.answer(1, -7);
    EXPECT_EQ("1 tag0 5 good, 2 tag1 -7 good", rows.take());
    EXPECT_EQ(2u, room.intake->take().number);
    room.bad(0, QLatin1String("refused"));
    room.clock.passMs(10);
    room.answer(0, 6);
    EXPECT_EQ(room.clock.wall(), rows.rows.back().time);
    EXPECT_EQ("plc", rows.rows.back().link.toStdString());
    EXPECT_EQ("3 tag0 5 bad, 4 tag0 6 good", rows.take());
    EXPECT_EQ(4u, room.intake->take().number);
    EXPECT_EQ(4u, room.intake->take().number);
}

TEST(HistoryIntake, TellsWhatTheLookFinds)
{
    HistoryRoom room(historyTags(1));
    NotingRows rows;
    room.intake->setRowListener(&rows);
    room.turn();
    EXPECT_EQ("1 tag0 none bad", rows.take());
    room.answer(0, 5);
    room.seconds(3);
    EXPECT_EQ("2 tag0 5 good, 3 tag0 5 stale", rows.take());
}

TEST(HistoryIntake, TellsNoChangeWithinTheDeadband)
{
    std::vector<Tag> tags = historyTags(1);
    tags[0].deadband = 2;
    HistoryRoom room(tags);
    NotingRows rows;
    room.intake->setRowListener(&rows);
    room.answer(0, 5);
    room.answer(0, 7);
    room.answer(0, 8);
    EXPECT_EQ("1 tag0 5 good, 2 tag0 8 good", rows.take());
}

TEST(HistoryIntake, GivesNoNumberToRowsThatFindNoRoom)
{
    HistoryRoom room(historyTags(1));
    HistoryIntake intake({HistoryRoom::OVERRIDE_MS, 2}, room.clock);
    NotingRows rows;
    intake.setRowListener(&rows);
    const auto note = [&](int value) {
        room.answer(0, value);
        intake.tagChanged(*room.link, 0, room.link->reading(0));
    };
    note(1);
    note(2);
    note(3);
    EXPECT_EQ("1 tag0 1 good, 2 tag0 2 good, 0 tag0 3 good", rows.take());
    EXPECT_EQ(2u, intake.take().number);
    note(4);
    EXPECT_EQ("3 tag0 4 good", rows.take());
}

TEST(SampleIntake, TellsRowsWhereNoHistoryIsKept)
{
    const SystemClock clock;
    NotingRows rows;
    std::promise<void> looked;
    const auto link = std::make_shared<LinkValues>(QLatin1String("plc"), historyTags(1), clock);
    {
        SampleIntake intake(HistoryRoom::OVERRIDE_MS, clock, &rows);
        link->addListener(&intake);
        bool isFirst = true;
        intake.start([&]() -> HistoryIntake::Links {
            if (!isFirst) looked.set_value();
            isFirst = false;
            return {link};
        });
        looked.get_future().wait();
        link->tagRead(0, answerBytes(link->tags()[0], 5), 0);
    }
    EXPECT_EQ("1 tag0 none bad, 2 tag0 5 good", rows.take());
}
