#ifndef FRAME_SHAPE_H
#define FRAME_SHAPE_H

#include <QByteArray>

// What the bytes of a Modbus RTU frame say without the driver's help
// (MODBUS Application Protocol V1.1b3, 6; MODBUS over Serial Line V1.02, 2.5.1).

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

enum {
    BROADCAST_STATION = 0,
    MOST_READ_REGISTERS = 125, ///< MODBUS Application Protocol V1.1b3, 6.3
    DATA_AT = 3,               ///< the data in the reply to a read
    FIRST_REGISTER_AT = 2,     ///< in a request
    QUANTITY_AT = 4            ///< in a request
};

/// The byte at an offset within the frame, 0 to 255.
int frameByte(const QByteArray& frame, int at);

/// The big-endian word at an offset within the frame, 0 to 65535.
int frameWord(const QByteArray& frame, int at);

/// True when the last two bytes are the checksum of those before.
bool hasRightChecksum(const QByteArray& frame);

/// The frame that consists of these bytes and their checksum.
QByteArray withChecksum(const QByteArray& bytes);

/// The request that reads `count` registers from `first` on, by READ_HOLDING or READ_INPUT.
QByteArray readRequest(int station, int function, int first, int count);

/// True for a request or reply of READ_HOLDING or READ_INPUT.
bool isRead(const QByteArray& frame);

/// True for a write of one register or coil, whose answer has the request's own bytes.
bool isAnsweredByItself(const QByteArray& request);

/// Length of the reply that a request asks for; 0 when none can come: a broadcast, a function that
/// the driver never sends, or bytes that are no request.
int dueReplyLength(const QByteArray& request);

#endif
