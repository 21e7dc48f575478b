#include "verbs/planVerb.h"
#include "builtDriver.h"

#include "plan/readPlan.h"
#include "plan/tagFile.h"
#include "session/polledTags.h"
#include "session/startedDriver.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <ctime>
#include <set>

// Requests by pymodbus 3.0's RTU framer; bits are read as their register. Times at 9600 baud and a
// turnaround of 1 ms: 13542 + 2 * 3646 + 1000 for a request, 2083 for a word.

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

std::vector<Tag> someTags()
{
    return readTags("name,station,area,address,type\n"
                    "level,1,MW,100,int32\n"
                    "speed,1,MW,106,int16\n"
                    "alarm,1,MX,12.3,bool\n"
                    "last,1,MX,7816.7,bool\n"
                    "input,2,IW,0,uint16\n",
                    driver());
}

LineTiming slowLine()
{
    LineSettings settings;
    settings.baud = 9600;
    return LineTiming(settings);
}

QByteArray printed(const std::vector<Tag>& tags, bool json, const LineTiming& timing = slowLine(),
                   qint64 turnaround = 1000, qint64 pace = 0, int mostGap = ANY_GAP)
{
    std::FILE* const file = std::tmpfile();
    printPlan(file, tags, timing, turnaround, pace, mostGap, driver(), json);
    QByteArray bytes(int(std::ftell(file)), '\0');
    std::rewind(file);
    EXPECT_EQ(size_t(bytes.size()), std::fread(bytes.data(), 1, size_t(bytes.size()), file));
    std::fclose(file);
    return bytes;
}

QJsonObject blockOf(const QJsonObject& plan, int index)
{
    return plan[text("blocks")].toArray().at(index).toObject();
}

} // namespace

TEST(PlanVerb, TableHasEachBlockWithItsRequest)
{
    EXPECT_EQ("station area number count  tags  request                  reply  names\n"
              "      1 MW     3050     4     2  01 03 0b ea 00 04 67 d9     13  level, speed\n"
              "      1 MX     3096    16     1  01 03 0b be 00 01 e6 0a      7  alarm\n"
              "      1 MX    65528     8     1  01 03 1a fc 00 01 43 22      7  last\n"
              "      2 IW        0     1     1  02 04 00 00 00 01 31 f9      7  input\n"
              "grouped:              4 requests, 101.9 ms a cycle\n"
              "without grouping:     5 requests, 121.7 ms a cycle\n"
              "fences at first:      2 requests, about 147.8 ms once\n"
              "words in gaps:        1 words, at most 1 in a row\n",
              printed(someTags(), false).toStdString());
}

// 23,917 us a word: every 5 s 0.478 %, and every 500 ms 4.783 %.
TEST(PlanVerb, TableHasTheRatesAndTheirLoad)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type,rate\n"
                                           "level,1,MW,100,int16,\n"
                                           "speed,1,MW,200,int16,5s\n"
                                           "alarm,1,IW,0,int16,500ms\n"
                                           "serial,1,QW,0,int16,once\n",
                                           driver());
    EXPECT_EQ("station area number count  tags   rate request                  reply  names\n"
              "      1 IW        0     1     1  500ms 01 04 00 00 00 01 31 ca      7  alarm\n"
              "      1 MW     3050     1     1   fast 01 03 0b ea 00 01 a7 da      7  level\n"
              "      1 MW     3100     1     1     5s 01 03 0c 1c 00 01 46 9c      7  speed\n"
              "      1 QW        0     1     1   once 01 03 00 00 00 01 84 0a      7  serial\n"
              "grouped:              1 requests, 23.9 ms a cycle\n"
              "without grouping:     4 requests, 95.7 ms a cycle\n"
              "fences at first:      1 requests, about 73.9 ms once\n"
              "words in gaps:        0 words, at most 0 in a row\n"
              "pace:             a cycle begins every 1s at the earliest\n"
              "at their rates:       2 requests, 2.20 a second, 5.3 % of the line\n"
              "read once:            1 requests\n",
              printed(tags, false, slowLine(), 1000, 1000000).toStdString());
}

TEST(PlanVerb, JsonHasTheRateOfEachBlock)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type,rate\n"
                                           "a,1,IW,0,int16,500ms\nb,1,MW,0,int16,\n",
                                           driver());
    const QJsonObject plan =
        QJsonDocument::fromJson(printed(tags, true, slowLine(), 1000, 250000)).object();
    EXPECT_EQ(text("500ms"), blockOf(plan, 0)[text("rate")].toString());
    EXPECT_EQ(text("fast"), blockOf(plan, 1)[text("rate")].toString());
    EXPECT_EQ(250, plan[text("paceMs")].toInt());
    const QJsonObject rates = plan[text("rates")].toObject();
    EXPECT_EQ(1, rates[text("requests")].toInt());
    EXPECT_EQ(0, rates[text("onceRequests")].toInt());
    EXPECT_EQ(2, rates[text("requestsPerSecond")].toDouble());
    EXPECT_NEAR(23917e-6 / 0.5, rates[text("load")].toDouble(), 1e-9);
}

TEST(PlanVerb, TableNamesAtMostThreeTagsOfABlock)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type\n"
                                           "a,1,QW,0,int16\nb,1,QW,2,int16\nc,1,QW,4,int16\n"
                                           "d,1,QW,6,int16\ne,1,QW,8,int16\n",
                                           driver());
    EXPECT_TRUE(printed(tags, false).contains("  a, b, c and 2 more\n"));
}

TEST(PlanVerb, NoTagsNeedNoRequest)
{
    EXPECT_EQ("station area number count  tags  request                  reply  names\n"
              "grouped:              0 requests, 0.0 ms a cycle\n"
              "without grouping:     0 requests, 0.0 ms a cycle\n"
              "fences at first:      0 requests, about 0.0 ms once\n"
              "words in gaps:        0 words, at most 0 in a row\n",
              printed({}, false).toStdString());
}

TEST(PlanVerb, JsonIsOneObjectOnOneLine)
{
    const QByteArray line = printed(someTags(), true);
    EXPECT_EQ(line.size() - 1, line.indexOf('\n'));
    const QJsonObject plan = QJsonDocument::fromJson(line).object();
    ASSERT_EQ(4, plan[text("blocks")].toArray().size());
    const QJsonObject block = blockOf(plan, 0);
    EXPECT_EQ(1, block[text("station")].toInt());
    EXPECT_EQ(text("MW"), block[text("area")].toString());
    EXPECT_EQ(3050, block[text("number")].toInt());
    EXPECT_EQ(4, block[text("count")].toInt());
    EXPECT_EQ(QJsonArray({text("level"), text("speed")}), block[text("tags")].toArray());
    EXPECT_EQ(text("01030bea000467d9"), block[text("request")].toString());
    EXPECT_EQ(13, block[text("replyLength")].toInt());
}

TEST(PlanVerb, JsonTimesAreMicroseconds)
{
    const QJsonObject plan = QJsonDocument::fromJson(printed(someTags(), true)).object();
    const QJsonObject grouped = plan[text("grouped")].toObject();
    EXPECT_EQ(4, grouped[text("requests")].toInt());
    EXPECT_EQ(4 * 21834 + 7 * 2083, grouped[text("cycleTimeUs")].toInt());
    const QJsonObject single = plan[text("single")].toObject();
    EXPECT_EQ(5, single[text("requests")].toInt());
    EXPECT_EQ(5 * 21834 + 6 * 2083, single[text("cycleTimeUs")].toInt());
    // One fence for each station. A fence has 1 to 50 words; the time is that of the mean length.
    const QJsonObject fences = plan[text("fences")].toObject();
    EXPECT_EQ(2, fences[text("requests")].toInt());
    EXPECT_EQ(2 * (21834 + 25 * 2083), fences[text("timeUs")].toInt());
}

TEST(PlanVerb, NetworkWithoutTurnaroundHasNoTimes)
{
    const QByteArray table = printed(someTags(), false, LineTiming::network(), 0);
    EXPECT_TRUE(table.contains("grouped:              3 requests, no wire time\n"
                               "without grouping:     5 requests, no wire time\n"
                               "fences at first:      2 requests, no wire time\n"))
        << table.toStdString();
    const QJsonObject plan =
        QJsonDocument::fromJson(printed(someTags(), true, LineTiming::network(), 0)).object();
    for (const char* kind : {"grouped", "single"})
        EXPECT_TRUE(plan[text(kind)].toObject()[text("cycleTimeUs")].isNull()) << kind;
    EXPECT_TRUE(plan[text("fences")].toObject()[text("timeUs")].isNull());
}

TEST(PlanVerb, NetworkTimesAreTurnarounds)
{
    const QJsonObject plan =
        QJsonDocument::fromJson(printed(someTags(), true, LineTiming::network(), 2500)).object();
    EXPECT_EQ(3 * 2500, plan[text("grouped")].toObject()[text("cycleTimeUs")].toInt());
    EXPECT_EQ(5 * 2500, plan[text("single")].toObject()[text("cycleTimeUs")].toInt());
}

TEST(PlanVerb, EachBlockOfALargePlanHasItsRequest)
{
    QByteArray csv("name,station,area,address,type\n");
    for (int i = 0; i < 600; ++i)
        csv += 't' + QByteArray::number(i) + ',' + QByteArray::number(i % 8 + 1) + ",MW," +
               QByteArray::number(i * 12) + ",int16\n";
    const QJsonObject plan =
        QJsonDocument::fromJson(printed(readTags(csv, driver()), true)).object();
    const QJsonArray blocks = plan[text("blocks")].toArray();
    EXPECT_EQ(600, blocks.size());
    for (int i = 0; i < int(blocks.size()); ++i) {
        const QJsonObject block = blockOf(plan, i);
        const QByteArray request =
            QByteArray::fromHex(block[text("request")].toString().toLatin1());
        ASSERT_EQ(8, request.size());
        ASSERT_EQ(block[text("station")].toInt(), request.at(0));
        ASSERT_EQ(block[text("number")].toInt(), static_cast<unsigned char>(request.at(2)) * 256 +
                                                     static_cast<unsigned char>(request.at(3)));
    }
}

// Register 3006 holds MX 12.0 to 13.7, and register 3008 holds MX 16.0 to 17.7.
TEST(PlanVerb, BitsNearWordsAreReadWithTheWords)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type\n"
                                           "alarm,1,MX,12.3,bool\n"
                                           "horn,1,MX,16.0,bool\n"
                                           "speed,1,MW,14,int16\n",
                                           driver());
    EXPECT_TRUE(printed(tags, false)
                    .contains("      1 MW     3006     3     3  01 03 0b be 00 03 67 cb     11  "
                              "alarm, horn, speed\n"));
}

TEST(PlanVerb, GapsAreShownWithTheirLimit)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type\n"
                                           "a,1,QW,0,int16\nb,1,QW,4,int16\nc,1,QW,12,int16\n",
                                           driver());
    EXPECT_TRUE(
        printed(tags, false).endsWith("words in gaps:        4 words, at most 3 in a row\n"));
    EXPECT_TRUE(
        printed(tags, false, slowLine(), 1000, 0, 2)
            .endsWith("words in gaps:        1 words, at most 1 in a row, the limit is 2\n"));
    const auto gaps = [&tags](int limit) {
        const QByteArray json = printed(tags, true, slowLine(), 1000, 0, limit);
        return QJsonDocument::fromJson(json).object()[text("gaps")].toObject();
    };
    EXPECT_EQ(4, gaps(ANY_GAP)[text("words")].toInt());
    EXPECT_EQ(3, gaps(ANY_GAP)[text("longest")].toInt());
    EXPECT_TRUE(gaps(ANY_GAP)[text("limit")].isNull());
    EXPECT_EQ(0, gaps(0)[text("words")].toInt());
    EXPECT_EQ(0, gaps(0)[text("limit")].toInt(-1));
}

// Of every kind of block. Their requests must be those of the cyclic reads, which a watch sends.
TEST(PlanVerb, RequestsAreThoseOfAWatch)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type\n"
                                           "a,1,MW,100,float32\nb,2,QX,0.5,bool\n"
                                           "c,1,MX,7816.7,bool\nd,1,IX,30.1,bool\n"
                                           "e,1,IW,500,int16\nf,1,IX,498.0,bool\n",
                                           driver());
    const QJsonArray blocks =
        QJsonDocument::fromJson(printed(tags, true)).object()[text("blocks")].toArray();
    std::set<QByteArray> shown;
    for (int i = 0; i < int(blocks.size()); ++i)
        shown.insert(
            QByteArray::fromHex(blocks.at(i).toObject()[text("request")].toString().toLatin1()));

    std::set<QByteArray> polled;
    StartedDriver watch(driver(), 1);
    QList<KEY_ADDRESS> keys;
    for (const ReadBlock& block : planReads(tags, wireCost(slowLine(), 1000), 125))
        keys << PolledTags::keyOf(block);
    for (int left = watch.poll(keys); left > 0; --left) {
        FRAME_PRO frame;
        ASSERT_TRUE(watch.nextRequest(&frame));
        polled.insert(QByteArray(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen));
        QByteArray silence;
        QString errorText;
        watch.dealRcvFrame(silence, errorText);
    }
    EXPECT_EQ(5u, shown.size());
    EXPECT_EQ(polled, shown);
}

#ifdef __SANITIZE_ADDRESS__
const double MOST_SECONDS = 3; // a sanitizer makes it some times slower
#else
const double MOST_SECONDS = 0.3;
#endif

// The driver would lay out 120,000 words in its cache for 5 s and more.
TEST(PlanVerb, OfTwentyThousandTagsTakesAMoment)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 20000; ++i) {
        Tag tag;
        tag.station = 1 + i % 31;
        tag.area = text(i % 2 == 0 ? "MW" : "MX");
        tag.type = i % 2 == 0 ? Tag::UINT16 : Tag::BOOL;
        tag.number = 3000 + (i % 2 == 0 ? 6 : 96) * (i / 31);
        tags.push_back(tag);
    }
    const std::clock_t start = std::clock();
    const QByteArray table = printed(tags, false);
    const double taken = double(std::clock() - start) / CLOCKS_PER_SEC; // of the processor
    std::printf("planned 20,000 tags of 31 stations in %.2f s\n", taken);
    EXPECT_GT(table.count('\n'), 500);
    EXPECT_LT(taken, MOST_SECONDS);
}
