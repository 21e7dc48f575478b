#include "output/frameTrace.h"

#include "frameRecords.h"
#include "verbOutput.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string tracedTo(const std::function<void(FrameTrace&)>& add)
{
    return printed([&](std::FILE* out) {
        FrameTrace trace(out);
        add(trace);
    });
}

std::string traced(const std::vector<FrameRecord>& records, bool flush = true)
{
    return tracedTo([&](FrameTrace& trace) {
        for (const FrameRecord& record : records)
            trace.add(record);
        if (flush) trace.flush();
    });
}

const char* const REQUEST_LINE =
    "    1.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers from 3000\n";

} // namespace

TEST(FrameTrace, WritesALineForEachFrame)
{
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78 81 07  station 1: 2 registers 0x1234 "
                  "0x5678\n",
              traced({sent(1250000, READ_REQUEST), received(1256120, READ_REPLY)}));
}

TEST(FrameTrace, MarksFencesAndExplainsTheirReplies)
{
    EXPECT_EQ("    1.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers from "
              "3000, a fence\n"
              "    1.256120 < 01 03 04 12 34 56 78 81 07  station 1: 2 registers 0x1234 0x5678\n",
              traced({fence(1250000, READ_REQUEST), received(1256120, READ_REPLY)}));
}

TEST(FrameTrace, NamesTheEchoOfARequest)
{
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.252000 < 01 03 0B B8 00 02 46 0A  echo of the request\n"
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              traced({sent(1250000, READ_REQUEST), received(1252000, READ_REQUEST),
                      received(1256120, REFUSAL)}));
}

TEST(FrameTrace, WritesAReplyWithoutAFlush)
{
    const std::string lines =
        traced({sent(1250000, READ_REQUEST), received(1256120, REFUSAL)}, false);
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              lines);
}

TEST(FrameTrace, HoldsAnUnfinishedReplyUntilTheFlush)
{
    const std::vector<FrameRecord> records = {sent(1250000, READ_REQUEST),
                                              received(1256120, READ_REPLY.left(7))};
    EXPECT_EQ(REQUEST_LINE, traced(records, false));
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78  stray: 7 of 9 bytes of the answer\n",
              traced(records));
}

TEST(FrameTrace, ShowsStrayBytesOnSeparateLines)
{
    const QByteArray noise = QByteArray::fromHex("FF");
    EXPECT_EQ(
        std::string(REQUEST_LINE) + "    1.256120 < FF  stray: 1 byte, too few for an answer\n"
                                    "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: "
                                    "illegal address\n"
                                    "    1.256120 < FF FF  stray: 2 bytes, too few for an answer\n",
        traced({sent(1250000, READ_REQUEST), received(1256120, noise + REFUSAL + noise + noise)}));
}

TEST(FrameTrace, KeepsTheColumnsOverDays)
{
    const std::string line = traced({sent(86400000001LL, BROADCAST)});
    EXPECT_EQ("86400.000001 > 00 06 0B B9 04 D2 D9 47  broadcast: write register 3001 = 1234\n",
              line);
}

TEST(FrameTrace, SaysWhyAFrameWasDropped)
{
    // Two registers of station 2; the checksum is pymodbus' computeCRC. A Modbus TCP answer.
    const struct
    {
        const char* bytes;
        const char* meaning;
    } rows[] = {
        {"02030412345678B207",
         "station 2: 2 registers 0x1234 0x5678, not the answer: an answer of another station, 2"},
        {"010304123456788108",
         "9 bytes with a wrong checksum: noise, or another baud rate or parity"},
        {"00070000000701030412345678",
         "a Modbus TCP header: this peer speaks Modbus TCP, not RTU over TCP"},
    };
    for (const auto& row : rows) {
        const QByteArray bytes = QByteArray::fromHex(row.bytes);
        EXPECT_EQ(std::string(REQUEST_LINE) + "    1.256120 < " +
                      bytes.toHex(' ').toUpper().toStdString() + "  stray: " + row.meaning + "\n",
                  traced({sent(1250000, READ_REQUEST), received(1256120, bytes)}));
    }
}

/// An unanswered fence ends twice: as a fence, and as an attempt of the request behind it.
TEST(FrameTrace, SaysOnceThatNoAnswerCame)
{
    EXPECT_EQ(std::string(REQUEST_LINE) + "    1.752999 ! station 1: no answer within 502 ms\n",
              traced({sent(1250000, READ_REQUEST), noAnswer(1752999), noAnswer(1752999)}));
}

TEST(FrameTrace, SaysThatNoAnswerCameBehindAnEcho)
{
    EXPECT_EQ(
        std::string(REQUEST_LINE) + "    1.252000 < 01 03 0B B8 00 02 46 0A  echo of the request\n"
                                    "    1.752000 ! station 1: no answer within 502 ms\n",
        traced({sent(1250000, READ_REQUEST), received(1252000, READ_REQUEST), noAnswer(1752000)}));
}

TEST(FrameTrace, NeverSaysThatNoAnswerCameToAnAnsweredOrAMissingRequest)
{
    EXPECT_EQ("", traced({noAnswer(1000)}));
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 83 02 C0 F1  station 1: exception 2: illegal address\n",
              traced({sent(1250000, READ_REQUEST), received(1256120, REFUSAL), noAnswer(1752000)}));
    EXPECT_EQ(std::string(REQUEST_LINE) + "1 frames missed: the output was blocked\n",
              tracedTo([](FrameTrace& trace) {
                  trace.add(sent(1250000, READ_REQUEST));
                  trace.addHole(1);
                  trace.add(noAnswer(1752000));
              }));
}

TEST(FrameTrace, WritesDatesOnRequest)
{
    const std::string lines = printed([](std::FILE* out) {
        FrameTrace trace(out, TimeText(TimeText::ISO, 1700000000000000)); // 2023-11-14T22:13:20Z
        trace.add(sent(1250000, BROADCAST));
    });
    EXPECT_EQ("2023-11-14T22:13:21.250Z > 00 06 0B B9 04 D2 D9 47  broadcast: write register 3001 "
              "= 1234\n",
              lines);
}

TEST(FrameTrace, ReportsAHoleInItsPlace)
{
    const std::string lines = tracedTo([](FrameTrace& trace) {
        trace.add(sent(1250000, READ_REQUEST));
        trace.add(received(1256120, READ_REPLY.left(7)));
        trace.addHole(42);
        trace.add(received(2000000, REFUSAL)); // answers a missing request
        trace.add(sent(3250000, READ_REQUEST));
    });
    EXPECT_EQ(std::string(REQUEST_LINE) +
                  "    1.256120 < 01 03 04 12 34 56 78  stray: 7 of 9 bytes of the answer\n"
                  "42 frames missed: the output was blocked\n"
                  "    2.000000 < 01 83 02 C0 F1  stray: station 1: exception 2: illegal address, "
                  "not the answer\n"
                  "    3.250000 > 01 03 0B B8 00 02 46 0A  station 1: read 2 holding registers "
                  "from 3000\n",
              lines);
}
