#include "decodedReply.h"

namespace {

class BitDecoding : public DecodedReplyTest
{
protected:
    /// Read values of `count` neighbouring bits, as text "0110".
    static std::string bits(const char* regName, int start, int count)
    {
        std::string out;
        for (int i = 0; i < count; ++i)
            out += readBytes(1, regName, start + i).at(0) != 0 ? '1' : '0';
        return out;
    }

    static int firstAddress()
    {
        return driver.dataAreas.isEmpty() ? -99999 : driver.dataAreas.at(0).address;
    }
};

struct GROUP_CASE
{
    const char* regName;
    int addr;
    int start;
};

const GROUP_CASE GROUPS[] = {
    {"IX", 0, 0},       {"IX", 15, 0},      {"IX", 16, 16},     {"QX", 47, 32},
    {"IX", 3000, 2992}, {"IX", -1, 0},      {"IX", -15, 0},     {"IX", -16, -16},
    {"QX", -17, -16},   {"MX", 3000, 3000}, {"MX", 3007, 3000}, {"MX", 3008, 3000},
    {"MX", 3015, 3000}, {"MX", 3016, 3016}, {"MX", 3040, 3032}, {"MX", 65535, 65528},
    {"MX", 2999, 3000}, {"MX", 2985, 3000}, {"MX", 2984, 2984}, {"MX", 0, 8},
};

} // namespace

TEST_F(BitDecoding, AGroupComesHighByteFirst)
{
    decode(withChecksum({1, 4, 2, 0x80, 0x05}), 16, "IX", 32);
    EXPECT_EQ("1010000000000001", bits("IX", 32, 16));
    EXPECT_EQ(16, int(driver.dataAreas.size()));
}

TEST_F(BitDecoding, OnlyAsManyBitsAreStoredAsWereAskedFor)
{
    decode(withChecksum({1, 4, 2, 0xFF, 0xFF}), 3, "IX", 0);
    EXPECT_EQ("111", bits("IX", 0, 3));
    EXPECT_EQ(3, int(driver.dataAreas.size()));
}

TEST_F(BitDecoding, ABlockIsStoredFromTheFirstBitOfItsGroup)
{
    for (const GROUP_CASE& group : GROUPS) {
        driver.dataAreas.clear();
        decode(withChecksum({1, 4, 2, 0x00, 0x01}), 2, group.regName, group.addr);
        EXPECT_EQ(group.start, firstAddress()) << group.regName << " " << group.addr;
        EXPECT_EQ("10", bits(group.regName, group.start, 2));
    }
}

TEST_F(BitDecoding, OnlyMarkerBitsAreCountedFrom3000)
{
    decodeReplyOfArea(OtherRow("", "1"), bytes({1, 3, 2, 0, 1}), 1, 3, variable(1, "mx", 3007, 1));
    EXPECT_EQ(2992, firstAddress());
}

TEST_F(BitDecoding, AtTheEndsOfTheAddressRangeNothingGoesAstray)
{
    decode(bytes({1, 3, 2, 0, 1}), 1, "IX", LOWEST);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "IX", LOWEST));
    decode(bytes({1, 3, 2, 0, 1}), 1, "IX", HIGHEST);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "IX", HIGHEST - 15));
    // 2147483647 - 3000 lies 7 behind a multiple of 16.
    decode(bytes({1, 3, 2, 0, 1}), 1, "MX", HIGHEST);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "MX", HIGHEST - 7));
    // 3000 less than this wraps around to 2147481648, a multiple of 16.
    decode(bytes({1, 3, 2, 0, 1}), 1, "MX", LOWEST + 1000);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "MX", LOWEST + 1000));
    EXPECT_EQ(4, int(driver.dataAreas.size()));
}

TEST_F(BitDecoding, BitsAreStoredUnderTheWholeName)
{
    decodeReplyOfArea(OtherRow("", "1"), bytes({1, 3, 2, 0, 1}), 1, 3, variable(1, "V_x", 0, 1));
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "V_x", 0));
    EXPECT_EQ(1, int(driver.dataAreas.size()));
}

TEST_F(BitDecoding, BehindAGroupTheUnitsRunBackwardsOverTheReplysHead)
{
    // Bits from 0 on: 0x0F 11110000, 0xF0 00001111, 0xA4 00100101, 0xC2 01000011, 0x81 10000001.
    // 0 to 7 come from byte 4, 8 to 22 from byte 3, 23 to 30 from byte 2, 31 to 38 from byte 1,
    // 39 to 46 from byte 0, each at bit i mod 8.
    decode(bytes({0x81, 0xC2, 0xA4, 0x0F, 0xF0}), 64, "IX", 0);
    EXPECT_EQ("00001111", bits("IX", 0, 8));
    EXPECT_EQ("11110000", bits("IX", 8, 8));
    EXPECT_EQ("1111000", bits("IX", 16, 7));
    EXPECT_EQ("1"
              "0010010",
              bits("IX", 23, 8));
    EXPECT_EQ("1"
              "0100001",
              bits("IX", 31, 8));
    EXPECT_EQ("1"
              "1000000",
              bits("IX", 39, 8));
    EXPECT_EQ("00000000000000000", bits("IX", 47, 17));
}

TEST_F(BitDecoding, UnitsBeforeTheReplysFirstByteAreZero)
{
    for (int i = 47; i < 64; ++i)
        putUnit(1, "QX", i, 1);
    decode(bytes({0xFF, 0xFF, 0xFF, 0xFF, 0xFF}), 64, "QX", 0);
    EXPECT_EQ(std::string(47, '1') + std::string(17, '0'), bits("QX", 0, 64));
}

TEST_F(BitDecoding, BitsMissingInAShortReplyAreZero)
{
    for (int i = 0; i < 16; ++i)
        putUnit(1, "IX", i, 1);
    decode(bytes({1, 4, 2, 0xFF}), 16, "IX", 0);
    EXPECT_EQ("0000000011111111", bits("IX", 0, 16));
}

TEST_F(BitDecoding, ChangedMonitoredBitsAreReportedInOrder)
{
    for (int i = 0; i < 4; ++i)
        putUnit(1, "MX", 3000 + i, i < 2 ? 1u : 0u, 1);
    putUnit(1, "MX", 3004, 0);
    // 3001 falls, 3003 rises, 3004 rises unwatched
    decode(withChecksum({1, 3, 2, 0x00, 0x19}), 5, "MX", 3002);
    EXPECT_EQ("10011", bits("MX", 3000, 5));
    EXPECT_EQ(Notifications({told("MX", 3001), told("MX", 3003)}), takeNotifications());
}

TEST_F(BitDecoding, ABitThatIsNoLongerZeroOrOneIsStoredAsOneAgain)
{
    putUnit(1, "IX", 0, 5, 1);
    decode(withChecksum({1, 4, 2, 0x00, 0x01}), 1, "IX", 0);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "IX", 0));
    EXPECT_EQ(Notifications({told("IX", 0)}), takeNotifications());
}

TEST_F(BitDecoding, InsideTheCallbackTheHostStillReadsTheOldBit)
{
    putUnit(1, "IX", 0, 0, 1);
    putUnit(1, "IX", 1, 1, 1);
    intf_setAddrValueChangeCallBack(readBack);
    decode(withChecksum({1, 4, 2, 0x00, 0x01}), 2, "IX", 0);
    EXPECT_EQ(Bytes({0, 1}), seenByHost());
    EXPECT_EQ("10", bits("IX", 0, 2));
}

TEST_F(BitDecoding, InsideTheCallbackAPendingBitIsAlreadyWithdrawn)
{
    const int index = putPendingWrite(1, "QX", 0, 0, 1);
    driver.dataAreas[index].monitorFlags = 1;
    intf_setAddrValueChangeCallBack(readBack);
    decode(withChecksum({1, 3, 2, 0x00, 0x01}), 1, "QX", 0);
    EXPECT_EQ(Bytes({0}), seenByHost());
}

TEST_F(BitDecoding, TheFirstDataByteIsWhereTheFrameSays)
{
    analyzeFrameOfVal(bytes({0, 0, 0, 0, 0, 0x80, 0x05}), 16, 5, variable(1, "IX", 32, 16));
    EXPECT_EQ("1010000000000001", bits("IX", 32, 16));
}

TEST_F(BitDecoding, TheCallbackMayMakeTheCacheGrow)
{
    for (int i = 0; i < 3; ++i)
        putUnit(1, "IX", i, 0, 1);
    intf_setAddrValueChangeCallBack(readManyUnits);
    decode(withChecksum({1, 4, 2, 0x00, 0x07}), 3, "IX", 0);
    EXPECT_EQ("111", bits("IX", 0, 3));
}
