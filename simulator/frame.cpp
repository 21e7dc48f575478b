#include "frame.h"

namespace {

enum { BYTE_BITS = 8 };

// MODBUS over Serial Line V1.02, 6.2.2
const std::uint16_t CRC_START = 0xFFFF;
const std::uint16_t CRC_POLYNOMIAL = 0xA001;

} // namespace

std::uint16_t crcOf(const std::uint8_t* bytes, std::size_t length)
{
    std::uint16_t crc = CRC_START;
    for (std::size_t i = 0; i < length; ++i) {
        crc = static_cast<std::uint16_t>(crc ^ bytes[i]);
        for (int bit = 0; bit < BYTE_BITS; ++bit) {
            const bool carry = (crc & 1) != 0;
            crc = static_cast<std::uint16_t>(crc >> 1);
            if (carry) crc = static_cast<std::uint16_t>(crc ^ CRC_POLYNOMIAL);
        }
    }
    return crc;
}

bool endsWithItsCrc(const std::uint8_t* bytes, std::size_t length)
{
    if (length < CRC_BYTES) return false;
    const std::size_t crcAt = length - CRC_BYTES;
    return crcOf(bytes, crcAt) == bytes[crcAt] + bytes[crcAt + 1] * 256;
}

Bytes withCrc(Bytes bytes)
{
    const std::uint16_t crc = crcOf(bytes.data(), bytes.size());
    bytes.push_back(static_cast<std::uint8_t>(crc & 0xFF));
    bytes.push_back(static_cast<std::uint8_t>(crc >> BYTE_BITS));
    return bytes;
}
