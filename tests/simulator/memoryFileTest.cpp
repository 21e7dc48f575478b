#include "memoryFile.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

void load(const std::string& text, PlcStations& stations)
{
    std::istringstream in(text);
    loadMemory(in, "file", stations);
}

std::string troubleOf(const std::string& text, PlcStations& stations)
{
    try {
        load(text, stations);
    } catch (const MemoryFileError& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST(MemoryFile, ListsEveryWordThatIsNotZero)
{
    PlcStations stations({2, 1});
    stations.find(1)->setHoldingRegister(255, 5);
    stations.find(1)->setHoldingRegister(3000, 65535);
    stations.find(2)->setCoil(3017, true);
    stations.find(2)->setHoldingRegister(7095, 9);
    stations.find(2)->setInputRegister(255, 7);
    EXPECT_EQ("1 QW 255 5\n1 MW 3000 65535\n2 MW 3001 2\n2 MW 7095 9\n2 IW 255 7\n",
              memoryText(stations));
    EXPECT_EQ("", memoryText(PlcStations({1})));
}

TEST(MemoryFile, LoadedLinesAreListedAgain)
{
    const std::string text = "1 QW 0 1\n1 MW 3050 4660\n1 IW 255 65535\n3 MW 7095 5\n";
    PlcStations stations({1, 3});
    load(text, stations);
    EXPECT_EQ(text, memoryText(stations));
    load("", stations);
    EXPECT_EQ(text, memoryText(stations));
}

TEST(MemoryFile, BitsCommentsAndEmptyLinesAreTaken)
{
    PlcStations stations({1});
    load("# a machine at rest\n\n  \t\n1 MX 3099 1 # the pump\r\n1\tQX  4095\t1", stations);
    EXPECT_EQ("1 QW 255 32768\n1 MW 3006 8\n", memoryText(stations));
}

TEST(MemoryFile, BadLineIsNamedAndNothingIsLoaded)
{
    struct
    {
        const char* line;
        const char* trouble;
    } const rows[] = {
        {"1 MW 3000", "it is not STATION AREA NUMBER VALUE"},
        {"1 MW 3000 5 6", "it is not STATION AREA NUMBER VALUE"},
        {"x MW 3000 5", "station 'x' is not in 1 to 247"},
        {"0 MW 3000 5", "station '0' is not in 1 to 247"},
        {"2 MW 3000 5", "there is no station 2"},
        {"1 ZW 3000 5", "area 'ZW' is none of IW QW MW IX QX MX"},
        {"1 MW 100 5", "MW number '100' is not in 3000 to 7095"},
        {"1 QW 256 5", "QW number '256' is not in 0 to 255"},
        {"1 MW 3000 65536", "value '65536' is not in -32768 to 65535"},
        {"1 MX 3000 2", "value '2' is not in 0 to 1"},
    };
    for (const auto& row : rows) {
        PlcStations stations({1});
        EXPECT_EQ(std::string("file, line 3: ") + row.trouble,
                  troubleOf(std::string("1 MW 3001 7\n\n") + row.line + "\n", stations));
        EXPECT_EQ("", memoryText(stations)) << row.line;
    }
}

TEST(MemoryFile, FileThatCannotBeReadIsNamed)
{
    PlcStations stations({1});
    for (const auto& [path, reason] : {std::pair("/nowhere/file", "No such file or directory"),
                                       std::pair("/", "Is a directory")}) {
        try {
            loadMemory(path, stations);
            FAIL() << path;
        } catch (const MemoryFileError& error) {
            EXPECT_EQ(std::string(path) + ": " + reason, error.what());
        }
    }
}
