#include "plan/tagFile.h"
#include "builtDriver.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <ostream>
#include <string>

namespace {

const char* const HEADER = "name,station,area,address,type,comment\n";

std::vector<Tag> tagsOf(const QByteArray& lines)
{
    return readTags(HEADER + lines, driver());
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

} // namespace

TEST(TagFile, TagHasTheValuesOfItsLine)
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

TEST(TagFile, ColumnRateSaysHowOftenATagIsRead)
{
    const std::vector<Tag> tags = readTags("name,rate,station,area,address,type\n"
                                           "a,500ms,1,MW,0,int16\n"
                                           "b,once,1,MW,2,int16\n"
                                           "c,fast,1,MW,4,int16\n"
                                           "d,,1,MW,6,int16\n",
                                           driver());
    ASSERT_EQ(4u, tags.size());
    EXPECT_EQ(ReadRate::INTERVAL, tags[0].rate.kind);
    EXPECT_EQ(500, tags[0].rate.intervalMs);
    EXPECT_EQ(ReadRate::ONCE, tags[1].rate.kind);
    EXPECT_EQ(ReadRate::EVERY_CYCLE, tags[2].rate.kind);
    EXPECT_EQ(ReadRate::EVERY_CYCLE, tags[3].rate.kind);
}

TEST(TagFile, TagsOfAFileWithoutTheColumnRateAreReadInEveryCycle)
{
    EXPECT_EQ(ReadRate::EVERY_CYCLE, tagsOf("a,1,MW,0,int16,\n").at(0).rate.kind);
}

TEST(TagFile, ColumnAccessSaysWhichTagsMayBeWritten)
{
    const std::vector<Tag> tags = readTags("name,station,area,address,type,access\n"
                                           "a,1,MW,0,int16,rw\n"
                                           "b,1,MW,2,int16,ro\n"
                                           "c,1,MW,4,int16,\n"
                                           "d,1,IW,4,int16,ro\n",
                                           driver());
    ASSERT_EQ(4u, tags.size());
    EXPECT_EQ(Tag::READ_WRITE, tags[0].access);
    EXPECT_EQ(Tag::READ_ONLY, tags[1].access);
    EXPECT_EQ(Tag::READ_ONLY, tags[2].access);
    EXPECT_EQ(Tag::READ_ONLY, tags[3].access);
}

TEST(TagFile, NoTagOfAFileWithoutTheColumnAccessMayBeWritten)
{
    EXPECT_EQ(Tag::READ_ONLY, tagsOf("a,1,MW,0,int16,\n").at(0).access);
}

TEST(TagFile, ColumnDeadbandHoldsANumber)
{
    const std::vector<Tag> tags = readTags("deadband,name,station,area,address,type\n"
                                           "0.5,a,1,MW,0,float32\n"
                                           "10,b,1,MW,4,int16\n"
                                           ",c,1,MW,6,int16\n"
                                           "1e-3,d,1,MW,8,float32\n",
                                           driver());
    ASSERT_EQ(4u, tags.size());
    EXPECT_EQ(0.5, tags[0].deadband);
    EXPECT_EQ(10, tags[1].deadband);
    EXPECT_EQ(0, tags[2].deadband);
    EXPECT_EQ(0.001, tags[3].deadband);
    EXPECT_EQ(0, tagsOf("a,1,MW,0,int16,\n").at(0).deadband);
}

TEST(TagFile, DeadbandBetweenSemicolonsMayHaveADecimalComma)
{
    const std::vector<Tag> tags = readTags("name;station;area;address;type;deadband\n"
                                           "a;1;MW;0;float32;0,5\n"
                                           "b;1;MW;4;float32;0.5\n",
                                           driver());
    ASSERT_EQ(2u, tags.size());
    EXPECT_EQ(0.5, tags[0].deadband);
    EXPECT_EQ(0.5, tags[1].deadband);
}

class TagFileNumbers : public testing::TestWithParam<Place>
{
};

// Expected numbers follow the table of address numbers in the driver's header.
TEST_P(TagFileNumbers, AreThoseOfTheDriver)
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

TEST(TagFile, HexadecimalAndBinaryAreFormatsOfTheUnsignedTypes)
{
    const std::vector<Tag> tags = tagsOf("a,1,MW,0,hex,\n"
                                         "b,1,MW,0,uint16:bin,\n"
                                         "c,1,MW,0,uint32:high:hex,\n"
                                         "d,1,MW,0,uint32:bin,\n");
    const Tag::Format formats[] = {Tag::HEXADECIMAL, Tag::BINARY, Tag::HEXADECIMAL, Tag::BINARY};
    ASSERT_EQ(4u, tags.size());
    for (size_t i = 0; i < tags.size(); ++i) {
        EXPECT_EQ(i < 2 ? Tag::UINT16 : Tag::UINT32, tags[i].type) << i;
        EXPECT_EQ(formats[i], tags[i].format) << i;
        EXPECT_EQ(i == 2 ? Tag::HIGH_WORD_FIRST : Tag::LOW_WORD_FIRST, tags[i].wordOrder) << i;
    }
}

TEST(TagFile, AreaAndAddressAreKeptInNormalForm)
{
    const std::vector<Tag> tags = tagsOf("a,1,mw,0100,int16,\nb,1,%mx,12.03,bool,\n");
    ASSERT_EQ(2u, tags.size());
    EXPECT_EQ("MW100", (tags[0].area + tags[0].address).toStdString());
    EXPECT_EQ("MX12.3", (tags[1].area + tags[1].address).toStdString());
    EXPECT_EQ(3099, tags[1].number);
}

TEST(TagFile, ColumnsMayHaveAnyOrder)
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

TEST(TagFile, CommentLineStartsInTheFirstColumn)
{
    // Blanks ahead of the # make the line a record: its name begins with #.
    const std::vector<Tag> tags = tagsOf(" #a,1,MW,0,int16,\n"
                                         "\t#b,1,MW,2,int16,\n"
                                         "\"#c\",1,MW,4,int16,\n"
                                         "#d,1,MW,6,int16,\n"
                                         "#\n");
    ASSERT_EQ(3u, tags.size());
    EXPECT_EQ(text("#a"), tags[0].name);
    EXPECT_EQ(text("#b"), tags[1].name);
    EXPECT_EQ(text("#c"), tags[2].name);
}

TEST(TagFile, CommentLineMayFollowTheByteOrderMark)
{
    const QByteArray csv = QByteArray("\xEF\xBB\xBF# tags\n") + HEADER + "a,1,MW,0,int16,\n";
    EXPECT_EQ(1u, readTags(csv, driver()).size());
}

TEST(TagFile, HeaderAloneHasNoTags)
{
    EXPECT_TRUE(tagsOf("").empty());
}

TEST(TagFile, CrLfAndByteOrderMarkAreAccepted)
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

TEST(TagFile, FileIsReadByItsName)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(text("tags.csv")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(HEADER + QByteArray("a,1,MW,0,int16,\n"));
    file.close();
    EXPECT_EQ(1u, readTagFile(file.fileName(), driver()).size());
}

TEST(TagFile, BadLinesOfAFileHaveItsName)
{
    QTemporaryDir folder;
    QFile file(folder.filePath(text("tags.csv")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(HEADER + QByteArray("a,1,MW,0,bool,\n,1,MW,0,int16,\n"));
    file.close();
    const std::string name = file.fileName().toStdString();
    try {
        readTagFile(file.fileName(), driver());
        FAIL() << "no error";
    } catch (const TagFileError& error) {
        EXPECT_EQ(name + ": line 2: MW holds words, which are not of type bool\n" + name +
                      ": line 3: the name is missing",
                  error.what());
    }
}

TEST(TagFile, UnreadableFileIsNamedWithTheReason)
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

TEST(TagFile, FolderCannotBeRead)
{
    QTemporaryDir folder;
    EXPECT_THROW(readTagFile(folder.path(), driver()), TagFileError);
}
