#include "addressCodec.h"
#include "driverFixture.h"

#include <climits>

class AddressCodec : public DriverTest
{
};

namespace {

enum { UNTOUCHED = 424242 };

struct BitRow
{
    const char* area;
    const char* address;
    int number;
};

struct TextRow
{
    const char* area;
    const char* format;
    const char* address;
    int result;
    int out;
};

int bitNumber(const char* address, const char* area)
{
    return addr_str2int(text(address), text(area));
}

std::string bitText(int number, const char* area)
{
    return addr_int2str(number, text(area)).toStdString();
}

void expectConverted(const TextRow& row)
{
    SCOPED_TRACE(std::string(row.area) + " '" + row.address + "' by " + row.format);
    int out = UNTOUCHED;
    EXPECT_EQ(row.result, a2i(text(row.address), out, text(row.format), text(row.area)));
    EXPECT_EQ(row.out, out);
}

} // namespace

TEST_F(AddressCodec, BitTextIsEightTimesTheBytePlusTheBit)
{
    const BitRow rows[] = {
        {"IX", "12.3", 99},
        {"QX", "12.3", 99},
        {"IX", "0.0", 0},
        {"QX", "511.7", 4095},
        {"IX", "0.7", 7},
        {"IX", "-1.3", -5},
        {"IX", " 12 . 3 ", 99},
        {"IX", "+12.+3", 99},
        {"IX", "0012.003", 99},
        {"QX", "2147483647.0", -8}, // wraps around
        {"QX", "268435456.0", INT_MIN},
        // Markers are shifted by 3000.
        {"MX", "12.3", 3099},
        {"MX", "0.0", 3000},
        {"MX", "7816.7", 65535},
        {"MX", "-1.0", 2992},
        {"MX", "268435455.0", INT_MIN + 2992}, // 2^31 - 8 + 3000 wraps around
        // The bit's range is not tested.
        {"IX", "5.9", 49},
        {"QX", "5.100", 140},
        {"MX", "5.9", 3049},
        {"IX", "5.-2", 38},
    };
    for (const BitRow& row : rows)
        EXPECT_EQ(row.number, bitNumber(row.address, row.area)) << row.area << " " << row.address;
}

TEST_F(AddressCodec, WordAreasHaveNoBitNumber)
{
    for (const char* area : {"MW", "IW", "QW", "", "mx", "XX"}) {
        EXPECT_EQ(0, bitNumber("12.3", area)) << area;
        EXPECT_EQ(0, bitNumber("garbage", area)) << area;
    }
}

TEST_F(AddressCodec, MalformedBitTextIsMinusOne)
{
    for (const char* area : {"MX", "IX", "QX"}) {
        for (const char* address : {"12", "", "1.2.3", "12.", ".3", ".", "..", "a.3", "12.b",
                                    "12,3", "1 2.3", "0x1.3", "2147483648.0", "1.99999999999"})
            EXPECT_EQ(-1, bitNumber(address, area)) << area << " '" << address << "'";
    }
}

TEST_F(AddressCodec, BitNumberIsByteDotBit)
{
    const BitRow rows[] = {
        {"IX", "12.3", 99},
        {"QX", "12.3", 99},
        {"IX", "0.0", 0},
        {"QX", "511.7", 4095},
        {"IX", "268435455.7", INT_MAX},
        // Markers are shifted back by 3000.
        {"MX", "12.3", 3099},
        {"MX", "0.0", 3000},
        {"MX", "7816.7", 65535},
        // Both parts of a negative number are truncated.
        {"IX", "-1.-1", -9},
        {"QX", "0.-1", -1},
        {"IX", "-268435456.0", INT_MIN},
        {"MX", "-1.-2", 2990},
        {"MX", "268435081.0", INT_MIN}, // -2^31 - 3000 wraps around
    };
    for (const BitRow& row : rows)
        EXPECT_EQ(row.address, bitText(row.number, row.area)) << row.area << " " << row.number;
}

TEST_F(AddressCodec, WordAreasHaveNoBitText)
{
    for (const char* area : {"MW", "IW", "QW", "", "mx", "XX"})
        EXPECT_EQ("", bitText(5, area)) << area;
}

TEST_F(AddressCodec, EveryBitAddressComesBackFromItsText)
{
    for (int number = 0; number <= 4095; ++number) {
        ASSERT_EQ(number, addr_str2int(addr_int2str(number, text("IX")), text("IX")));
        ASSERT_EQ(number, addr_str2int(addr_int2str(number, text("QX")), text("QX")));
    }
    for (int number = 3000; number <= 65535; ++number)
        ASSERT_EQ(number, addr_str2int(addr_int2str(number, text("MX")), text("MX")));
}

TEST_F(AddressCodec, WordTextIsHalvedInTheRadixOfTheFormatsLastCharacter)
{
    const TextRow rows[] = {
        {"IW", "DDDD", "100", 1, 50},
        {"QW", "DDDD", "510", 1, 255},
        {"IW", "DDDD", "0", 1, 0},
        {"IW", "DDDD", " 100 ", 1, 50},
        {"IW", "DDDD", "+100", 1, 50},
        {"IW", "DDDD", "00100", 1, 50},
        {"QW", "DDDD", "2147483646", 1, 1073741823},
        // Markers are shifted by 3000.
        {"MW", "DDDD", "100", 1, 3050},
        {"MW", "DDDD", "0", 1, 3000},
        {"MW", "DDDD", "8190", 1, 7095},
        {"MW", "DDDD", "-4", 1, 2998},
        // An odd number fails and is left as it is.
        {"IW", "DDDD", "101", -1, 101},
        {"MW", "DDDD", "101", -1, 101},
        {"QW", "DDDD", "1", -1, 1},
        {"QW", "HHHH", "1F", -1, 31},
        // A negative odd number passes and is truncated.
        {"IW", "DDDD", "-101", 1, -50},
        {"QW", "DDDD", "-1", 1, 0},
        {"MW", "DDDD", "-1", 1, 3000},
        {"MW", "DDDD", "-3", 1, 2999},
        // Formats without a known letter are decimal.
        {"QW", "OOOO", "20", 1, 8},
        {"QW", "O", "20", 1, 8},
        {"QW", "HHHH", "20", 1, 16},
        {"QW", "HHHH", "fe", 1, 127},
        {"QW", "HHHH", "FE", 1, 127},
        {"MW", "HHHH", "20", 1, 3016},
        {"QW", "XXXX", "20", 1, 10},
        {"QW", "hhhh", "20", 1, 10},
        {"QW", "", "20", 1, 10},
        // Digits outside the radix fail.
        {"QW", "OOOO", "70", 1, 28},
        {"QW", "OOOO", "80", -1, 0},
        {"QW", "HHHH", "F0", 1, 120},
        {"QW", "HHHH", "G0", -1, 0},
        {"QW", "DDDD", "90", 1, 45},
        {"QW", "DDDD", "A0", -1, 0},
    };
    for (const TextRow& row : rows)
        expectConverted(row);
}

TEST_F(AddressCodec, MalformedWordTextFailsAndLeavesZero)
{
    for (const char* address : {"", "abc", "12.3", "1 2", "--2", "0x10", "2147483648"}) {
        expectConverted({"IW", "DDDD", address, -1, 0});
        expectConverted({"MW", "DDDD", address, -1, 3000});
    }
}

TEST_F(AddressCodec, MixedFormatTakesTheTextAsABitAndGivesZeroInAWordArea)
{
    const TextRow rows[] = {
        {"IX", "DDDDO", "12.3", 1, 99},      {"MX", "DDDDO", "12.3", 1, 3099},
        {"MX", "DDDDO", "7816.7", 1, 65535}, {"QX", "DH", "12.3", 1, 99},
        {"QX", "ODDD", "12.3", 1, 99},       {"MW", "DDDDO", "12.3", 1, 0},
        {"XX", "DDDDO", "garbage", 1, 0},
    };
    for (const TextRow& row : rows)
        expectConverted(row);
}

TEST_F(AddressCodec, MalformedBitTextLeavesTheNumberUntouched)
{
    for (const char* address : {"12", "1.2.3", "12.", "", "a.b"})
        expectConverted({"IX", "DDDDO", address, -1, UNTOUCHED});
}

TEST_F(AddressCodec, BitTextThatMeansMinusOneCountsAsMalformed)
{
    expectConverted({"IX", "DDDDO", "-1.7", -1, UNTOUCHED});
    expectConverted({"MX", "DDDDO", "-376.7", -1, UNTOUCHED}); // -3008 + 7 + 3000
    expectConverted({"IX", "DDDDO", "-1.6", 1, -2});
}

TEST_F(AddressCodec, FormatOfDifferentCharactersIsThatOfABit)
{
    EXPECT_TRUE(isBitFormat(text("DDDDO")));
    EXPECT_TRUE(isBitFormat(text("DO")));
    EXPECT_FALSE(isBitFormat(text("DDDD")));
    EXPECT_FALSE(isBitFormat(text("O")));
    EXPECT_FALSE(isBitFormat(text("")));
}

TEST_F(AddressCodec, NumberOnTheWireIsTheAddressNumber)
{
    for (const char* area : {"MW", "IW", "QW", "MX", "IX", "QX", "", "XX"}) {
        for (int number : {0, 1, 3000, 65535, -1, INT_MAX, INT_MIN})
            EXPECT_EQ(number, addrOffset(text(area), number)) << area;
    }
}

TEST_F(AddressCodec, TwoHexadecimalCharactersAreOneByte)
{
    EXPECT_EQ(0x00, asc2hex(QByteArray("00"), 0));
    EXPECT_EQ(0x1F, asc2hex(QByteArray("1F"), 0));
    EXPECT_EQ(0xFF, asc2hex(QByteArray("ff"), 0));
    EXPECT_EQ(0xAB, asc2hex(QByteArray("..Ab.."), 2));
    EXPECT_EQ(0x90, asc2hex(QByteArray("x90"), 1));
}

TEST_F(AddressCodec, EveryCharacterHasItsNibble)
{
    for (int code = 0; code < 128; ++code) {
        int nibble = 0;
        if (code >= 48 && code <= 63) nibble = code & 15;
        if (code > 64) nibble = (code - 55) & 15;
        const QByteArray twice(2, static_cast<char>(code));
        EXPECT_EQ(nibble * 17, asc2hex(twice, 0)) << "code " << code;
    }
}

TEST_F(AddressCodec, CharactersBesideTheDigitsHaveTheirOddNibbles)
{
    EXPECT_EQ(0xAF, asc2hex(QByteArray(":?"), 0)); // codes 58 and 63
    EXPECT_EQ(0x00, asc2hex(QByteArray("/@"), 0)); // codes 47 and 64
    EXPECT_EQ(0x01, asc2hex(QByteArray("@1"), 0));
    EXPECT_EQ(0x0A, asc2hex(QByteArray("GA"), 0));
    EXPECT_EQ(0x00, asc2hex(QByteArray("GG"), 0)); // (71 - 55) & 15
}

TEST_F(AddressCodec, CharactersOutsideTheTextCountAsZero)
{
    EXPECT_EQ(0xA0, asc2hex(QByteArray("1A"), 1));
    EXPECT_EQ(0x01, asc2hex(QByteArray("1A"), -1));
    for (int at : {2, -2, INT_MAX, INT_MIN})
        EXPECT_EQ(0x00, asc2hex(QByteArray("1A"), at)) << at;
    EXPECT_EQ(0x00, asc2hex(QByteArray(), 0));
}
