#include "requestFrames.h"

#include "addressBase.h"
#include "areaClass.h"
#include "checksum.h"
#include "driverState.h"
#include "wrapAround.h"

// Requests on the wire (MODBUS Application Protocol V1.1b3, 6.3 to 6.12; RTU framing by MODBUS over
// Serial Line V1.02, 2.5.1). Fields are big-endian but for the checksum.
//
//   read            | station | 3 or 4 | first register | registers          | crc lo | crc hi |
//   one bit         | station | 5      | bit            | FF 00 or 00 00     | crc lo | crc hi |
//   one word        | station | 6      | register       | value              | crc lo | crc hi |
//   several bits    | station | 15     | first bit      | bits  | n | n bytes  | crc lo | crc hi |
//   several words   | station | 16     | first register | words | n | n bytes  | crc lo | crc hi |
//
// The device has no functions 1 and 2: bits are read as the 16-bit registers that hold them, yet
// written by their own number. The builders do not validate addresses and counts. A mistake of the
// host may bring any count, below zero too, so the ends of the buffers are guarded.

enum FunctionCode {
    READ_HOLDING_REGISTERS = 3,
    READ_INPUT_REGISTERS = 4,
    WRITE_SINGLE_COIL = 5,
    WRITE_SINGLE_REGISTER = 6,
    WRITE_MULTIPLE_COILS = 15,
    WRITE_MULTIPLE_REGISTERS = 16
};

enum {
    SINGLE_REQUEST_BYTES = 8,   ///< functions 3 to 6
    MULTIPLE_REQUEST_BYTES = 9, ///< functions 15 and 16 without their data
    WRITE_DATA_START = 7,       ///< functions 15 and 16
    WRITE_REPLY_BYTES = 8,      ///< the echo of functions 5, 6, 15 and 16
    READ_REPLY_BYTES = 5,       ///< a read reply without its data
    READ_DATA_START = 3,
    UNMATCHABLE_REPLY_BYTES = 1, ///< shorter than a checksum, so never accepted
    REGISTER_BITS = 16,
    BYTE_BITS = 8
};

static void putBigEndian(unsigned char* at, int value)
{
    at[0] = static_cast<unsigned char>((quint32(value) >> 8) & 0xFFu);
    at[1] = static_cast<unsigned char>(quint32(value) & 0xFFu);
}

static void putHeader(FRAME_PRO& frame, FunctionCode function, int address, int quantity)
{
    frame.sendBuf[0] = static_cast<unsigned char>(quint32(frame.var.station) & 0xFFu);
    frame.sendBuf[1] = static_cast<unsigned char>(function);
    putBigEndian(frame.sendBuf + 2, address);
    putBigEndian(frame.sendBuf + 4, quantity);
}

static void closeRequest(FRAME_PRO& frame, int length)
{
    const int crcAt = length - CHECKSUM_BYTES;
    const unsigned crc = computate_check(frame.sendBuf, static_cast<unsigned short>(crcAt));
    frame.sendBuf[crcAt] = static_cast<unsigned char>(crc & 0xFFu);
    frame.sendBuf[crcAt + 1] = static_cast<unsigned char>(crc >> 8);
    frame.sendLen = length;
}

/// Registers that hold `bits` bits from the start of the first one on.
static int registersOfBits(int bits)
{
    return bits / REGISTER_BITS + (bits % REGISTER_BITS != 0 ? 1 : 0);
}

/// A length that does not fit an int must not become the length of a possible reply.
static int readReplyBytes(int registers)
{
    const qint64 length = qint64(registers) * 2 + READ_REPLY_BYTES;
    return int(length) == length ? int(length) : int(UNMATCHABLE_REPLY_BYTES);
}

/// Bytes that hold `bits` packed bits, rounded up.
static int packedBytes(int bits)
{
    return bits > 0 ? (bits - 1) / BYTE_BITS + 1 : bits / BYTE_BITS;
}

static const FRAME_PRO EMPTY_FRAME = FRAME_PRO();

/// Appends a frame to be filled in its place in the queue, because frames are large to copy.
static FRAME_PRO& queueFrame(const VARIABLE& var)
{
    driver.frameQueue.append(EMPTY_FRAME);
    FRAME_PRO& frame = driver.frameQueue[int(driver.frameQueue.size()) - 1];
    frame.var = var;
    return frame;
}

void handShakeFrame()
{
    driver.frameQueue.append(EMPTY_FRAME);
}

void unsendableFrame(const VARIABLE& var)
{
    queueFrame(var).recvLen = UNMATCHABLE_REPLY_BYTES;
}

int getReadFrame(const QList<VARIABLE>& variables)
{
    if (variables.isEmpty()) return 1;
    FRAME_PRO& frame = queueFrame(variables.at(0));
    const VARIABLE& var = frame.var;

    int firstRegister = var.addr;
    int registers = var.count;
    if (!isWordArea(var.regName)) {
        const int base = addressBase(var.regName, BITS);
        const int bit = wrapSub(var.addr, base);
        firstRegister = bit / REGISTER_BITS + base;
        registers = registersOfBits(wrapAdd(bit % REGISTER_BITS, var.count));
    }
    const bool inputs = var.regName == QLatin1String("IW") || var.regName == QLatin1String("IX");
    putHeader(frame, inputs ? READ_INPUT_REGISTERS : READ_HOLDING_REGISTERS, firstRegister,
              registers);
    closeRequest(frame, SINGLE_REQUEST_BYTES);

    if (var.station != 0) {
        frame.recvLen = readReplyBytes(registers);
        frame.dataStart = READ_DATA_START;
        frame.itemCount = var.count;
    }
    return 1;
}

static void putSingleWrite(FRAME_PRO& frame, bool words)
{
    const unsigned char* value = frame.var.value;
    if (words) {
        putHeader(frame, WRITE_SINGLE_REGISTER, frame.var.addr, value[1] * 256 + value[0]);
    } else {
        putHeader(frame, WRITE_SINGLE_COIL, frame.var.addr, value[0] == 1 ? 0xFF00 : 0x0000);
    }
    closeRequest(frame, SINGLE_REQUEST_BYTES);
}

static void putWords(unsigned char* at, const VARIABLE& var)
{
    for (int i = 0; i < var.count; ++i) {
        at[2 * i] = var.value[2 * i + 1];
        at[2 * i + 1] = var.value[2 * i];
    }
}

/// Packs eight value bytes into one. It adds them, so a byte other than 0 or 1 spills over.
static void putBits(unsigned char* at, const VARIABLE& var)
{
    const int bytes = packedBytes(var.count);
    for (int k = 0; k < bytes; ++k) {
        unsigned packed = 0;
        for (int j = 0; j < BYTE_BITS && BYTE_BITS * k + j < var.count; ++j)
            packed += unsigned(var.value[BYTE_BITS * k + j]) << j;
        at[k] = static_cast<unsigned char>(packed & 0xFFu);
    }
}

static void putMultipleWrite(FRAME_PRO& frame, bool words, int dataBytes)
{
    const VARIABLE& var = frame.var;
    putHeader(frame, words ? WRITE_MULTIPLE_REGISTERS : WRITE_MULTIPLE_COILS, var.addr, var.count);
    frame.sendBuf[WRITE_DATA_START - 1] = static_cast<unsigned char>(quint32(dataBytes) & 0xFFu);
    if (words)
        putWords(frame.sendBuf + WRITE_DATA_START, var);
    else
        putBits(frame.sendBuf + WRITE_DATA_START, var);
    closeRequest(frame, dataBytes + MULTIPLE_REQUEST_BYTES);
}

void getWriteFrame(const VARIABLE& var)
{
    const bool words = isWordArea(var.regName);
    const int most = words ? VALUE_BYTES / 2 : int(VALUE_BYTES);
    if (var.count < -most || var.count > most) {
        unsendableFrame(var);
        return;
    }
    const int dataBytes = words ? 2 * var.count : packedBytes(var.count);
    const int length = dataBytes + MULTIPLE_REQUEST_BYTES;
    if (length < CHECKSUM_BYTES || length > FRAME_BYTES) {
        unsendableFrame(var);
        return;
    }

    FRAME_PRO& frame = queueFrame(var);
    if (var.count == 1)
        putSingleWrite(frame, words);
    else
        putMultipleWrite(frame, words, dataBytes);
    frame.recvLen = var.station != 0 ? WRITE_REPLY_BYTES : 0;
}
