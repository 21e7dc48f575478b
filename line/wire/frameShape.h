#ifndef FRAME_SHAPE_H
#define FRAME_SHAPE_H

#include <QByteArray>

// Reads and builds the bytes of Modbus RTU frames, without the driver
// (MODBUS Application Protocol V1.1b3, 6; MODBUS over Serial Line V1.02, 2.5.1).

enum ModbusFunction {
    READ_HOLDING = 3,
    READ_INPUT = 4,
    WRITE_COIL = 5,
    WRITE_REGISTER = 6,
    WRITE_COILS = 15,
    WRITE_REGISTERS = 16,
    EXCEPTION_BIT = 0x80 ///< a refusal has the request's function with this bit set
};

/// Lengths in bytes, with the checksum.
enum FrameLength {
    SHORTEST_FRAME = 4,     ///< station, function, checksum
    EXCEPTION_BYTES = 5,    ///< a refusal
    READ_OVERHEAD = 5,      ///< the bytes around the data in the reply to a read
    FIXED_REQUEST_BYTES = 8 ///< a request of functions 3 to 6, and the echo of every write
};

enum {
    BROADCAST_STATION = 0,
    DATA_AT = 3,           ///< offset of the data in the reply to a read
    FIRST_REGISTER_AT = 2, ///< offset in a request
    QUANTITY_AT = 4        ///< offset in a request
};

/// The byte at offset `at`, 0 to 255. The offset must lie inside the frame.
int frameByte(const QByteArray& frame, int at);

/// The big-endian word at offset `at`, 0 to 65535. Both bytes must lie inside the frame.
int frameWord(const QByteArray& frame, int at);

/// True when the last two bytes are the checksum of the bytes before.
bool hasRightChecksum(const QByteArray& frame);

/// The given bytes with their checksum behind.
QByteArray withChecksum(const QByteArray& bytes);

/// The request that reads `count` registers from `first` on, by READ_HOLDING or READ_INPUT.
QByteArray readRequest(int station, int function, int first, int count);

/// True for a request or reply of READ_HOLDING or READ_INPUT.
bool isRead(const QByteArray& frame);

/// True for a write of one register or coil: its answer has the same bytes as the request.
bool isAnsweredByItself(const QByteArray& request);

/// Length in bytes of the reply that a request asks for. 0 when no reply can come: to a broadcast,
/// to a function that the driver never sends, and to bytes that are no request.
int dueReplyLength(const QByteArray& request);

#endif
