#include "session/frameMeaning.h"

#include <gtest/gtest.h>

#include <string>

// Frames of the MODBUS Application Protocol V1.1b3 (6.3 to 6.12, 7); checksums by pymodbus'
// computeCRC, the order of packed coils by its WriteMultipleCoilsRequest.

namespace {

const char* const READ_TWO = "01030BB80002460A";

QByteArray fromHex(const char* hex)
{
    return QByteArray::fromHex(hex);
}

struct RequestRow
{
    const char* bytes;
    const char* meaning;
};

struct ReplyRow
{
    const char* request;
    const char* bytes;
    const char* meaning;
};

void expectRequests(std::initializer_list<RequestRow> rows)
{
    for (const RequestRow& row : rows)
        EXPECT_EQ(row.meaning, requestMeaning(fromHex(row.bytes)).toStdString()) << row.bytes;
}

void expectReplies(std::initializer_list<ReplyRow> rows)
{
    for (const ReplyRow& row : rows) {
        const QString meaning = replyMeaning(fromHex(row.bytes), fromHex(row.request));
        EXPECT_EQ(row.meaning, meaning.toStdString()) << row.bytes;
    }
}

} // namespace

TEST(RequestMeaning, NamesCountAndPlaceOfARead)
{
    expectRequests({{READ_TWO, "station 1: read 2 holding registers from 3000"},
                    {"01030BB80001060B", "station 1: read 1 holding register from 3000"},
                    {"010400000003B00B", "station 1: read 3 input registers from 0"}});
}

TEST(RequestMeaning, NamesTheSingleValueWritten)
{
    expectRequests({{"01060BB904D2D896", "station 1: write register 3001 = 1234"},
                    {"02060BB904D2D8A5", "station 2: write register 3001 = 1234"},
                    {"01050005FF009C3B", "station 1: write coil 5 = 1"},
                    {"010500050000DDCB", "station 1: write coil 5 = 0"},
                    {"010500051234D0BC", "station 1: write coil 5 = 4660, neither on nor off"}});
}

TEST(RequestMeaning, ListsTheValuesWritten)
{
    expectRequests(
        {{"010F0005000A02CD01703D", "station 1: write 10 coils from 5 = 1 0 1 1 0 0 1 1 1 0"},
         {"01100C1C0002040001FFFE3646", "station 1: write 2 registers from 3100 = 1 65534"}});
}

TEST(RequestMeaning, ShowsOnlyTheFirstOfManyValues)
{
    expectRequests({{"01100C1C000A14000100020003000400050006000700080009000AFB4A",
                     "station 1: write 10 registers from 3100 = 1 2 3 4 5 6 7 8 \u2026"},
                    {"010F0000001203FFFF03E9B4",
                     "station 1: write 18 coils from 0 = 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 \u2026"}});
}

TEST(RequestMeaning, CallsStationZeroABroadcast)
{
    expectRequests({{"00060BB904D2D947", "broadcast: write register 3001 = 1234"}});
}

TEST(RequestMeaning, NeverReadsPastAFrameThatIsTooShortForItsCount)
{
    expectRequests({{"010F0000001102FFFFE26C", "station 1: function 15 in 11 bytes"},
                    {"010F0005000102CD017219", "station 1: function 15 in 11 bytes"},
                    {"012B0E01B470", "station 1: function 43 in 6 bytes"}});
}

TEST(RequestMeaning, ReportsDamagedFrames)
{
    expectRequests({{"", "0 bytes that are no frame"},
                    {"01", "1 byte that is no frame"},
                    {"010300", "3 bytes that are no frame"},
                    {"01030BB80002460B", "checksum wrong"}});
}

TEST(ReplyMeaning, ListsTheRegistersRead)
{
    expectReplies({{READ_TWO, "010304123456788107", "station 1: 2 registers 0x1234 0x5678"},
                   {"010413880001B564", "0104021234B447", "station 1: 1 register 0x1234"},
                   {"010400000003B00B", "010406000100020003BC92",
                    "station 1: 3 registers 0x0001 0x0002 0x0003"}});
}

TEST(ReplyMeaning, ShowsOnlyTheFirstOfManyRegisters)
{
    // A wrong checksum in the request does not change the meaning of the reply.
    expectReplies({{"01030000000A0000", "010314000100020003000400050006000700080009000A8F16",
                    "station 1: 10 registers 0x0001 0x0002 0x0003 0x0004 0x0005 0x0006 0x0007 "
                    "0x0008 \u2026"}});
}

TEST(ReplyMeaning, CallsAnEchoWritten)
{
    expectReplies({{"01060BB904D2D896", "01060BB904D2D896", "station 1: echo, written"},
                   {"01050005FF009C3B", "01050005FF009C3B", "station 1: echo, written"},
                   {"010F0005000A02CD01703D", "010F0005000AC5CD", "station 1: echo, written"},
                   {"01100C1C0002040001FFFE3646", "01100C1C0002835E", "station 1: echo, written"}});
}

TEST(ReplyMeaning, NamesARefusal)
{
    expectReplies({{READ_TWO, "018302C0F1", "station 1: exception 2: illegal address"},
                   {"01060BB904D2D896", "018606C262", "station 1: exception 6: device busy"}});
}

TEST(ReplyMeaning, MarksAGoodFrameThatIsNotTheAnswer)
{
    expectReplies(
        {{READ_TWO, "02030412345678B207", "station 2: 2 registers 0x1234 0x5678, not the answer"},
         {READ_TWO, "0104021234B447", "station 1: 1 register 0x1234, not the answer"},
         {READ_TWO, "01830440F3", "station 1: exception 4: device failure"},
         {"01060BB904D2D896", "018302C0F1",
          "station 1: exception 2: illegal address, not the answer"},
         {"00060BB904D2D947", "01060BB904D2D896", "station 1: echo, written, not the answer"},
         {"", "018302C0F1", "station 1: exception 2: illegal address, not the answer"},
         {READ_TWO, "012B0E01B470", "station 1: function 43 in 6 bytes, not the answer"}});
}

TEST(ReplyMeaning, ReportsHowMuchOfAReplyCame)
{
    expectReplies({{READ_TWO, "01030412345678", "7 bytes of a reply of 9"},
                   {READ_TWO, "018302C0", "4 bytes of a reply of 5"},
                   {READ_TWO, "0103", "2 bytes of a reply of 9"}});
}

TEST(ReplyMeaning, TellsADamagedReplyFromNoise)
{
    expectReplies({{READ_TWO, "010304123456798107", "checksum wrong"},
                   {READ_TWO, "018303C0F1", "checksum wrong"},
                   {READ_TWO, "FFFFFFFFFFFFFFFFFFFFFFFF", "12 bytes that are no frame"},
                   {READ_TWO, "01", "1 byte that is no frame"},
                   {"", "010304123456798107", "9 bytes that are no frame"},
                   {READ_TWO, "", "0 bytes that are no frame"}});
}
