#ifndef CACHE_HELPERS_H
#define CACHE_HELPERS_H

#include "areaRow.h"
#include "driverFixture.h"

#include <limits>
#include <ostream>
#include <vector>

enum { LOWEST = std::numeric_limits<int>::min(), HIGHEST = std::numeric_limits<int>::max() };

typedef std::vector<int> Bytes;

/// Row of a register table with other widths than this device's.
class OtherRow
{
public:
    OtherRow(const char* dataWidth, const char* unitBits)
    {
        columns[DATA_WIDTH] = text(dataWidth);
        columns[UNIT_BITS] = text(unitBits);
    }
    operator AreaRow() const
    {
        return columns;
    }

private:
    QString columns[AREA_COLUMN_COUNT];
};

/// Marks of one cached unit; the whole cache as a list of them shows marks too many as well.
struct Mark
{
    int station;
    std::string name;
    int address;
    unsigned flags;
    unsigned bitMask;

    bool operator==(const Mark& other) const
    {
        return station == other.station && name == other.name && address == other.address &&
               flags == other.flags && bitMask == other.bitMask;
    }
};

typedef std::vector<Mark> Marks;

inline std::ostream& operator<<(std::ostream& out, const Mark& mark)
{
    return out << "(" << mark.station << ", " << mark.name << ", " << mark.address << ", "
               << mark.flags << ", " << mark.bitMask << ")";
}

inline Marks allMarks()
{
    Marks marks;
    for (int i = 0; i < int(driver.dataAreas.size()); ++i) {
        const _DATA_& unit = driver.dataAreas.at(i);
        marks.push_back({unit.station, unit.regName.toStdString(), unit.address, unit.monitorFlags,
                         unit.bitMonitorMask});
    }
    return marks;
}

inline Bytes imageBytes(const quint8 (&image)[IMAGE_BYTES])
{
    return Bytes(image, image + IMAGE_BYTES);
}

inline Bytes readBytes(int station, const char* regName, int address)
{
    return imageBytes(cachedUnit(station, regName, address).readImage);
}

/// Makes the unit show a value that the host wrote and nobody confirmed.
inline int putPendingWrite(int station, const char* regName, int address, unsigned readValue,
                           unsigned writtenValue)
{
    const int index = putUnit(station, regName, address, readValue);
    _DATA_& unit = driver.dataAreas[index];
    unit.writePending = 1;
    for (int i = 0; i < IMAGE_BYTES; ++i)
        unit.writeImage[i] = static_cast<unsigned char>(writtenValue >> (8 * i) & 0xFFu);
    return index;
}

#endif
