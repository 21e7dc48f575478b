#include "plcStations.h"

#include <gtest/gtest.h>

#include <sstream>

TEST(PlcStations, OnlyNamedStationsExist)
{
    PlcStations stations({3, 247});
    EXPECT_NE(nullptr, stations.find(3));
    EXPECT_NE(nullptr, stations.find(247));
    EXPECT_EQ(nullptr, stations.find(1));
}

TEST(PlcStations, SignalChangesBothViewsOfItsPlace)
{
    PlcStations stations({1, 2});
    stations.apply({{1, AREA_IW, 2}, 11});
    stations.apply({{1, AREA_QW, 0}, 2});
    stations.apply({{1, AREA_MX, 3017}, 1});
    stations.apply({{2, AREA_IX, 64}, 1});
    stations.apply({{2, AREA_MW, 3000}, 4});
    stations.apply({{2, AREA_QX, 16}, 1});
    stations.apply({{9, AREA_IW, 0}, 1});
    PlcMemory& first = *stations.find(1);
    EXPECT_EQ(11, first.inputRegister(2));
    EXPECT_TRUE(first.coil(1));
    EXPECT_EQ(2, first.holdingRegister(3001));
    PlcMemory& second = *stations.find(2);
    EXPECT_EQ(1, second.inputRegister(4));
    EXPECT_TRUE(second.coil(3002));
    EXPECT_EQ(1, second.holdingRegister(1));
}

TEST(PlcStations, DumpListsEveryWordThatIsNotZero)
{
    PlcStations stations({2, 1});
    stations.find(1)->setHoldingRegister(2999, 5);
    stations.find(1)->setHoldingRegister(3000, 65535);
    stations.find(2)->setCoil(3017, true);
    stations.find(2)->setInputRegister(65535, 7);
    std::ostringstream out;
    stations.dump(out);
    EXPECT_EQ("1 QW 2999 5\n1 MW 3000 65535\n2 MW 3001 2\n2 IW 65535 7\n", out.str());
}
