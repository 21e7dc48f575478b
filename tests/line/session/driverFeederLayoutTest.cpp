#include "sessionBench.h"

#include <gtest/gtest.h>

// The driver's cache is laid out for a plan before the first request: station by station, and each
// unit once.

namespace {

enum { SECOND = SessionBench::SECOND, STATIONS = 20 };

std::vector<Tag> tagsOfManyStations()
{
    std::vector<Tag> tags;
    for (int station = 1; station <= STATIONS; ++station) {
        tags.push_back(tagOf("MW", 3010, Tag::UINT16, station));
        tags.push_back(tagOf("MX", 3000 + 16 * 500, Tag::BOOL, station));
    }
    return tags;
}

} // namespace

class DriverFeederLayoutTest : public testing::Test
{
protected:
    DriverFeederLayoutTest()
    {
        for (int station = 1; station <= STATIONS; ++station)
            bench.plc.station(station).holding[3010] = 100 + station;
    }

    /// @return number of calls until nothing is left
    int layOut()
    {
        int calls = 0;
        while (bench.feeder.layOutNext())
            ++calls;
        return calls;
    }

    SessionBench bench;
};

TEST_F(DriverFeederLayoutTest, GoesStationByStation)
{
    bench.poll(tagsOfManyStations());
    EXPECT_EQ(int(STATIONS), layOut());
    EXPECT_EQ(0, layOut());
}

TEST_F(DriverFeederLayoutTest, IsNotNeededForTagsThatAreNotPolled)
{
    bench.know(tagsOfManyStations());
    EXPECT_EQ(0, layOut());
    EXPECT_EQ(0, SessionBench::plans());
}

TEST_F(DriverFeederLayoutTest, AllStationsArePolledAfterwards)
{
    bench.poll(tagsOfManyStations());
    layOut();
    bench.run(5 * SECOND);
    for (int station = 1; station <= STATIONS; ++station)
        EXPECT_EQ(100 + station, bench.shown(2 * (station - 1)));
}

TEST_F(DriverFeederLayoutTest, InterruptedLayOutIsMadeUpByThePlan)
{
    bench.poll(tagsOfManyStations());
    bench.feeder.layOutNext();
    bench.run(5 * SECOND);
    for (int station = 1; station <= STATIONS; ++station)
        EXPECT_EQ(100 + station, bench.shown(2 * (station - 1)));
}

// Every station answers its first probe. A plan after each of these answers would be replaced
// before a request of it is sent.
TEST_F(DriverFeederLayoutTest, StationsThatAnswerAtTheStartArePlannedTogether)
{
    bench.poll(tagsOfManyStations());
    bench.run(5 * SECOND);
    EXPECT_LE(SessionBench::plans(), 2);
}
