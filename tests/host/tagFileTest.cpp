#include "plan/tagFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <ostream>
#include <string>

namespace {

const DriverLibrary& driver()
{
    static const DriverLibrary library(QString::fromLatin1(KAKB_DRIVER_FILE));
    return library;
}

const char* const HEADER = "name,station,area,address,type,comment\n";

std::vector<Tag> tagsOf(const QByteArray& lines)
{
    return readTags(HEADER + lines, driver());
}

/// What is said of the text; empty when there is nothing to say.
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

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

struct Place
{
    const char* area;
    const char* address;
    const char* type;
    int number;
};

std::ostream& operator<<(std::ostream& out, const Place& place)
{
    return out << place.area << place.address;
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

TEST(TagFile, ATagHasWhatItsLineSays)
{
    const std::vector<Tag> tags = tagsOf("level,7,MW,100,float32:high,\"tank 1, metres\"\n");
    ASSERT_EQ(1u, tags.size());
    EXPECT_EQ(text("level"), tags[0].name);
    EXPECT_EQ(7, tags[0].station);
    EXPECT_EQ(text("MW"), tags[0].area);
    EXPECT_EQ(text("100"), tags[0].address);
    EXPECT_EQ(Tag::FLOAT32, tags[0].type);
    EXPECT_EQ(Tag::HIGH_WORD_FIRST, tags[0].wordOrder);
    EXPECT_EQ(text("tank 1, metres"), tags[0].comment);
}

class TagFileNumbers : public testing::TestWithParam<Place>
{
};

// Expected numbers follow the table of address numbers in the driver's header.
TEST_P(TagFileNumbers, AreTheDrivers)
{
    const Place& place = GetParam();
    const QByteArray line =
        QByteArray("x,1,") + place.area + ',' + place.address + ',' + place.type + ",\n";
    const std::vector<Tag> tags = tagsOf(line);
    ASSERT_EQ(1u, tags.size());
    EXPECT_EQ(place.number, tags[0].number);
}

INSTANTIATE_TEST_SUITE_P(
    , TagFileNumbers,
    testing::Values(Place{"MW", "0", "int16", 3000}, Place{"MW", "8190", "uint16", 7095},
                    Place{"MW", "8188", "int32", 7094}, Place{"IW", "510", "int16", 255},
                    Place{"QW", "20", "uint32", 10}, Place{"MX", "0.0", "bool", 3000},
                    Place{"MX", "12.3", "bool", 3099}, Place{"MX", "7816.7", "bool", 65535},
                    Place{"IX", "511.7", "bool", 4095}, Place{"QX", "2.1", "bool", 17}));

TEST(TagFile, EveryTypeIsKnown)
{
    const std::vector<Tag> tags = tagsOf("a,1,MX,0.0,bool,\n"
                                         "b,1,MW,0,int16,\n"
                                         "c,1,MW,0,uint16,\n"
                                         "d,1,MW,0,int32:low,\n"
                                         "e,1,MW,0,uint32:high,\n"
                                         "f,1,MW,0,float32,\n");
    ASSERT_EQ(6u, tags.size());
    const Tag::Type types[] = {Tag::BOOL,  Tag::INT16,  Tag::UINT16,
                               Tag::INT32, Tag::UINT32, Tag::FLOAT32};
    for (size_t i = 0; i < tags.size(); ++i) {
        EXPECT_EQ(types[i], tags[i].type) << i;
        EXPECT_EQ(i == 4 ? Tag::HIGH_WORD_FIRST : Tag::LOW_WORD_FIRST, tags[i].wordOrder) << i;
    }
}

TEST(TagFile, ColumnsStandInAnyOrderAndTheCommentMayBeMissing)
{
    const std::vector<Tag> tags =
        readTags("type,address,area,station,name\nint16,4,QW,2,speed", driver());
    ASSERT_EQ(1u, tags.size());
    EXPECT_EQ(text("speed"), tags[0].name);
    EXPECT_EQ(2, tags[0].station);
    EXPECT_EQ(2, tags[0].number);
}

TEST(TagFile, EmptyLinesAndCommentLinesAreSkipped)
{
    const QByteArray csv =
        QByteArray("# tags, \"all\n\n") + HEADER + "\n  \n#x,1\na,1,MW,0,int16,\n";
    EXPECT_EQ(1u, readTags(csv, driver()).size());
}

TEST(TagFile, AFileWithoutTagsHasNone)
{
    EXPECT_TRUE(tagsOf("").empty());
}

TEST(TagFile, LinesMayEndAsOnWindowsAndStartWithAByteOrderMark)
{
    const std::vector<Tag> tags = readTags("\xEF\xBB\xBFname,station,area,address,type\r\n"
                                           "a,1,MW,0,int16\r\n\r\n"
                                           "b,1,MW,2,uint16\r\n",
                                           driver());
    ASSERT_EQ(2u, tags.size());
    EXPECT_EQ(Tag::INT16, tags[0].type);
    EXPECT_EQ(text("b"), tags[1].name);
}

TEST(TagFile, QuotedFieldsKeepCommasQuotesBlanksAndLineEnds)
{
    const std::vector<Tag> tags = tagsOf("\"a,\"\"b\"\" \"\t , 1 ,MW, 0 ,int16,\t\"one\ntwo\"\n"
                                         "c,1,MW,2,int16,\n");
    ASSERT_EQ(2u, tags.size());
    EXPECT_EQ(text("a,\"b\" "), tags[0].name);
    EXPECT_EQ(text("one\ntwo"), tags[0].comment);
    EXPECT_EQ(text("c"), tags[1].name);
}

TEST(TagFile, NamesAreUtf8)
{
    const std::vector<Tag> tags = tagsOf("F\xC3\xBCllstand,1,MW,0,int16,\n");
    ASSERT_EQ(1u, tags.size());
    EXPECT_EQ(text("F\xFCllstand"), tags[0].name);
}

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

TEST_P(TagFileBadTypes, AreReportedWithThoseThatThereAre)
{
    EXPECT_EQ(std::string("line 2: type \"") + GetParam() +
                  "\" is unknown; there are bool, int16, uint16, int32, uint32 and float32, the "
                  "last three also with :low or :high",
              complaintOfLines(QByteArray("a,1,MW,0,") + GetParam() + ","));
}

INSTANTIATE_TEST_SUITE_P(, TagFileBadTypes,
                         testing::Values("", "int8", "INT16", "int16:high", "int32:", "int32:mid",
                                         "int32:low:high", "bool:low"));

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

TEST(TagFile, ADuplicateNameIsReportedWithTheLineOfTheFirst)
{
    EXPECT_EQ("line 4: name \"a\" stands on line 2 already\n"
              "line 5: name \"a\" stands on line 2 already",
              complaintOfLines("a,1,MW,0,int16,\n"
                               "b,1,MW,0,int16,\n"
                               "a,1,MW,2,int16,\n"
                               "a,1,MW,4,int16,\n"));
}

TEST(TagFile, AQuoteLeftOpenIsReportedWhereItBeganAndTheLinesBehindAreReadOn)
{
    EXPECT_EQ("line 3: a quoted field has no closing quote\n"
              "line 5: the name is missing",
              complaintOfLines("a,1,MW,0,int16,\n"
                               "b,1,MW,2,int16,\"open\n"
                               "c,1,MW,4,int16,\n"
                               ",1,MW,6,int16,\n"));
}

TEST(TagFile, AHeaderThatLacksColumnsIsOneError)
{
    EXPECT_EQ("line 1: there is no column station; there is no column type; \"kind\" is no "
              "column; the columns are name, station, area, address, type and, if wanted, comment",
              complaintOf("name,area,address,kind\na,MW,0,int16\nb,MW,1,int16\n"));
}

TEST(TagFile, AHeaderThatRepeatsAColumnIsAnError)
{
    EXPECT_EQ("line 2: there are several columns name; the columns are name, station, area, "
              "address, type and, if wanted, comment",
              complaintOf("#\nname,station,name,area,address,type\n"));
}

TEST(TagFile, AnEmptyFileLacksItsHeader)
{
    EXPECT_EQ("line 1: there is no line with the column names", complaintOf(""));
}

TEST(TagFile, AFileIsReadByItsName)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(text("tags.csv")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(HEADER + QByteArray("a,1,MW,0,int16,\n"));
    file.close();
    EXPECT_EQ(1u, readTagFile(file.fileName(), driver()).size());
}

TEST(TagFile, AFileThatCannotBeReadIsNamedWithTheReason)
{
    QTemporaryDir folder;
    const QString name = folder.filePath(text("none.csv"));
    try {
        readTagFile(name, driver());
        FAIL() << "no error";
    } catch (const TagFileError& error) {
        EXPECT_EQ("cannot read " + name.toStdString() + ": No such file or directory",
                  std::string(error.what()));
    }
}

TEST(TagFile, AFolderCannotBeRead)
{
    QTemporaryDir folder;
    EXPECT_THROW(readTagFile(folder.path(), driver()), TagFileError);
}

struct AddressText
{
    const char* text;
    int station;
    const char* area;
    const char* address;
    int number;
    Tag::Type type;
};

std::ostream& operator<<(std::ostream& out, const AddressText& address)
{
    return out << address.text;
}

class TagFromAddress : public testing::TestWithParam<AddressText>
{
};

TEST_P(TagFromAddress, IsNamedByItsText)
{
    const AddressText& expected = GetParam();
    const Tag tag = tagFromAddress(text(expected.text), driver());
    EXPECT_EQ(text(expected.text), tag.name);
    EXPECT_EQ(expected.station, tag.station);
    EXPECT_EQ(text(expected.area), tag.area);
    EXPECT_EQ(text(expected.address), tag.address);
    EXPECT_EQ(expected.number, tag.number);
    EXPECT_EQ(expected.type, tag.type);
}

INSTANTIATE_TEST_SUITE_P(, TagFromAddress,
                         testing::Values(AddressText{"MW100", 1, "MW", "100", 3050, Tag::UINT16},
                                         AddressText{"MX12.3", 1, "MX", "12.3", 3099, Tag::BOOL},
                                         AddressText{"2:QW8", 2, "QW", "8", 4, Tag::UINT16},
                                         AddressText{"247:IX0.0", 247, "IX", "0.0", 0, Tag::BOOL}));

class TagFromBadAddress : public testing::TestWithParam<BadLine>
{
};

TEST_P(TagFromBadAddress, IsRefusedWithTheReason)
{
    try {
        tagFromAddress(text(GetParam().line), driver());
        FAIL() << "no error";
    } catch (const TagFileError& error) {
        EXPECT_EQ(std::string(GetParam().line) + ": " + GetParam().reason, error.what());
    }
}

INSTANTIATE_TEST_SUITE_P(
    , TagFromBadAddress,
    testing::Values(BadLine{"MW101",
                            "address 101 of MW is odd, malformed or out of range 0 to 8190"},
                    BadLine{"MX12", "address 12 of MX is malformed or out of range 0.0 to 7816.7"},
                    BadLine{"", "area \"\" is unknown; there are MW, IW, QW, MX, IX, QX"},
                    BadLine{"100", "area \"\" is unknown; there are MW, IW, QW, MX, IX, QX"},
                    BadLine{"MW", "address \"\" of MW is odd, malformed or out of range 0 to 8190"},
                    BadLine{"level", "area \"level\" is unknown; there are MW, IW, QW, MX, IX, QX"},
                    BadLine{":MW0", "station \"\" is no number from 1 to 247"},
                    BadLine{"0:MW0", "station \"0\" is no number from 1 to 247"}));
