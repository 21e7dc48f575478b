#ifndef FRAME_SHAPE_H
#define FRAME_SHAPE_H

#include <QByteArray>

// What the bytes of a Modbus RTU frame say without the driver's help.

enum ModbusFunction {
    READ_HOLDING = 3,
    READ_INPUT = 4,
    WRITE_COIL = 5,
    WRITE_REGISTER = 6,
    WRITE_COILS = 15,
    WRITE_REGISTERS = 16,
    EXCEPTION_BIT = 0x80 ///< set in the function of a refusal
};

/// Lengths in bytes, checksum and all.
enum FrameLength {
    SHORTEST_FRAME = 4, ///< station, function, checksum
    EXCEPTION_BYTES = 5,
    READ_OVERHEAD = 5,      ///< of the reply to a read, around its data
    FIXED_REQUEST_BYTES = 8 ///< functions 3 to 6, and the echo of every write
};

/// The byte at an offset within the frame, 0 to 255.
int frameByte(const QByteArray& frame, int at);

/// The big-endian word at an offset within the frame, 0 to 65535.
int frameWord(const QByteArray& frame, int at);

/// True when the last two bytes are the checksum of those before.
bool hasRightChecksum(const QByteArray& frame);

/// Length of the reply that a request asks for; 0 when none can come: a broadcast, a function that
/// the driver never sends, or bytes that are no request.
int dueReplyLength(const QByteArray& request);

#endif
