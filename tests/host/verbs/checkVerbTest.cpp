#include "verbs/addressVerbs.h"

#include "verbOutput.h"

#include <gtest/gtest.h>

// Address numbers and ranges as in the table of the driver's header.

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

struct CheckRow
{
    const char* area;
    const char* address;
    int count;
    bool write;
    const char* words;
};

class CheckVerb : public testing::Test
{
protected:
    void expectChecked(bool valid, std::initializer_list<CheckRow> rows)
    {
        for (const CheckRow& row : rows) {
            bool result = !valid;
            const std::string line = printed([&](std::FILE* out) {
                result = printCheck(out, m_driver, text(row.area), text(row.address), row.count,
                                    row.write, false);
            });
            EXPECT_EQ(std::string(row.words) + "\n", line);
            EXPECT_EQ(valid, result) << row.words;
        }
    }

    QJsonObject checkedObject(const char* area, const char* address, int count, bool write)
    {
        return objectOf(printed([&](std::FILE* out) {
            printCheck(out, m_driver, text(area), text(address), count, write, true);
        }));
    }

    const DriverLibrary m_driver{QString::fromLatin1(KAKB_DRIVER_FILE)};
};

} // namespace

TEST_F(CheckVerb, ShowsThePlaceOfAWord)
{
    expectChecked(
        true,
        {{"MW", "100", 1, false,
          "MW 100: valid, address number 3050, holding register 3050 (function 3, written by 6)"},
         {"MW", "100", 4, true,
          "MW 100: valid, address number 3050, holding registers 3050 to 3053 (function 3, written "
          "by 6 or 16)"},
         {"MW", "8190", 1, false,
          "MW 8190: valid, address number 7095, holding register 7095 (function 3, written by 6)"},
         {"QW", "0", 1, true,
          "QW 0: valid, address number 0, holding register 0 (function 3, written by 6)"},
         {"IW", "510", 1, false,
          "IW 510: valid, address number 255, input register 255 (function 4)"}});
}

TEST_F(CheckVerb, ShowsThePlaceOfABit)
{
    // Bit k of word w is bit 16 w + k of the same memory.
    expectChecked(
        true, {{"MX", "12.3", 1, true,
                "MX 12.3: valid, address number 3099, bit 3 of holding register 3006 (function 3), "
                "written as coil 3099 (function 5)"},
               {"QX", "1.7", 2, true,
                "QX 1.7: valid, address number 15, 2 bits from bit 15 on in holding registers 0 to "
                "1 (function 3), written as coil 15 (function 5 or 15)"},
               {"IX", "511.7", 1, false,
                "IX 511.7: valid, address number 4095, bit 15 of input register 255 (function 4)"},
               {"MX", "7816.7", 1, false,
                "MX 7816.7: valid, address number 65535, bit 7 of holding register 6908 (function "
                "3), written as coil 65535 (function 5)"}});
}

TEST_F(CheckVerb, ShowsAnAddressInNormalForm)
{
    expectChecked(true, {{"QX", "013.01", 1, false,
                          "QX 13.1: valid, address number 105, bit 9 of holding register 6 "
                          "(function 3), written as coil 105 (function 5)"}});
}

TEST_F(CheckVerb, RefusesABitAboveSevenAndNamesTheBitThatTheDriverWouldTake)
{
    expectChecked(
        false,
        {{"QX", "12.9", 1, false, "QX 12.9: not valid: the bit is 0 to 7; did you mean QX13.1?"},
         {"MX", "0.8", 1, true, "MX 0.8: not valid: the bit is 0 to 7; did you mean MX1.0?"},
         {"QX", "511.9", 1, false, "QX 511.9: not valid: the bit is 0 to 7"}});
}

TEST_F(CheckVerb, SaysThatAnAreaIsReadOnly)
{
    expectChecked(false, {{"IW", "0", 1, true, "IW 0: not valid: IW is read-only"},
                          {"IX", "0.0", 1, true, "IX 0.0: not valid: IX is read-only"}});
}

TEST_F(CheckVerb, SaysThatABitWouldBeWrittenToTheMarkers)
{
    const char* const why =
        ": not valid: QX 375.0 and above can be read but not written: their coils are those of "
        "the markers";
    expectChecked(false, {{"QX", "375.0", 1, true, ("QX 375.0" + std::string(why)).c_str()},
                          {"QX", "511.7", 1, true, ("QX 511.7" + std::string(why)).c_str()},
                          {"QX", "374.7", 2, true, ("QX 374.7" + std::string(why)).c_str()}});
    expectChecked(true, {{"QX", "374.7", 1, true,
                          "QX 374.7: valid, address number 2999, bit 7 of holding register 187 "
                          "(function 3), written as coil 2999 (function 5)"},
                         {"QX", "375.0", 1, false,
                          "QX 375.0: valid, address number 3000, bit 8 of holding register 187 "
                          "(function 3, not to be written)"}});
    EXPECT_FALSE(checkedObject("QX", "375.0", 1, true)[text("valid")].toBool(true));
    EXPECT_FALSE(checkedObject("QX", "375.0", 1, false).contains(text("coil")));
}

TEST_F(CheckVerb, SaysThatAWordAddressIsOdd)
{
    expectChecked(
        false,
        {{"MW", "101", 1, false, "MW 101: not valid: odd: a word starts at an even number"},
         {"IW", "9999", 1, false, "IW 9999: not valid: odd: a word starts at an even number"}});
}

TEST_F(CheckVerb, SaysThatAnAddressIsMalformed)
{
    const char* const words = ": not valid: malformed: MW takes an even number, from 0 to 8190";
    for (const char* address : {"", "x", "1.2", "0x10", "12 34"})
        expectChecked(false,
                      {{"MW", address, 1, false, ("MW " + std::string(address) + words).c_str()}});
    expectChecked(false, {{"QX", "12", 1, false,
                           "QX 12: not valid: malformed: QX takes a byte, a dot and a bit, from "
                           "0.0 to 511.7"},
                          {"QX", "1.x", 1, false,
                           "QX 1.x: not valid: malformed: QX takes a byte, a dot and a bit, from "
                           "0.0 to 511.7"}});
}

TEST_F(CheckVerb, SaysThatAnAddressIsBelowTheLowest)
{
    expectChecked(false,
                  {{"MW", "-2", 1, false, "MW -2: not valid: below 0, the lowest address"},
                   {"QX", "-1.0", 1, false, "QX -1.0: not valid: below 0.0, the lowest address"}});
}

TEST_F(CheckVerb, NamesTheLastAddressThatFits)
{
    expectChecked(
        false,
        {{"MW", "8192", 1, false,
          "MW 8192: not valid: past the end of MW, whose last address is 8190"},
         {"MW", "8190", 2, false,
          "MW 8190: not valid: past the end of MW: the last address that leaves room for 2 words "
          "is "
          "8188"},
         {"QX", "511.1", 16, false,
          "QX 511.1: not valid: past the end of QX: the last address that leaves room for 16 bits "
          "is 510.0"},
         {"MX", "99999999999.0", 1, false,
          "MX 99999999999.0: not valid: past the end of MX, whose last address is 7816.7"}});
}

TEST_F(CheckVerb, TheLastAddressThatFitsIsValidWithThatCount)
{
    for (const CheckRow& row :
         {CheckRow{"MW", "8188", 2, false, ""}, CheckRow{"QX", "510.0", 16, false, ""},
          CheckRow{"MW", "0", 4096, false, ""}}) {
        const QJsonObject fits = checkedObject(row.area, row.address, row.count, false);
        EXPECT_TRUE(fits[text("valid")].toBool()) << row.area;
        const QJsonObject more = checkedObject(row.area, row.address, row.count + 1, false);
        EXPECT_FALSE(more[text("valid")].toBool()) << row.area;
    }
}

TEST_F(CheckVerb, SaysThatACountExceedsTheArea)
{
    expectChecked(false, {{"MW", "0", 4097, false, "MW 0: not valid: MW has only 4096 words"},
                          {"IW", "0", 65536, false, "IW 0: not valid: IW has only 256 words"},
                          {"QX", "0.0", 4097, false, "QX 0.0: not valid: QX has only 4096 bits"}});
}

TEST_F(CheckVerb, NamesTheKnownAreas)
{
    for (int count : {1, 2, 65536}) // for two or more units the driver says "out of range"
        expectChecked(false,
                      {{"DW", "0", count, false,
                        "DW 0: not valid: there is no area \"DW\"; the areas are MW, IW, QW, "
                        "MX, IX, QX"}});
}

TEST_F(CheckVerb, JsonHasNumberAndPlace)
{
    const QJsonObject bit = checkedObject("MX", "12.3", 1, true);
    EXPECT_TRUE(bit[text("valid")].toBool());
    EXPECT_EQ(0, bit[text("result")].toInt(-1));
    EXPECT_EQ(3099, bit[text("number")].toInt());
    EXPECT_EQ(text("holding registers"), bit[text("table")].toString());
    EXPECT_EQ(3006, bit[text("firstRegister")].toInt());
    EXPECT_EQ(3006, bit[text("lastRegister")].toInt());
    EXPECT_EQ(3, bit[text("bit")].toInt());
    EXPECT_EQ(3099, bit[text("coil")].toInt());
    const QJsonObject words = checkedObject("IW", "20", 5, false);
    EXPECT_EQ(text("input registers"), words[text("table")].toString());
    EXPECT_EQ(10, words[text("firstRegister")].toInt());
    EXPECT_EQ(14, words[text("lastRegister")].toInt());
    EXPECT_EQ(5, words[text("count")].toInt());
    EXPECT_FALSE(words.contains(text("bit")));
}

TEST_F(CheckVerb, JsonHasTheReason)
{
    const QJsonObject object = checkedObject("IW", "0", 1, true);
    EXPECT_FALSE(object[text("valid")].toBool(true));
    EXPECT_EQ(ADDRESS_READ_ONLY, object[text("result")].toInt());
    EXPECT_EQ(text("IW is read-only"), object[text("reason")].toString());
    EXPECT_FALSE(object.contains(text("number")));
}
