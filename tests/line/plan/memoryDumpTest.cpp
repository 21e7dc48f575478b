#include "plan/memoryDump.h"
#include "randomSource.h"

#include <gtest/gtest.h>

namespace {

std::string problemsOf(const QByteArray& text)
{
    try {
        readMemoryDump(text, QLatin1String("plc.dump"));
    } catch (const TagFileError& error) {
        return error.what();
    }
    return std::string();
}

MemoryDump::Place place(int station, const char* area, int number)
{
    return MemoryDump::Place(station, QLatin1String(area), number);
}

} // namespace

TEST(MemoryDumpTest, ReadsWordsAndTheirRanges)
{
    const MemoryDump dump = readMemoryDump("# of the press\n"
                                           "# read 2 IW 0 255\n"
                                           "\n"
                                           "1 MW 3050 7\r\n"
                                           "  2 QW   255 65535\n",
                                           QLatin1String("plc.dump"));
    ASSERT_EQ(dump.read.size(), 1U);
    EXPECT_EQ(dump.read[0].station, 2);
    EXPECT_EQ(dump.read[0].area, QLatin1String("IW"));
    EXPECT_EQ(dump.read[0].first, 0);
    EXPECT_EQ(dump.read[0].last, 255);
    const std::map<MemoryDump::Place, int> words = {{place(1, "MW", 3050), 7},
                                                    {place(2, "QW", 255), 65535}};
    EXPECT_EQ(dump.words, words);
}

TEST(MemoryDumpTest, NamesEveryBadLine)
{
    EXPECT_EQ(problemsOf("0 MW 3000 1\n"
                         "1 MX 3000 1\n"
                         "1 MW 2999 1\n"
                         "1 QW 256 1\n"
                         "1 MW 3000 65536\n"
                         "1 MW 3000 -1\n"
                         "1 MW 3000\n"
                         "1 MW 3001 1\n"
                         "1 MW 3001 2\n"
                         "# read 1 MW 3001 3000\n"
                         "# read 1 MW 3001\n"),
              "plc.dump: line 1: station \"0\" is no number from 1 to 247\n"
              "plc.dump: line 2: area \"MX\" is not MW, IW or QW\n"
              "plc.dump: line 3: address number \"2999\" is no number from 3000 to 7095\n"
              "plc.dump: line 4: address number \"256\" is no number from 0 to 255\n"
              "plc.dump: line 5: value \"65536\" is no number from 0 to 65535\n"
              "plc.dump: line 6: value \"-1\" is no number from 0 to 65535\n"
              "plc.dump: line 7: a line needs STATION AREA NUMBER VALUE\n"
              "plc.dump: line 9: the word has a line already\n"
              "plc.dump: line 10: the last address number is below the first\n"
              "plc.dump: line 11: a line \"# read\" needs STATION AREA FIRST LAST");
}

TEST(MemoryDumpTest, TextLeavesOutZeros)
{
    MemoryDump dump;
    dump.read.push_back({1, QLatin1String("MW"), 3000, 3002});
    dump.words = {{place(1, "MW", 3000), 0}, {place(1, "MW", 3001), 9}};
    EXPECT_EQ(memoryDumpText(dump), "# read 1 MW 3000 3002\n1 MW 3001 9\n");
}

TEST(MemoryDumpTest, TellsADumpFromATableOfTags)
{
    EXPECT_TRUE(isMemoryDump("1 MW 3000 5\n"));
    EXPECT_TRUE(isMemoryDump("# text\n\n 1 MW 3000 5\n"));
    EXPECT_TRUE(isMemoryDump("# read 1 MW 3000 3001\n"));
    EXPECT_FALSE(isMemoryDump("name,station,area,address,type,value\n1,1,MW,0,uint16,5\n"));
    EXPECT_FALSE(isMemoryDump("# text\nname,station\n"));
    EXPECT_FALSE(isMemoryDump(""));
    EXPECT_FALSE(isMemoryDump("# text\n"));
}

TEST(MemoryDumpTest, TextReadsAsTheSameDump)
{
    RandomSource random(1);
    for (int round = 0; round < 200; ++round) {
        MemoryDump dump;
        for (int i = random.below(30); i > 0; --i)
            dump.words[place(random.between(1, 247), "MW", random.between(3000, 7095))] =
                random.between(1, 65535);
        for (int i = random.below(30); i > 0; --i)
            dump.words[place(random.between(1, 247), random.oneIn(2) ? "IW" : "QW",
                             random.below(256))] = random.between(1, 65535);
        dump.read.push_back({random.between(1, 247), QLatin1String("QW"), 0, random.below(256)});
        const QByteArray text = memoryDumpText(dump);
        const MemoryDump again = readMemoryDump(text, QLatin1String("plc.dump"));
        EXPECT_EQ(again.words, dump.words);
        EXPECT_EQ(memoryDumpText(again), text);
        EXPECT_TRUE(isMemoryDump(text));
    }
}
