#ifndef FRAME_H
#define FRAME_H

#include <cstddef>
#include <cstdint>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

enum FrameField { STATION_AT = 0, FUNCTION_AT = 1, CRC_BYTES = 2, BROADCAST_STATION = 0 };

/// The checksum of the first `length` bytes at `bytes`; on the wire its low byte comes first.
std::uint16_t crcOf(const std::uint8_t* bytes, std::size_t length);

/// True when the last two of `length` bytes are the checksum of the bytes ahead of them.
bool endsWithItsCrc(const std::uint8_t* bytes, std::size_t length);

/// `bytes` with their checksum behind them.
Bytes withCrc(Bytes bytes);

#endif
