#include "checksum.h"

static const unsigned CRC_START = 0xFFFFu;
static const unsigned CRC_POLYNOMIAL = 0xA001u;

enum { BYTE_VALUES = 256, STEP_BYTES = 4 };

namespace {

/// The effect of a byte on the checksum, by its value and by the number of bytes of its step that
/// follow it.
struct ChecksumTable
{
    unsigned short after[STEP_BYTES][BYTE_VALUES];

    ChecksumTable();
};

ChecksumTable::ChecksumTable()
{
    for (unsigned value = 0; value < BYTE_VALUES; ++value) {
        unsigned crc = value;
        for (int following = 0; following < STEP_BYTES; ++following) {
            for (int bit = 0; bit < 8; ++bit)
                crc = (crc & 1u) != 0 ? (crc >> 1) ^ CRC_POLYNOMIAL : crc >> 1;
            after[following][value] = static_cast<unsigned short>(crc);
        }
    }
}

const ChecksumTable TABLE;

} // namespace

/// Takes four bytes a step: none of the four lookups waits for the result of another one.
unsigned short computate_check(const unsigned char* buf, unsigned short len)
{
    unsigned crc = CRC_START;
    unsigned i = 0;
    for (; i + STEP_BYTES <= len; i += STEP_BYTES) {
        const unsigned char* step = buf + i;
        crc =
            unsigned(TABLE.after[3][(crc ^ step[0]) & 0xFFu] ^ TABLE.after[2][crc >> 8 ^ step[1]] ^
                     TABLE.after[1][step[2]] ^ TABLE.after[0][step[3]]);
    }
    for (; i < len; ++i)
        crc = crc >> 8 ^ TABLE.after[0][(crc ^ buf[i]) & 0xFFu];
    return static_cast<unsigned short>(crc);
}
