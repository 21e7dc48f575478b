#include "plcProgram.h"

#include "plcStations.h"

#include <gtest/gtest.h>

namespace {

enum { SECOND_MS = 1000 };

Signal counterAt(int station, int number)
{
    Signal made;
    made.place.station = station;
    made.place.area = AREA_MW;
    made.place.number = number;
    made.kind = SIGNAL_COUNTER;
    made.periodMs = 1;
    made.amplitude = 65535;
    return made;
}

} // namespace

TEST(PlcProgramTest, RunsSignalsAndTanksOnTheirStations)
{
    PlcStations stations({1, 2});
    PlcProgram program({counterAt(2, 3007)}, 1, {1});
    program.start(stations);
    EXPECT_EQ(stations.find(1)->inputRegister(0), 400); // the tank begins at 40 %
    EXPECT_EQ(stations.find(2)->inputRegister(0), 0);
    stations.find(1)->setCoil(0, true); // 6 litres a second
    stations.find(2)->setCoil(0, true);
    program.runUntil(SECOND_MS, stations);
    const int counted = stations.find(2)->holdingRegister(3007);
    program.runUntil(2 * SECOND_MS, stations);
    EXPECT_EQ(stations.find(1)->inputRegister(0), 520);
    EXPECT_EQ(stations.find(2)->inputRegister(0), 0);
    EXPECT_EQ(stations.find(2)->holdingRegister(3007) - counted, int(SECOND_MS));
}

TEST(PlcProgramTest, ValuesThatAreSetBehindTheStartStay)
{
    PlcStations stations({1});
    PlcProgram program({}, 1, {1});
    program.start(stations);
    stations.find(1)->setHoldingRegister(3050, 0x41F0); // 30.0
    program.runUntil(SECOND_MS, stations);
    EXPECT_EQ(stations.find(1)->holdingRegister(3050), 0x41F0);
}
