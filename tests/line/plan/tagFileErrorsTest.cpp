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
        BadLine{"a,1,MW,101,int16,",
                "address 101 of MW is odd, malformed or out of range 0 to 8190"},
        BadLine{"a,1,MW,8192,int16,",
                "address 8192 of MW is odd, malformed or out of range 0 to 8190"},
        BadLine{"a,1,MW,-2,int16,", "address -2 of MW is odd, malformed or out of range 0 to 8190"},
        BadLine{"a,1,MW,,int16,", "address \"\" of MW is odd, malformed or out of range 0 to 8190"},
        BadLine{"a,1,QW,510,int32,",
                "address 510 of QW is odd, malformed or out of range 0 to 510 with its two words"},
        BadLine{"a,1,MX,7817.0,bool,",
                "address 7817.0 of MX is malformed or out of range 0.0 to 7816.7"},
        BadLine{"a,1,IX,4,bool,", "address 4 of IX is malformed or out of range 0.0 to 511.7"},
        BadLine{"a,1,MW,0,bool,", "MW holds words, which are not of type bool"},
        BadLine{"a,1,MX,0.0,int16,", "MX holds bits, which are not of type int16"},
        BadLine{"a,1,ZZ,0,int32,", "area \"ZZ\" is unknown; there are MW, IW, QW, MX, IX, QX"},
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
                  "\" is unknown; there are bool, int16, uint16, int32, uint32 and float32, the "
                  "last three also with :low or :high",
              complaintOfLines(QByteArray("a,1,MW,0,") + GetParam() + ","));
}

INSTANTIATE_TEST_SUITE_P(, TagFileBadTypes,
                         testing::Values("", "int8", "INT16", "int16:high", "int32:", "int32:mid",
                                         "int32:low:high", "bool:low"));

TEST(TagFile, BadRateIsReportedWithTheKnownRates)
{
    EXPECT_EQ("line 2: rate \"10\" is unknown; there are fast, once and durations such as 500ms, "
              "10s and 5m",
              complaintOf("name,station,area,address,type,rate\na,1,MW,0,int16,10\n"));
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
              "column; the columns are name, station, area, address, type and, if wanted, comment "
              "and rate",
              complaintOf("name,area,address,kind\na,MW,0,int16\nb,MW,1,int16\n"));
}

TEST(TagFile, RepeatedColumnIsAnError)
{
    EXPECT_EQ("line 2: there are several columns name; the columns are name, station, area, "
              "address, type and, if wanted, comment and rate",
              complaintOf("#\nname,station,name,area,address,type\n"));
}

TEST(TagFile, EmptyFileLacksItsHeader)
{
    EXPECT_EQ("line 1: there is no line with the column names", complaintOf(""));
}
