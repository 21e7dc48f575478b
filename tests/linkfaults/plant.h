#ifndef PLANT_H
#define PLANT_H

#include "benchHost.h"

#include <vector>

// What the panel of the fault runs polls, writes and transfers, and what the PLC's program moves.
// No two of the written elements share memory, so that each has one account.

enum { STATIONS = 3, GROUP_BITS = 16, MARKERS = 3000 };

/// First marker bit of the group that is marker word `word`.
inline int markerGroup(int word)
{
    return MARKERS + GROUP_BITS * (word - MARKERS);
}

/// The same for every station, from a station's own list.
inline std::vector<Units> atEveryStation(const std::vector<Units>& own)
{
    std::vector<Units> all;
    for (int station = 1; station <= STATIONS; ++station)
        for (Units units : own) {
            units.station = station;
            all.push_back(units);
        }
    return all;
}

/// Bits as whole groups. IW 0 and the first IX group are the same memory.
inline std::vector<Units> polledUnits()
{
    return atEveryStation({{0, "MW", 3000, 32},
                           {0, "MW", 3100, 20},
                           {0, "IW", 0, 16},
                           {0, "IW", 40, 8},
                           {0, "QW", 0, 20},
                           {0, "MX", markerGroup(3200), GROUP_BITS},
                           {0, "MX", markerGroup(3201), GROUP_BITS},
                           {0, "MX", markerGroup(3204), GROUP_BITS},
                           {0, "IX", 0, GROUP_BITS},
                           {0, "IX", 32 * GROUP_BITS, GROUP_BITS},
                           {0, "IX", 33 * GROUP_BITS, GROUP_BITS},
                           {0, "QX", 50 * GROUP_BITS, GROUP_BITS},
                           {0, "QX", 51 * GROUP_BITS, GROUP_BITS}});
}

/// Words are all polled, as the driver tells of a withdrawn word only when it is; of bits always.
inline std::vector<Units> writtenUnits()
{
    return atEveryStation({{0, "MW", 3000, 32},
                           {0, "QW", 0, 20},
                           {0, "MX", markerGroup(3200), 2 * GROUP_BITS},
                           {0, "MX", markerGroup(3400), 8},
                           {0, "QX", 50 * GROUP_BITS, 2 * GROUP_BITS},
                           {0, "QX", 100 * GROUP_BITS, 8}});
}

/// Words, or groups of bits.
inline std::vector<Units> unitsReadOnce()
{
    return atEveryStation(
        {{0, "IW", 100, 30}, {0, "IX", 150 * GROUP_BITS, 1}, {0, "MW", 5000, 20}});
}

/// Nobody but the PLC's program changes these.
inline std::vector<Units> movingUnits()
{
    return atEveryStation({{0, "MW", 3100, 20},
                           {0, "IW", 0, 48},
                           {0, "MX", markerGroup(3204), GROUP_BITS},
                           {0, "IW", 100, 51},
                           {0, "MW", 5000, 20}});
}

inline std::vector<Units> recipeUnits()
{
    return {{1, "MW", 6000, 10}, {2, "MW", 6100, 7}, {3, "QW", 200, 1}, {3, "MW", 6200, 5}};
}

#endif
