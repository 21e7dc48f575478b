#ifndef PLACE_H
#define PLACE_H

#include <cstdint>
#include <string>

// The device's six areas and where they lie. The device has no other registers and bits.
//
//   area  as a user writes it     number on the wire    memory
//   IW    IW0 to IW510, even      0 to 255              input registers
//   QW    QW0 to QW510, even      0 to 255              holding registers
//   MW    MW0 to MW8190, even     3000 to 7095          holding registers
//   IX    IX0.0 to IX511.7        0 to 4095             bits of the input registers from 0
//   QX    QX0.0 to QX511.7        0 to 4095             bits of the holding registers from 0
//   MX    MX0.0 to MX7816.7       3000 to 65535         bits of the holding registers from 3000
//
// A user counts bytes, the wire counts words or bits: MW100 is 3000 + 100 / 2, MX12.3 is
// 3000 + 12 * 8 + 3. Bit number 16 w + k of an area is bit k of its word w.

enum Area { AREA_IW, AREA_QW, AREA_MW, AREA_IX, AREA_QX, AREA_MX };

struct AreaRow
{
    const char* name;
    Area area;
    bool isBits;
    bool isInput;
    int first; ///< number on the wire, and of the first word in memory
    int last;  ///< number on the wire
};

const AreaRow& rowOf(Area area);

/// Null when there is no area of that name.
const AreaRow* areaNamed(const std::string& name);

/// A word or a bit of a station.
struct Place
{
    int station = 1;
    Area area = AREA_IW;
    int number = 0; ///< as on the wire, within its area
};

struct PlaceValue
{
    Place place;
    std::uint16_t value = 0; ///< 0 or 1 for a bit
};

/// Neighbouring bits of the memory of one station. Bit k of register w is bit 16 w + k.
struct MemorySpan
{
    bool isInput = false; ///< of the input registers; else of the holding registers
    int first = 0;
    int count = 0;
};

enum { WORD_BITS = 16 };

/// One bit, or the 16 bits of a word.
MemorySpan spanOf(const Place& place);

bool doOverlap(const MemorySpan& one, const MemorySpan& other);

#endif
