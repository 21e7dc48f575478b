#include "handledRequests.h"

// Requests and replies are as pymodbus 3.0's RTU framer builds them.

namespace {

const char* const WRITE_500 = "01 06 0C B2 12 34 27 CA"; // MW500, register 3250
const char* const READ_500 = "01 03 0C B2 00 01 27 7D";
const char* const READ_480_TO_518 = "01 03 0C A8 00 14 C7 75"; // registers 3240 to 3259
const char* const SET_MX500_0 = "01 05 1B 58 FF 00 0B 0D";     // coil 7000
const char* const SET_MX499_7 = "01 05 1B 57 FF 00 3B 0E";     // coil 6999

class RefusedMemory : public HandledRequests
{
protected:
    void refuse(const char* text)
    {
        Refusal refusal;
        ASSERT_EQ("", parseRefusal(text, refusal));
        m_faults.refusals.push_back(refusal);
    }
    std::string reply(const char* request)
    {
        const std::vector<OutgoingPiece> pieces = handle(request, 0);
        return pieces.empty() ? "" : hexOf(pieces[0].bytes);
    }
};

std::string troubleOf(const char* text)
{
    Refusal refusal;
    return parseRefusal(text, refusal);
}

} // namespace

TEST(RefusalText, RangeCodeAndAccessAreParsed)
{
    Refusal refusal;
    EXPECT_EQ("", parseRefusal("MW500..MW600", refusal));
    EXPECT_EQ(1, refusal.station);
    EXPECT_FALSE(refusal.span.isInput);
    EXPECT_EQ(3250 * 16, refusal.span.first);
    EXPECT_EQ(51 * 16, refusal.span.count);
    EXPECT_EQ(2, refusal.code);
    EXPECT_EQ(REFUSES_EVERYTHING, refusal.access);
    EXPECT_EQ("", parseRefusal("2:IX8.1:255", refusal));
    EXPECT_EQ(2, refusal.station);
    EXPECT_TRUE(refusal.span.isInput);
    EXPECT_EQ(65, refusal.span.first);
    EXPECT_EQ(1, refusal.span.count);
    EXPECT_EQ(255, refusal.code);
    EXPECT_EQ("", parseRefusal("2:QW8:write", refusal));
    EXPECT_EQ(2, refusal.code);
    EXPECT_EQ(REFUSES_WRITES, refusal.access);
    EXPECT_EQ("", parseRefusal("QW8:3:write", refusal));
    EXPECT_EQ(3, refusal.code);
}

TEST(RefusalText, WrongPartIsNamed)
{
    EXPECT_EQ("exception code '0' is not in 1 to 255", troubleOf("MW500:0"));
    EXPECT_EQ("exception code '256' is not in 1 to 255", troubleOf("2:MW500:256:write"));
    EXPECT_EQ("exception code 'read' is not in 1 to 255", troubleOf("MW500:read"));
    EXPECT_EQ("station '248' is not in 1 to 247", troubleOf("248:MW500"));
    for (const char* text : {"", ":", "write", "MW500:", "MW500:2:2", "MW500:write:2", "1:2:MW500",
                             "MW500:2:write:write", "5", "2:"})
        EXPECT_NE("", troubleOf(text)) << text;
}

TEST_F(RefusedMemory, ReadsAndWritesThatTouchItGetItsException)
{
    refuse("MW500..MW600:4");
    EXPECT_EQ("01 86 04 43 A3", reply(WRITE_500));
    EXPECT_EQ("01 83 04 40 F3", reply(READ_500));
    EXPECT_EQ("01 83 04 40 F3", reply(READ_480_TO_518));
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(3250));
    EXPECT_EQ(WRITE, reply(WRITE)); // MW2
    EXPECT_EQ(3, handler().counts().refused);
}

TEST_F(RefusedMemory, CodeIsIllegalAddressByDefault)
{
    refuse("MW500");
    EXPECT_EQ("01 86 02 C3 A1", reply(WRITE_500));
}

TEST_F(RefusedMemory, BitsOfRefusedWordsAreRefused)
{
    refuse("MW500:4");
    EXPECT_EQ("01 85 04 43 53", reply(SET_MX500_0));
    EXPECT_EQ(SET_MX499_7, reply(SET_MX499_7));
}

TEST_F(RefusedMemory, WordOfARefusedBitIsRefused)
{
    refuse("MX500.7:4");
    EXPECT_EQ("01 83 04 40 F3", reply(READ_500));
    EXPECT_EQ(SET_MX500_0, reply(SET_MX500_0)); // another bit of the word
}

TEST_F(RefusedMemory, OnlyWritesAreRefused)
{
    refuse("MW500:4:write");
    EXPECT_EQ("01 03 02 00 00 B8 44", reply(READ_500));
    EXPECT_EQ("01 86 04 43 A3", reply(WRITE_500));
}

TEST_F(RefusedMemory, OtherStationsAnswer)
{
    refuse("2:MW500..MW600");
    EXPECT_EQ(WRITE_500, reply(WRITE_500));
    EXPECT_EQ("02 86 02 33 A1", reply("02 06 0C B2 12 34 27 F9"));
}

TEST_F(RefusedMemory, FirstRefusalDecidesTheCode)
{
    refuse("MW500:4");
    refuse("MW500:3");
    EXPECT_EQ("01 86 04 43 A3", reply(WRITE_500));
}

TEST_F(RefusedMemory, StationThatRefusesABroadcastDoesNotExecuteIt)
{
    refuse("1:MW500:write");
    EXPECT_EQ("", reply("00 06 0C B2 12 34 26 1B"));
    EXPECT_EQ(0, m_stations.find(1)->holdingRegister(3250));
    EXPECT_EQ(0x1234, m_stations.find(2)->holdingRegister(3250));
}

TEST_F(RefusedMemory, RefusalsCanBeTakenBack)
{
    refuse("MW500");
    EXPECT_EQ("01 86 02 C3 A1", reply(WRITE_500));
    handler().refuseNothing();
    EXPECT_EQ(WRITE_500, reply(WRITE_500));
}
