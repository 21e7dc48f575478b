#include "plan/recipeFile.h"
#include "builtDriver.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <ostream>
#include <string>

// Expected bytes: floats by IEEE 754 (72.5 is 0x42910000), integers worked out by hand.

namespace {

const char* const HEADER = "name,station,area,address,type,value\n";

} // namespace

class RecipeFileTest : public testing::Test
{
protected:
    RecipeFileTest() : path(folder.filePath(QLatin1String("recipe.csv"))) {}

    void put(const QByteArray& text)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(text.size(), file.write(text));
    }

    Recipe recipeOf(const QByteArray& lines, RecipeUse use = FOR_DOWNLOAD)
    {
        put(HEADER + lines);
        return readRecipeFile(path, driver(), use);
    }

    /// The error message for the lines; empty: no error.
    std::string complaintOf(const QByteArray& lines, RecipeUse use = FOR_DOWNLOAD)
    {
        try {
            recipeOf(lines, use);
        } catch (const TagFileError& error) {
            return error.what();
        }
        return std::string();
    }

    QTemporaryDir folder;
    const QString path;
};

TEST_F(RecipeFileTest, ValuesHaveTheDriversFormat)
{
    const Recipe recipe = recipeOf("level,1,MW,100,float32:high,72.5\n"
                                   "offset,2,MW,108,int32,-2\n"
                                   "valve,1,MX,30.0,bool,true\n"
                                   "speed,1,QW,40,uint16,0x5AA\n");
    ASSERT_EQ(4u, recipe.tags.size());
    EXPECT_EQ(QLatin1String("offset"), recipe.tags[1].name);
    EXPECT_EQ(2, recipe.tags[1].station);
    const std::vector<QByteArray> expected = {
        QByteArray::fromHex("91420000"), QByteArray::fromHex("FEFFFFFF"), QByteArray::fromHex("01"),
        QByteArray::fromHex("AA05")};
    EXPECT_EQ(expected, recipe.values);
}

TEST_F(RecipeFileTest, UploadNeedsNoValues)
{
    const Recipe recipe = recipeOf("a,1,MW,100,uint16,\nb,1,MW,102,uint16,7\n", FOR_UPLOAD);
    EXPECT_TRUE(recipe.values[0].isEmpty());
    EXPECT_EQ(QByteArray::fromHex("0700"), recipe.values[1]);
}

TEST_F(RecipeFileTest, AllBadLinesAreReportedAtOnce)
{
    const std::string complaint = complaintOf("a,1,MW,100,uint16,\n"
                                              "b,1,MW,102,uint16,70000\n"
                                              "c,1,IW,0,uint16,1\n"
                                              "d,1,IX,0.1,bool,1\n"
                                              "e,1,MW,104,uint16,1\n"
                                              "f,1,MW,104,float32:high,x\n");
    EXPECT_NE(std::string::npos, complaint.find("2: the value is missing")) << complaint;
    EXPECT_NE(std::string::npos, complaint.find("3: 70000 does not fit uint16: 0 to 65535"))
        << complaint;
    EXPECT_NE(std::string::npos, complaint.find("4: area IW is read-only")) << complaint;
    EXPECT_NE(std::string::npos, complaint.find("5: area IX is read-only")) << complaint;
    EXPECT_EQ(std::string::npos, complaint.find("line 6:")) << complaint;
    EXPECT_NE(std::string::npos, complaint.find("7: \"x\" is no value of type float32:high: "))
        << complaint;
}

TEST_F(RecipeFileTest, MalformedValueIsBadEvenForUploads)
{
    EXPECT_NE("", complaintOf("a,1,MW,100,uint16,x\n", FOR_UPLOAD));
    EXPECT_EQ("", complaintOf("a,1,MW,100,uint16,\n", FOR_UPLOAD));
}

TEST_F(RecipeFileTest, RecipeWithoutTagsIsRefused)
{
    EXPECT_EQ(path.toStdString() + ": the recipe has no values", complaintOf(""));
}

TEST_F(RecipeFileTest, FileWithoutTheValueColumnIsRefused)
{
    put("name,station,area,address,type\na,1,MW,100,uint16\n");
    EXPECT_THROW(readRecipeFile(path, driver(), FOR_DOWNLOAD), TagFileError);
}

TEST_F(RecipeFileTest, MissingFileIsNamed)
{
    try {
        readRecipeFile(path, driver(), FOR_DOWNLOAD);
        FAIL();
    } catch (const TagFileError& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("recipe.csv"));
    }
}

TEST_F(RecipeFileTest, WrittenRecipeReadsBackEqual)
{
    const QByteArray lines = "\"a, \"\"quoted\"\"\",1,MW,100,float32:high,-0.1\n"
                             "\" b \",2,MW,104,uint32,4000000001\n"
                             "\"#c\",1,MX,30.7,bool,1\n"
                             "\xC3\xA4,247,QW,0,int16,-32768\n";
    const Recipe recipe = recipeOf(lines);
    ASSERT_EQ(QString::fromUtf8("a, \"quoted\""), recipe.tags[0].name);
    put(recipeText(recipe));
    const Recipe again = readRecipeFile(path, driver(), FOR_DOWNLOAD);
    ASSERT_EQ(recipe.tags.size(), again.tags.size());
    EXPECT_EQ(recipe.values, again.values);
    for (size_t i = 0; i < recipe.tags.size(); ++i) {
        EXPECT_EQ(recipe.tags[i].name, again.tags[i].name);
        EXPECT_EQ(recipe.tags[i].station, again.tags[i].station);
        EXPECT_EQ(recipe.tags[i].area, again.tags[i].area);
        EXPECT_EQ(recipe.tags[i].address, again.tags[i].address);
        EXPECT_EQ(recipe.tags[i].type, again.tags[i].type);
        EXPECT_EQ(recipe.tags[i].wordOrder, again.tags[i].wordOrder);
    }
}

TEST_F(RecipeFileTest, WritingKeepsCommentsAndColumnOrder)
{
    put("# line 3, \"summer\"\n"
        "\n"
        "value,type,comment,address,area,station,name\n"
        "1450,uint16,\"rpm, nominal\",40,QW,1,speed\n"
        "# valves\n"
        "0,bool,\"two\nlines\",30.0,MX,1,valve\n"
        "#\n");
    Recipe recipe = readRecipeFile(path, driver(), FOR_DOWNLOAD);
    recipe.values = {QByteArray::fromHex("E703"), QByteArray::fromHex("01")}; // 999
    EXPECT_EQ("# line 3, \"summer\"\n"
              "\n"
              "value,type,comment,address,area,station,name\n"
              "999,uint16,\"rpm, nominal\",40,QW,1,speed\n"
              "# valves\n"
              "1,bool,\"two\nlines\",30.0,MX,1,valve\n"
              "#\n",
              recipeText(recipe).toStdString());
}

/// The bytes of a file before and after its only value, a uint16, became 999.
struct WrittenCell
{
    const char* before;
    const char* after;
};

std::ostream& operator<<(std::ostream& out, const WrittenCell& cell)
{
    return out << cell.before;
}

class RecipeFileCells : public RecipeFileTest, public testing::WithParamInterface<WrittenCell>
{
};

TEST_P(RecipeFileCells, AreWrittenInPlace)
{
    put(GetParam().before);
    Recipe recipe = readRecipeFile(path, driver(), FOR_UPLOAD);
    recipe.values = {QByteArray::fromHex("E703")};
    EXPECT_EQ(GetParam().after, recipeText(recipe).toStdString());
}

INSTANTIATE_TEST_SUITE_P(
    , RecipeFileCells,
    testing::Values(
        WrittenCell{"name,station,area,address,type,value\na,1,MW,0,uint16,",
                    "name,station,area,address,type,value\na,1,MW,0,uint16,999"},
        WrittenCell{"name,station,area,address,type,value\r\na,1,MW,0,uint16,\r\n\r\n",
                    "name,station,area,address,type,value\r\na,1,MW,0,uint16,999\r\n\r\n"},
        WrittenCell{"name,station,area,address,type,value\r\na,1,MW,0,uint16,1450 \r\n",
                    "name,station,area,address,type,value\r\na,1,MW,0,uint16,999 \r\n"},
        WrittenCell{"name ,value,station,area,address,type\na    ,\t\"1450\" ,1,MW,0,uint16\n",
                    "name ,value,station,area,address,type\na    ,\t999 ,1,MW,0,uint16\n"},
        WrittenCell{"\"value\",name,station,area,address,type\n  ,\"a \"\"b\"\"\",1,MW,0,uint16\n",
                    "\"value\",name,station,area,address,type\n"
                    "999  ,\"a \"\"b\"\"\",1,MW,0,uint16\n"},
        WrittenCell{"\xEF\xBB\xBFvalue,name,station,area,address,type\n7,\xC3\xA4,1,MW,0,uint16\n",
                    "\xEF\xBB\xBFvalue,name,station,area,address,type\n"
                    "999,\xC3\xA4,1,MW,0,uint16\n"}));

TEST_F(RecipeFileTest, OnlyTheValueIsAnotherText)
{
    Recipe recipe = recipeOf("# rpm\nspeed,1,QW,40,uint16,1450\n");
    recipe.values[0] = QByteArray::fromHex("E703");
    EXPECT_EQ(HEADER + QByteArray("# rpm\nspeed,1,QW,40,uint16,999\n"), recipeText(recipe));
}

TEST_F(RecipeFileTest, UnknownValueIsWrittenAsEmpty)
{
    Recipe recipe = recipeOf("speed,1,QW,40,uint16,1450\n");
    recipe.values[0].clear();
    EXPECT_EQ(HEADER + QByteArray("speed,1,QW,40,uint16,\n"), recipeText(recipe));
}
