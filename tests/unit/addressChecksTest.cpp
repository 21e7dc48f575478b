#include "addressChecks.h"

#include "driverFixture.h"

#include <climits>
#include <utility>

namespace {

enum { BIT_TYPE = -1, WORD_TYPE = 2, READING = 0, UNTOUCHED = -77 };

struct AREA
{
    const char* name;
    int base;
    int lastByte;
};

const AREA WORD_AREAS[] = {{"MW", 3000, 8190}, {"IW", 0, 510}, {"QW", 0, 510}};
const AREA BIT_AREAS[] = {{"MX", 3000, 7816}, {"IX", 0, 511}, {"QX", 0, 511}};

/// Result code and address number.
typedef std::pair<int, int> Verdict;

Verdict check(const char* area, const QString& addrText, int dataType, int count = 1,
              int accessMode = READING, int addr = UNTOUCHED)
{
    const int code = intf_checkAddr(text(area), addrText, addr, dataType, count, accessMode);
    return {code, addr};
}

Verdict checkWord(const char* area, const char* addrText, int count = 1)
{
    return check(area, text(addrText), WORD_TYPE, count);
}

Verdict checkBit(const char* area, const char* addrText, int count = 1)
{
    return check(area, text(addrText), BIT_TYPE, count);
}

Verdict checkValidity(const char* area, const QString& addrText, int isWord, int count = 1,
                      int addr = UNTOUCHED)
{
    const int code = intf_checkAddrValidity(text(area), addrText, addr, count, isWord);
    return {code, addr};
}

QString bitText(int byte, int bit)
{
    return text("%1.%2").arg(byte).arg(bit);
}

Verdict refused(int addr)
{
    return {ADDRESS_OUT_OF_RANGE, addr};
}

Verdict valid(int addr)
{
    return {ADDRESS_VALID, addr};
}

} // namespace

class AddressChecks : public DriverTest
{
};

TEST_F(AddressChecks, ResultCodesAreTheInterfacesNumbers)
{
    EXPECT_EQ(0, int(ADDRESS_VALID));
    EXPECT_EQ(1, int(ADDRESS_KIND_MISMATCH));
    EXPECT_EQ(2, int(ADDRESS_OUT_OF_RANGE));
    EXPECT_EQ(3, int(ADDRESS_UNKNOWN_AREA));
    EXPECT_EQ(5, int(ADDRESS_TYPE_NOT_ALLOWED));
    EXPECT_EQ(6, int(ADDRESS_READ_ONLY));
}

TEST_F(AddressChecks, EveryEvenByteOffsetOfAWordAreaIsItsWordNumber)
{
    for (const AREA& area : WORD_AREAS) {
        SCOPED_TRACE(area.name);
        for (int offset = 0; offset <= area.lastByte; offset += 2) {
            const Verdict expected = valid(area.base + offset / 2);
            ASSERT_EQ(expected, check(area.name, QString::number(offset), WORD_TYPE));
            ASSERT_EQ(expected, checkValidity(area.name, QString::number(offset), 1));
        }
    }
}

TEST_F(AddressChecks, EveryOddByteOffsetOfAWordAreaIsRefusedAndLeftAsTyped)
{
    for (const AREA& area : WORD_AREAS) {
        SCOPED_TRACE(area.name);
        for (int offset = 1; offset <= area.lastByte + 1; offset += 2) {
            ASSERT_EQ(refused(offset), check(area.name, QString::number(offset), WORD_TYPE));
            ASSERT_EQ(refused(offset), checkValidity(area.name, QString::number(offset), 1));
        }
    }
}

TEST_F(AddressChecks, EveryBitOfABitAreaIsItsBitNumber)
{
    for (const AREA& area : BIT_AREAS) {
        SCOPED_TRACE(area.name);
        for (int byte = 0; byte <= area.lastByte; ++byte) {
            for (int bit = 0; bit < 8; ++bit) {
                const Verdict expected = valid(area.base + 8 * byte + bit);
                ASSERT_EQ(expected, check(area.name, bitText(byte, bit), BIT_TYPE));
                ASSERT_EQ(expected, checkValidity(area.name, bitText(byte, bit), 0));
            }
        }
    }
}

TEST_F(AddressChecks, TheFirstAddressPastAnAreaIsRefusedWithItsNumber)
{
    for (const AREA& area : WORD_AREAS) {
        SCOPED_TRACE(area.name);
        const QString past = QString::number(area.lastByte + 2);
        const Verdict expected = refused(area.base + area.lastByte / 2 + 1);
        EXPECT_EQ(expected, check(area.name, past, WORD_TYPE));
        EXPECT_EQ(expected, checkValidity(area.name, past, 1));
    }
    for (const AREA& area : BIT_AREAS) {
        SCOPED_TRACE(area.name);
        const QString past = bitText(area.lastByte + 1, 0);
        const Verdict expected = refused(area.base + 8 * area.lastByte + 8);
        EXPECT_EQ(expected, check(area.name, past, BIT_TYPE));
        EXPECT_EQ(expected, checkValidity(area.name, past, 0));
    }
}

TEST_F(AddressChecks, AnAddressBelowTheAreaIsRefusedWithItsNumber)
{
    EXPECT_EQ(refused(2999), checkWord("MW", "-2"));
    EXPECT_EQ(refused(-1), checkWord("IW", "-2"));
    EXPECT_EQ(refused(2999), checkBit("MX", "-1.7"));
    EXPECT_EQ(refused(-2), checkBit("QX", "-1.6")); // -1 stands for a malformed text
    EXPECT_EQ(refused(2999), checkValidity("MW", text("-2"), 1));
    EXPECT_EQ(refused(2999), checkValidity("MX", text("-1.7"), 0));
}

TEST_F(AddressChecks, ANegativeOddByteOffsetIsHalvedTowardsZero)
{
    EXPECT_EQ(valid(0), checkWord("IW", "-1"));
    EXPECT_EQ(valid(3000), checkWord("MW", "-1"));
}

TEST_F(AddressChecks, ABitDigitAboveSevenCountsOn)
{
    EXPECT_EQ(valid(49), checkBit("IX", "5.9"));
    EXPECT_EQ(valid(4095), checkBit("IX", "510.15"));
    EXPECT_EQ(refused(4096), checkBit("IX", "510.16"));
}

TEST_F(AddressChecks, AMalformedBitTextLeavesTheAddressAlone)
{
    for (const char* malformed : {"12", "1.2.3", "12.", ".3", "a.b", ""}) {
        SCOPED_TRACE(malformed);
        EXPECT_EQ(refused(UNTOUCHED), checkBit("IX", malformed));
        EXPECT_EQ(refused(UNTOUCHED), checkValidity("MX", text(malformed), 0));
    }
}

TEST_F(AddressChecks, AMalformedWordTextLeavesTheAreasFirstAddress)
{
    for (const char* malformed : {"", "abc", "10.0", "0x10", "1 0"}) {
        SCOPED_TRACE(malformed);
        EXPECT_EQ(refused(0), checkWord("IW", malformed));
        EXPECT_EQ(refused(3000), checkWord("MW", malformed));
    }
}

TEST_F(AddressChecks, TheLastUnitOfAVariableMayNotPassTheAreasEnd)
{
    struct
    {
        const char* area;
        const char* addrText;
        int dataType;
        int addr;
        int units;
    } const rows[] = {
        {"MW", "0", WORD_TYPE, 3000, 4096},   {"MW", "8190", WORD_TYPE, 7095, 1},
        {"IW", "0", WORD_TYPE, 0, 256},       {"QW", "500", WORD_TYPE, 250, 6},
        {"MX", "0.0", BIT_TYPE, 3000, 62536}, {"MX", "7816.0", BIT_TYPE, 65528, 8},
        {"IX", "511.7", BIT_TYPE, 4095, 1},   {"QX", "0.0", BIT_TYPE, 0, 4096},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.area) + " " + row.addrText);
        const QString addrText = text(row.addrText);
        const int isWord = row.dataType == WORD_TYPE;
        EXPECT_EQ(valid(row.addr), check(row.area, addrText, row.dataType, row.units));
        EXPECT_EQ(refused(row.addr), check(row.area, addrText, row.dataType, row.units + 1));
        EXPECT_EQ(valid(row.addr), checkValidity(row.area, addrText, isWord, row.units));
        EXPECT_EQ(refused(row.addr), checkValidity(row.area, addrText, isWord, row.units + 1));
    }
}

TEST_F(AddressChecks, AVariableOfNoUnitsMayStandRightBehindTheArea)
{
    EXPECT_EQ(valid(256), checkWord("IW", "512", 0));
    EXPECT_EQ(refused(256), checkWord("IW", "512", 1));
    EXPECT_EQ(refused(257), checkWord("IW", "514", 0));
}

TEST_F(AddressChecks, TheLargestAndTheSmallestCountDoNotOverflow)
{
    EXPECT_EQ(refused(255), checkWord("IW", "510", INT_MAX));
    EXPECT_EQ(refused(65535), checkBit("MX", "7816.7", INT_MAX));
    EXPECT_EQ(valid(255), checkWord("IW", "510", INT_MIN));
    EXPECT_EQ(2, check("ZZ", text("0"), WORD_TYPE, INT_MAX, READING, INT_MAX).first);
}

TEST_F(AddressChecks, AVariableOfTheOtherKindIsRefusedBeforeAnythingElse)
{
    const Verdict mismatch = {ADDRESS_KIND_MISMATCH, UNTOUCHED};
    EXPECT_EQ(mismatch, checkWord("IX", "0.0"));
    EXPECT_EQ(mismatch, checkBit("MW", "0"));
    EXPECT_EQ(mismatch, check("IX", text("?"), WORD_TYPE, 1, 1));
    EXPECT_EQ(mismatch, checkValidity("MW", text("0"), 0));
    for (int isWord : {1, 2, -1}) {
        EXPECT_EQ(mismatch, checkValidity("IX", text("0.0"), isWord));
        EXPECT_EQ(valid(1), checkValidity("QW", text("2"), isWord));
    }
}

TEST_F(AddressChecks, EveryDataTypeButTheBitIsAWord)
{
    for (int dataType : {0, 1, 2, 3, 4, 7, 9, 100, -2, INT_MIN, INT_MAX}) {
        SCOPED_TRACE(dataType);
        EXPECT_EQ(valid(1), check("QW", text("2"), dataType));
        EXPECT_EQ(ADDRESS_KIND_MISMATCH, check("QX", text("0.1"), dataType).first);
    }
}

TEST_F(AddressChecks, InputAreasCannotBeWritten)
{
    const Verdict readOnly = {ADDRESS_READ_ONLY, UNTOUCHED};
    for (int writing : {1, 2}) {
        SCOPED_TRACE(writing);
        EXPECT_EQ(readOnly, check("IW", text("0"), WORD_TYPE, 1, writing));
        EXPECT_EQ(readOnly, check("IX", text("0.0"), BIT_TYPE, 1, writing));
        EXPECT_EQ(readOnly, check("IW", text("malformed"), WORD_TYPE, 1, writing));
    }
}

TEST_F(AddressChecks, OnlyAccessModesOneAndTwoAreWrites)
{
    for (int reading : {0, 3, -1}) {
        SCOPED_TRACE(reading);
        EXPECT_EQ(valid(0), check("IW", text("0"), WORD_TYPE, 1, reading));
    }
}

TEST_F(AddressChecks, OutputAndMarkerAreasCanBeWritten)
{
    for (int writing : {1, 2}) {
        SCOPED_TRACE(writing);
        EXPECT_EQ(valid(0), check("QW", text("0"), WORD_TYPE, 1, writing));
        EXPECT_EQ(valid(3000), check("MW", text("0"), WORD_TYPE, 1, writing));
        EXPECT_EQ(valid(0), check("QX", text("0.0"), BIT_TYPE, 1, writing));
        EXPECT_EQ(valid(3000), check("MX", text("0.0"), BIT_TYPE, 1, writing));
    }
}

TEST_F(AddressChecks, AnUnknownAreaIsReportedOnlyBehindItsRangeTest)
{
    struct
    {
        int addr;
        int count;
        int code;
    } const rows[] = {
        {0, 1, ADDRESS_UNKNOWN_AREA}, {0, 2, ADDRESS_OUT_OF_RANGE},  {1, 1, ADDRESS_OUT_OF_RANGE},
        {1, 0, ADDRESS_UNKNOWN_AREA}, {-1, 1, ADDRESS_OUT_OF_RANGE}, {0, -5, ADDRESS_UNKNOWN_AREA},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.addr << " x" << row.count);
        const Verdict expected = {row.code, row.addr};
        EXPECT_EQ(expected, check("ZZ", text("4"), WORD_TYPE, row.count, READING, row.addr));
        EXPECT_EQ(expected, checkValidity("ZZ", text("4"), 1, row.count, row.addr));
    }
}

TEST_F(AddressChecks, AreaNamesAreExact)
{
    for (const char* name : {"mw", "", "MW_bit", " MW", "M"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ADDRESS_UNKNOWN_AREA, check(name, text("0"), WORD_TYPE, 1, READING, 0).first);
        EXPECT_EQ(ADDRESS_UNKNOWN_AREA, checkValidity(name, text("0"), 1, 1, 0).first);
    }
}
