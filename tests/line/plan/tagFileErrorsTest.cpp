#include "builtDriver.h"
#include "plan/tagFile.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

// The error messages for unusable tag files.

namespace {

const char* const HEADER = "name,station,area,address,type,comment\n";

/// The error message for the text; empty: no error.
std::string complaintOf(const QByteArray& csv)
{
    try {
        readTags(csv, driver());
    } catch (const TagFileError& error) {
        return error.what();
    }
    return std::string();
}

std::string complaintOfLines(const QByteArray& lines)
{
    return complaintOf(HEADER + lines);
}

struct BadLine
{
    const char* line;
    const char* reason;
};

std::ostream& operator<<(std::ostream& out, const BadLine& bad)
{
    return out << bad.line;
}

} // namespace

class TagFileBadLines : public testing::TestWithParam<BadLine>
{
};

TEST_P(TagFileBadLines, AreReportedWithTheReason)
{
    EXPECT_EQ(std::string("line 2: ") + GetParam().reason, complaintOfLines(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    , TagFileBadLines,
    testing::Values(
        BadLine{"a,1,MW,101,int16,", "MW101: odd: a word starts at an even number"},
        BadLine{"a,1,MW,8192,int16,", "MW8192: past the end of MW, whose last address is 8190"},
        BadLine{"a,1,MW,-2,int16,", "MW-2: below 0, the lowest address"},
        BadLine{"a,1,MW,,int16,", "MW: malformed: MW takes an even number, from 0 to 8190"},
        BadLine{"a,1,QW,510,int32,",
                "QW510: past the end of QW: the last address that leaves room for 2 words is 508"},
        BadLine{"a,1,MX,7817.0,bool,",
                "MX7817.0: past the end of MX, whose last address is 7816.7"},
        BadLine{"a,1,IX,4,bool,",
                "IX4: malformed: IX takes a byte, a dot and a bit, from 0.0 to 511.7"},
        BadLine{"a,1,MX,12.9,bool,", "MX12.9: the bit is 0 to 7; did you mean MX13.1?"},
        BadLine{"a,1,MW,0,bool,", "MW holds words, which are not of type bool"},
        BadLine{"a,1,MX,0.0,int16,", "MX holds bits, which are not of type int16"},
        BadLine{"a,1,ZZ,0,int32,", "there is no area \"ZZ\"; the areas are MW, IW, QW, MX, IX, QX"},
        BadLine{"a,0,MW,0,int16,", "station \"0\" is no number from 1 to 247"},
        BadLine{"a,248,MW,0,int16,", "station \"248\" is no number from 1 to 247"},
        BadLine{"a,one,MW,0,int16,", "station \"one\" is no number from 1 to 247"},
        BadLine{",1,MW,0,int16,", "the name is missing"},
        BadLine{"\"a\tb\",1,MW,0,int16,", "the name has a control character"},
        BadLine{"a,1,MW,0,int16", "5 fields, but the first line names 6 columns"},
        BadLine{"a,1,MW,0,int16,,", "7 fields, but the first line names 6 columns"},
        BadLine{"a,1,MW,0,int16,it is 5\" long", "a field with a double quote is not in quotes"},
        BadLine{"a,1,MW,0,int16,\"b\"c", "there is text behind a closing quote"},
        BadLine{"a,1,MW,0,int16,\"b", "a quoted field has no closing quote"},
        BadLine{"F\xFC,1,MW,0,int16,", "the text is not UTF-8"}));

class TagFileBadTypes : public testing::TestWithParam<const char*>
{
};

TEST_P(TagFileBadTypes, AreReportedWithTheKnownTypes)
{
    EXPECT_EQ(std::string("line 2: type \"") + GetParam() +
                  "\" is unknown; there are bool, int16, uint16, int32, uint32, float32, hex and "
                  "bin; int32, uint32 and float32 also with :low or :high, and uint16 and uint32 "
                  "with :hex or :bin at the end",
              complaintOfLines(QByteArray("a,1,MW,0,") + GetParam() + ","));
}

INSTANTIATE_TEST_SUITE_P(, TagFileBadTypes,
                         testing::Values("", "int8", "INT16", "int16:high", "int32:", "int32:mid",
                                         "int32:low:high", "bool:low", "decimal", "uint16:decimal",
                                         "int16:hex", "float32:hex", "hex:bin", "hex:high",
                                         "uint32:hex:high", "uint32:hex:bin", "bool:bin",
                                         "hex:", ":hex"));

class TagFileAddressNames : public testing::TestWithParam<const char*>
{
};

// A name that is an address must be the address of its own line.
TEST_P(TagFileAddressNames, OfOtherPlacesAreRefused)
{
    const std::string name = GetParam();
    EXPECT_EQ("line 2: the name \"" + name + "\" is the address of another place or type",
              complaintOfLines(QByteArray(GetParam()) + ",1,MW,100,int16,"));
}

INSTANTIATE_TEST_SUITE_P(, TagFileAddressNames,
                         testing::Values("MW4", "mw4", "%MW4", "2:MW100", "MX0.0", "QW100",
                                         "MW4:int16", "MW100:float32", "MW100:uint16",
                                         "MW100..MW102", "MW100+2"));

class TagFileOwnAddressNames : public testing::TestWithParam<const char*>
{
};

TEST_P(TagFileOwnAddressNames, AreAccepted)
{
    EXPECT_EQ("", complaintOfLines(QByteArray(GetParam()) + ",1,MW,100,int16,"));
}

INSTANTIATE_TEST_SUITE_P(, TagFileOwnAddressNames,
                         testing::Values("MW100", "%mw100", "1:MW100", "MW100:int16", "MW", "MW101",
                                         "MX12.9", "MW4 old", "Mwh 4", "4", "MW100 level"));

TEST(TagFile, BadRateIsReportedWithTheKnownRates)
{
    EXPECT_EQ("line 2: rate \"10\" is unknown; there are fast, once and durations such as 500ms, "
              "10s and 5m",
              complaintOf("name,station,area,address,type,rate\na,1,MW,0,int16,10\n"));
}

TEST(TagFile, BadAccessIsReportedWithTheKnownOnes)
{
    for (const char* const access : {"wr", "RW", "read", "1"})
        EXPECT_EQ(std::string("line 2: access \"") + access + "\" is unknown; there are rw and ro",
                  complaintOf(QByteArray("name,station,area,address,type,access\na,1,MW,0,int16,") +
                              access + "\n"));
}

TEST(TagFile, AccessToWriteWhereNothingCanBeWrittenIsReported)
{
    EXPECT_EQ("line 2: access \"rw\": area IW is read-only\n"
              "line 4: access \"rw\": area IX is read-only",
              complaintOf("name,station,area,address,type,access\n"
                          "a,1,IW,0,int16,rw\n"
                          "b,1,IW,0,int16,ro\n"
                          "c,1,IX,0.0,bool,rw\n"
                          "d,1,QX,0.0,bool,rw\n"));
}

TEST(TagFile, BadDeadbandIsReported)
{
    for (const char* const deadband : {"-1", "wide", "nan", "inf", "1e999", "0x10", "5%"})
        EXPECT_EQ(
            std::string("line 2: deadband \"") + deadband + "\" is no number of 0 or more",
            complaintOf(QByteArray("name,station,area,address,type,deadband\na,1,MW,0,int16,") +
                        deadband + "\n"));
}

TEST(TagFile, ReportsAllBadLinesAtOnce)
{
    EXPECT_EQ("line 2: MW holds words, which are not of type bool\n"
              "line 5: the name is missing; station \"999\" is no number from 1 to 247\n"
              "line 8: 1 fields, but the first line names 6 columns",
              complaintOfLines("a,1,MW,0,bool,\n"
                               "b,1,MW,0,int16,\"two\n"
                               "lines\"\n"
                               ",999,MW,0,int16,\n"
                               "c,1,MW,0,int16,\n"
                               "#\n"
                               "d\n"));
}

TEST(TagFile, DuplicateNameIsReportedWithTheFirstLine)
{
    EXPECT_EQ("line 4: name \"a\" stands on line 2 already\n"
              "line 5: name \"a\" stands on line 2 already",
              complaintOfLines("a,1,MW,0,int16,\n"
                               "b,1,MW,0,int16,\n"
                               "a,1,MW,2,int16,\n"
                               "a,1,MW,4,int16,\n"));
}

TEST(TagFile, UnclosedQuoteDoesNotHideLaterErrors)
{
    EXPECT_EQ("line 3: a quoted field has no closing quote\n"
              "line 5: the name is missing",
              complaintOfLines("a,1,MW,0,int16,\n"
                               "b,1,MW,2,int16,\"open\n"
                               "c,1,MW,4,int16,\n"
                               ",1,MW,6,int16,\n"));
}

TEST(TagFile, MissingColumnsAreOneError)
{
    EXPECT_EQ("line 1: there is no column station; there is no column type; \"kind\" is no "
              "column; the columns are name, station, area, address, type and, if wanted, comment, "
              "rate, access and deadband",
              complaintOf("name,area,address,kind\na,MW,0,int16\nb,MW,1,int16\n"));
}

TEST(TagFile, RepeatedColumnIsAnError)
{
    EXPECT_EQ("line 2: there are several columns name; the columns are name, station, area, "
              "address, type and, if wanted, comment, rate, access and deadband",
              complaintOf("#\nname,station,name,area,address,type\n"));
}

TEST(TagFile, EmptyFileLacksItsHeader)
{
    EXPECT_EQ("line 1: there is no line with the column names", complaintOf(""));
}
