#ifndef CHECKSUM_H
#define CHECKSUM_H

enum { CHECKSUM_BYTES = 2 };

/// CRC-16/MODBUS of the first `len` bytes (MODBUS over Serial Line V1.02, 6.2.2): start 0xFFFF,
/// polynomial 0xA001 reflected, no final XOR. A frame carries it low byte first.
unsigned short computate_check(const unsigned char* buf, unsigned short len);

#endif
