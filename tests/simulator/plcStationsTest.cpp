#include "plcStations.h"

#include <gtest/gtest.h>

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

// Bit n of QX is bit n mod 16 of word n / 16, also where the coils of that number are markers.
TEST(PlcStations, OutputBitBehindTheCoilsOfItsAreaIsNoMarker)
{
    PlcStations stations({1});
    stations.apply({{1, AREA_QX, 4095}, 1});
    EXPECT_EQ(0x8000, stations.find(1)->holdingRegister(255));
    EXPECT_FALSE(stations.find(1)->coil(4095));
    EXPECT_EQ(1, stations.valueAt({1, AREA_QX, 4095}));
    stations.apply({{1, AREA_QX, 4095}, 0});
    EXPECT_EQ(0, stations.find(1)->holdingRegister(255));
}

TEST(PlcStations, ValueIsThatOfTheWordOrOfItsBit)
{
    PlcStations stations({1, 2});
    stations.find(2)->setHoldingRegister(3006, 0x0008);
    stations.find(2)->setInputRegister(4, 0x0102);
    EXPECT_EQ(8, stations.valueAt({2, AREA_MW, 3006}));
    EXPECT_EQ(1, stations.valueAt({2, AREA_MX, 3099})); // bit 3 of the marker word 6
    EXPECT_EQ(0, stations.valueAt({2, AREA_MX, 3098}));
    EXPECT_EQ(1, stations.valueAt({2, AREA_IX, 65}));
    EXPECT_EQ(0x0102, stations.valueAt({2, AREA_IW, 4}));
    EXPECT_EQ(0, stations.valueAt({1, AREA_MW, 3006}));
    EXPECT_EQ(0, stations.valueAt({9, AREA_MW, 3006}));
}
