#include "plan/recipePlan.h"

#include <gtest/gtest.h>

#include <string>

// Offsets in the recipe buffer are counted in words; words lie low byte first, bits one byte each,
// as the driver's header says.

namespace {

enum { LINK = 1 };

Tag tagAt(const char* area, int number, Tag::Type type, int station = 1)
{
    Tag tag;
    tag.name = QString(QLatin1String("%1%2")).arg(QLatin1String(area)).arg(number);
    tag.station = station;
    tag.area = QLatin1String(area);
    tag.number = number;
    tag.type = type;
    return tag;
}

std::vector<Tag> words(int first, int count)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(tagAt("MW", first + i, Tag::UINT16));
    return tags;
}

std::string complaintOf(const std::vector<Tag>& tags)
{
    try {
        RecipePlan plan(tags, LINK);
    } catch (const RecipeError& error) {
        return error.what();
    }
    return std::string();
}

void expectRecord(const _RCP_VAR_PRO& record, const char* area, int number, int count, int offset)
{
    EXPECT_EQ(QLatin1String(area), record.regName);
    EXPECT_EQ(number, record.addr);
    EXPECT_EQ(count, record.count);
    EXPECT_EQ(offset, record.bufOffset);
}

} // namespace

TEST(RecipePlan, WordsThatLieTogetherAreOneRecord)
{
    const RecipePlan plan({tagAt("MW", 3100, Tag::UINT16), tagAt("MW", 3101, Tag::FLOAT32)}, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(1, int(records.size()));
    expectRecord(records[0], "MW", 3100, 3, 0);
    EXPECT_EQ(int(LINK), records[0].linkNo);
    EXPECT_EQ(1, records[0].station);
    EXPECT_EQ(6, plan.bufferBytes());
}

TEST(RecipePlan, AGapBetweenWordsStartsAnotherRecordRightBehindInTheBuffer)
{
    const RecipePlan plan({tagAt("MW", 3100, Tag::UINT16), tagAt("MW", 3102, Tag::UINT16)}, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    expectRecord(records[0], "MW", 3100, 1, 0);
    expectRecord(records[1], "MW", 3102, 1, 1);
}

TEST(RecipePlan, StationsAndAreasHaveRecordsOfTheirOwn)
{
    const RecipePlan plan({tagAt("MW", 3000, Tag::UINT16, 2), tagAt("QW", 5, Tag::UINT16),
                           tagAt("MW", 3001, Tag::UINT16, 1)},
                          LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(3, int(records.size()));
    expectRecord(records[0], "MW", 3001, 1, 0);
    expectRecord(records[1], "QW", 5, 1, 1);
    expectRecord(records[2], "MW", 3000, 1, 2);
    EXPECT_EQ(2, records[2].station);
}

TEST(RecipePlan, ARecordEndsWhereTheStationChangesThoughTheNumbersGoOn)
{
    // The frame of a record is sent to one station only.
    const RecipePlan plan({tagAt("MW", 3100, Tag::UINT16, 1), tagAt("MW", 3101, Tag::UINT16, 2),
                           tagAt("MX", 3000, Tag::BOOL, 3), tagAt("MX", 3001, Tag::BOOL, 4)},
                          LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(4, int(records.size()));
    expectRecord(records[0], "MW", 3100, 1, 0);
    expectRecord(records[1], "MW", 3101, 1, 1);
    expectRecord(records[2], "MX", 3000, 1, 2);
    expectRecord(records[3], "MX", 3001, 1, 3);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(i + 1, records[i].station) << i;
    EXPECT_EQ(2, int(plan.uploadRecords().size()));
}

TEST(RecipePlan, ARecordEndsWhereTheAreaChangesThoughTheNumbersGoOn)
{
    const RecipePlan plan({tagAt("MW", 4000, Tag::UINT16), tagAt("QW", 4001, Tag::UINT16)}, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    expectRecord(records[0], "MW", 4000, 1, 0);
    expectRecord(records[1], "QW", 4001, 1, 1);
}

TEST(RecipePlan, TagsMayComeInAnyOrder)
{
    const RecipePlan plan({tagAt("MW", 3101, Tag::UINT16), tagAt("MW", 3100, Tag::UINT16)}, LINK);
    ASSERT_EQ(1, int(plan.downloadRecords().size()));
    EXPECT_EQ(QByteArray::fromHex("22221111"),
              plan.buffer({QByteArray::fromHex("1111"), QByteArray::fromHex("2222")}));
}

TEST(RecipePlan, ARecordHasNoMoreWordsThanOneRequestWrites)
{
    const RecipePlan plan(words(3000, 124), LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    expectRecord(records[0], "MW", 3000, 123, 0);
    expectRecord(records[1], "MW", 3123, 1, 123);
}

TEST(RecipePlan, ATagOfTwoWordsAcrossTheLimitLiesWholeInTheNextRecord)
{
    std::vector<Tag> tags = words(3000, 122);
    tags.push_back(tagAt("MW", 3122, Tag::UINT32));
    const RecipePlan plan(tags, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    expectRecord(records[0], "MW", 3000, 122, 0);
    expectRecord(records[1], "MW", 3122, 2, 122);
    std::vector<QByteArray> values(122, QByteArray::fromHex("0000"));
    values.push_back(QByteArray::fromHex("01020304"));
    const QByteArray buffer = plan.buffer(values);
    EXPECT_EQ(QByteArray::fromHex("01020304"), buffer.mid(2 * 122));
    EXPECT_EQ(QByteArray::fromHex("01020304"), plan.value(122, buffer));
}

TEST(RecipePlan, NoValueOfTwoWordsIsCutWhereverItLies)
{
    enum { FIRST = 3000, BEHIND = 250 };
    for (int place = 0; place < 250; ++place) {
        std::vector<Tag> tags = words(FIRST, place);
        tags.push_back(tagAt("MW", FIRST + place, Tag::FLOAT32));
        const std::vector<Tag> behind = words(FIRST + place + 2, BEHIND);
        tags.insert(tags.end(), behind.begin(), behind.end());
        const RecipePlan plan(tags, LINK);
        for (const QVector<_RCP_VAR_PRO>& records :
             {plan.downloadRecords(), plan.uploadRecords()}) {
            int next = FIRST;
            for (const _RCP_VAR_PRO& record : records) {
                ASSERT_EQ(next, record.addr) << place;
                ASSERT_EQ(next - FIRST, record.bufOffset) << place;
                ASSERT_LE(record.count, 123) << place;
                next += record.count;
                ASSERT_NE(FIRST + place + 1, next) << "cut at place " << place;
            }
            ASSERT_EQ(FIRST + place + 2 + BEHIND, next) << place;
        }
    }
}

TEST(RecipePlan, BitsThatTouchAreOneRecordOfOneByteABit)
{
    const RecipePlan plan(
        {tagAt("MX", 3001, Tag::BOOL), tagAt("MX", 3002, Tag::BOOL), tagAt("MX", 3003, Tag::BOOL)},
        LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(1, int(records.size()));
    expectRecord(records[0], "MX", 3001, 3, 0);
    EXPECT_EQ(QByteArray::fromHex("01000100"),
              plan.buffer({QByteArray::fromHex("01"), QByteArray::fromHex("00"),
                           QByteArray::fromHex("01")}));
}

TEST(RecipePlan, WhatFollowsAnOddNumberOfBitsStartsAtAWholeWord)
{
    const RecipePlan plan({tagAt("MX", 3001, Tag::BOOL), tagAt("QW", 0, Tag::UINT16)}, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    expectRecord(records[0], "MX", 3001, 1, 0);
    expectRecord(records[1], "QW", 0, 1, 1);
    EXPECT_EQ(QByteArray::fromHex("01003412"),
              plan.buffer({QByteArray::fromHex("01"), QByteArray::fromHex("3412")}));
}

TEST(RecipePlan, BitsAreWrittenButNotRead)
{
    const RecipePlan plan({tagAt("MX", 3001, Tag::BOOL), tagAt("QW", 0, Tag::UINT16)}, LINK);
    const QVector<_RCP_VAR_PRO> records = plan.uploadRecords();
    ASSERT_EQ(1, int(records.size()));
    expectRecord(records[0], "QW", 0, 1, 1);
}

TEST(RecipePlan, ValuesComeBackFromTheBufferOfAnUpload)
{
    const RecipePlan plan({tagAt("MW", 3200, Tag::UINT32), tagAt("MW", 3100, Tag::UINT16)}, LINK);
    const QByteArray buffer = QByteArray::fromHex("AABB01020304");
    EXPECT_EQ(QByteArray::fromHex("01020304"), plan.value(0, buffer));
    EXPECT_EQ(QByteArray::fromHex("AABB"), plan.value(1, buffer));
}

TEST(RecipePlan, TagsThatShareAUnitAreNamedAllAtOnce)
{
    const std::string complaint =
        complaintOf({tagAt("MW", 3100, Tag::FLOAT32), tagAt("MW", 3101, Tag::UINT16),
                     tagAt("MX", 3001, Tag::BOOL), tagAt("MX", 3001, Tag::BOOL)});
    EXPECT_EQ("MW3100 and MW3101 share a word of station 1\n"
              "MX3001 and MX3001 share a bit of station 1",
              complaint);
}

TEST(RecipePlan, NamesAreToldAsTheyAre)
{
    Tag first = tagAt("MW", 3100, Tag::UINT16, 2);
    Tag second = first;
    first.name = QLatin1String("x%4");
    second.name = QLatin1String("%1 %L2 %99");
    EXPECT_EQ("x%4 and %1 %L2 %99 share a word of station 2", complaintOf({first, second}));
}

TEST(RecipePlan, AWordAndABitOfItShareMemory)
{
    EXPECT_EQ("MW3000 and MX3000 share a bit of station 1\n"
              "QX31 and QW1 share a bit of station 1",
              complaintOf({tagAt("MW", 3000, Tag::UINT16), tagAt("MX", 3000, Tag::BOOL),
                           tagAt("QX", 31, Tag::BOOL), tagAt("QW", 1, Tag::UINT16)}));
}

TEST(RecipePlan, TheSameUnitOfTwoStationsIsNotShared)
{
    EXPECT_EQ("",
              complaintOf({tagAt("MW", 3100, Tag::UINT16, 1), tagAt("MW", 3100, Tag::UINT16, 2)}));
}

TEST(RecipePlan, MoreThanTheBufferHoldsIsRefused)
{
    // 247 stations of 256 words in QW fill 63232 words of 65536.
    std::vector<Tag> tags;
    for (int station = 1; station <= 247; ++station)
        for (int number = 0; number < 256; ++number)
            tags.push_back(tagAt("QW", number, Tag::UINT16, station));
    const std::vector<Tag> more = words(3000, 65536 - 63232);
    tags.insert(tags.end(), more.begin(), more.end());
    EXPECT_EQ("", complaintOf(tags));
    tags.push_back(tagAt("MW", 7000, Tag::UINT16));
    EXPECT_EQ("the recipe has more than 65536 words", complaintOf(tags));
}

TEST(RecipePlan, NoTagsNeedNothing)
{
    const RecipePlan plan({}, LINK);
    EXPECT_TRUE(plan.downloadRecords().isEmpty());
    EXPECT_EQ(0, plan.bufferBytes());
}

TEST(RecipePlan, NoRecordHasMoreBitsThanAreWrittenAtOnce)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 497; ++i)
        tags.push_back(tagAt("MX", 3000 + i, Tag::BOOL));
    const QVector<_RCP_VAR_PRO> records = RecipePlan(tags, LINK).downloadRecords();
    ASSERT_EQ(2, int(records.size()));
    EXPECT_EQ(496, records[0].count);
    EXPECT_EQ(1, records[1].count);
}
