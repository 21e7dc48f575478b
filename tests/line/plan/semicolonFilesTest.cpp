#include "builtDriver.h"
#include "plan/csvText.h"
#include "plan/recipeFile.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <ostream>
#include <string>

// Tag files and recipes as spreadsheets write them where the decimal sign is a comma: semicolons
// between the fields, often a byte order mark and CR LF. Floats by IEEE 754: 21.5 is 0x41AC0000,
// 2.25 is 0x40100000.

namespace {

const char* const HEADER = "name;station;area;address;type;value\r\n";

struct Separator
{
    const char* csv;
    char separator;
};

std::ostream& operator<<(std::ostream& out, const Separator& row)
{
    return out << row.csv;
}

class SemicolonFiles : public testing::Test
{
protected:
    SemicolonFiles() : path(folder.filePath(QLatin1String("recipe.csv"))) {}

    Recipe recipeOf(const QByteArray& text, RecipeUse use = FOR_DOWNLOAD)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(text.size(), file.write(text));
        file.close();
        return readRecipeFile(path, driver(), use);
    }

    /// The text of the file after its floats became 2.25.
    std::string rewritten(const QByteArray& text)
    {
        Recipe recipe = recipeOf(text, FOR_UPLOAD);
        for (size_t i = 0; i < recipe.tags.size(); ++i)
            if (recipe.tags[i].type == Tag::FLOAT32)
                recipe.values[i] = QByteArray::fromHex("00001040");
        return recipeText(recipe).toStdString();
    }

    QTemporaryDir folder;
    const QString path;
};

} // namespace

class CsvSeparator : public testing::TestWithParam<Separator>
{
};

TEST_P(CsvSeparator, IsThatOfTheFirstRecord)
{
    EXPECT_EQ(GetParam().separator, csvSeparator(GetParam().csv));
}

INSTANTIATE_TEST_SUITE_P(, CsvSeparator,
                         testing::Values(Separator{"a;b\n1,2\n", ';'}, Separator{"a,b\n1;2\n", ','},
                                         Separator{"a;b,c\n", ','}, Separator{"a\n;\n", ','},
                                         Separator{"", ','}, Separator{"\n# x, y\n\na;b", ';'},
                                         Separator{"# x; y\na,b", ','},
                                         Separator{"\xEF\xBB\xBF# x, y\r\na;b\r\n", ';'},
                                         Separator{"\"a\";\"b\"", ';'}));

TEST_F(SemicolonFiles, AreReadAsTagFiles)
{
    const std::vector<Tag> tags =
        readTags("\xEF\xBB\xBF# Anlage 1, Halle 2\r\n"
                 "name;station;area;address;type;comment\r\n"
                 "F\xC3\xBCllstand;2;MW;100;float32:high;\"Tank 1; links, in m\"\r\n"
                 ";;;;;\r\n"
                 "pump;1;QX;0.5;bool;a, b\r\n",
                 driver());
    ASSERT_EQ(2u, tags.size());
    EXPECT_EQ(QString::fromUtf8("F\xC3\xBCllstand"), tags[0].name);
    EXPECT_EQ(2, tags[0].station);
    EXPECT_EQ("Tank 1; links, in m", tags[0].comment.toStdString());
    EXPECT_EQ("a, b", tags[1].comment.toStdString());
}

TEST_F(SemicolonFiles, FloatMayHaveADecimalCommaOrPoint)
{
    for (const char* value : {"21,5", "21.5", "+21,50", "2150e-2", "\"21,5\""}) {
        const Recipe recipe =
            recipeOf(HEADER + QByteArray("a;1;MW;100;float32:high;") + value + "\r\n");
        EXPECT_EQ(QByteArray::fromHex("AC410000"), recipe.values[0]) << value;
    }
}

TEST_F(SemicolonFiles, OtherTypesAndCommaFilesHaveNoDecimalComma)
{
    EXPECT_THROW(recipeOf(HEADER + QByteArray("a;1;MW;100;uint16;1,0\r\n")), TagFileError);
    EXPECT_THROW(recipeOf(HEADER + QByteArray("a;1;MW;100;float32;1.000,5\r\n")), TagFileError);
    EXPECT_THROW(recipeOf("name,station,area,address,type,value\na,1,MW,100,float32,\"1,5\"\n"),
                 TagFileError);
}

TEST_F(SemicolonFiles, RewrittenRecipeKeepsItsSeparatorAndDecimalSign)
{
    const std::string header = "\xEF\xBB\xBF" + std::string(HEADER);
    const auto recipe = [&header](const char* lines) {
        return QByteArray::fromStdString(header + lines);
    };
    EXPECT_EQ(header + "a;1;MW;0;float32;2,25\r\nb;1;MW;4;uint16;7\r\n",
              rewritten(recipe("a;1;MW;0;float32;21,5\r\nb;1;MW;4;uint16;7\r\n")));
    EXPECT_EQ(header + "a;1;MW;0;float32;2,25\r\n", rewritten(recipe("a;1;MW;0;float32;\r\n")));
    EXPECT_EQ(header + "a;1;MW;0;float32;2.25\r\n", rewritten(recipe("a;1;MW;0;float32;21.5\r\n")));
    EXPECT_EQ(header + "a;1;MW;0;float32;2,25\r\n;;;;;\r\n",
              rewritten(recipe("a;1;MW;0;float32;\"21,5\"\r\n;;;;;\r\n")));
}

TEST_F(SemicolonFiles, ErrorsHaveTheFileAndTheLine)
{
    try {
        recipeOf(HEADER + QByteArray("a;1;MW;101;uint16;1\r\nb;1;MW;0;uint16;1,5\r\n"));
        FAIL() << "no error";
    } catch (const TagFileError& error) {
        const std::string file = path.toStdString();
        EXPECT_EQ(file + ": line 2: MW101: odd: a word starts at an even number\n" + file +
                      ": line 3: \"1,5\" is no value of type uint16: 0 to 65535",
                  error.what());
    }
}
