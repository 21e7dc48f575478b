#ifndef WRITTEN_AREA_H
#define WRITTEN_AREA_H

#include "localStore.h"
#include "toldHost.h"
#include "writeCompletion.h"

// Marks of a unit; see dataAreas.h.
enum { UNIT = 1, PAIR_FIRST = 2, PAIR_SECOND = 4 };

/// Writes to an area V of a device with other widths than this one's.
class WrittenAreaTest : public ToldHostTest
{
protected:
    void store(const char* dataWidth, const char* unitBits, const char* regName, int addr,
               int count, const std::vector<unsigned char>& values)
    {
        storeWritesOfArea(OtherRow(dataWidth, unitBits), STATION, text(regName), addr, count,
                          values.data());
    }

    /// A "V_bit" variable for each value: bits inside the byte or word units of the area.
    void storeBits(const char* unitBits, int addr, const std::vector<unsigned char>& values)
    {
        store("1", unitBits, "V_bit", addr, int(values.size()), values);
    }

    void complete(const char* dataWidth, const char* unitBits, const char* regName, int addr,
                  int count, int ok)
    {
        completeWritesOfArea(OtherRow(dataWidth, unitBits), STATION, text(regName), addr, count,
                             ok);
    }

    void completeBits(const char* unitBits, int addr, int count, int ok)
    {
        complete("1", unitBits, "V_bit", addr, count, ok);
    }

    static Bytes read(int address)
    {
        return ToldHostTest::read("V", address);
    }

    static Bytes written(int address)
    {
        return ToldHostTest::written("V", address);
    }

    static int pending(int address)
    {
        return ToldHostTest::pending("V", address);
    }

    static unsigned pendingBits(int address)
    {
        return unit("V", address).pendingBitWrites;
    }
};

#endif
