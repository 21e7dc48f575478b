#ifndef MODBUS_CHECKSUM_H
#define MODBUS_CHECKSUM_H

// Shares no code with the driver, the line library or the simulated PLC, so that a mistake of
// theirs is not made here again. modbusChecksumTest.cpp compares it with published values.

/// CRC-16 of MODBUS over Serial Line V1.02, 6.2.2, a bit at a time.
template <typename Bytes> unsigned modbusChecksum(const Bytes& bytes)
{
    unsigned remainder = 0xFFFF;
    for (const auto byte : bytes) {
        remainder ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) != 0 ? remainder >> 1 ^ 0xA001u : remainder >> 1;
    }
    return remainder;
}

/// The bytes closed by their checksum, low byte first.
template <typename Bytes> Bytes frameWith(Bytes body)
{
    const unsigned checksum = modbusChecksum(body);
    body.push_back(static_cast<typename Bytes::value_type>(checksum & 0xFFu));
    body.push_back(static_cast<typename Bytes::value_type>(checksum >> 8));
    return body;
}

#endif
