#include "checksum.h"

static const unsigned CRC_START = 0xFFFFu;
static const unsigned CRC_POLYNOMIAL = 0xA001u;

unsigned short computate_check(const unsigned char* buf, unsigned short len)
{
    unsigned crc = CRC_START;
    for (unsigned i = 0; i < len; ++i) {
        crc ^= buf[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1u) != 0 ? (crc >> 1) ^ CRC_POLYNOMIAL : crc >> 1;
    }
    return static_cast<unsigned short>(crc);
}
