#ifndef WRITTEN_AREA_H
#define WRITTEN_AREA_H

#include "cacheHelpers.h"
#include "localStore.h"
#include "writeCompletion.h"

// Marks of a unit; see dataAreas.h.
enum { UNIT = 1, PAIR_FIRST = 2, PAIR_SECOND = 4 };

/// Writes to an area V of a device with other widths than this one's.
class WrittenAreaTest : public DriverTest
{
protected:
    enum { STATION = 4, CONFIRMED = 1, FAILED = 0 };

    WrittenAreaTest()
    {
        driver.callbackContext = CONTEXT;
    }

    void store(const char* dataWidth, const char* unitBits, const char* regName, int addr,
               int count, std::vector<unsigned char> values)
    {
        storeWritesOfArea(OtherRow(dataWidth, unitBits), STATION, text(regName), addr, count,
                          values.data());
    }

    /// A "V_bit" variable for each value: bits inside the byte or word units of the area.
    void storeBits(const char* unitBits, int addr, std::vector<unsigned char> values)
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

    static _DATA_ unit(int address)
    {
        return cachedUnit(STATION, "V", address);
    }

    static Bytes read(int address)
    {
        return readBytes(STATION, "V", address);
    }

    static Bytes written(int address)
    {
        return imageBytes(unit(address).writeImage);
    }

    static int pending(int address)
    {
        return unit(address).writePending;
    }

    static unsigned pendingBits(int address)
    {
        return unit(address).pendingBitWrites;
    }

    static Notification told(const char* regName, int address)
    {
        return {CONTEXT, STATION, regName, address};
    }
};

#endif
