#include "frameRules.h"

#include "fuzzInput.h"

#include <cstdio>
#include <cstdlib>

namespace {

enum {
    SHORT_REQUEST = 8,
    LONG_REQUEST_HEAD = 9, // with the checksum
    READ_REPLY_HEAD = 5,
    ECHO = 8,
    DATA_START = 3,
    NO_REPLY_FITS = 1,
    CRC_BYTES = 2,
    GROUP_BITS = 16
};

int bigEndian(const unsigned char* at)
{
    return at[0] * 256 + at[1];
}

const unsigned char* bytesOf(const QByteArray& reply)
{
    return reinterpret_cast<const unsigned char*>(reply.constData());
}

bool isRead(int function)
{
    return function == 3 || function == 4;
}

void requireSoundRead(const FRAME_PRO& frame)
{
    const QString& area = frame.var.regName;
    const bool inputs = area == QLatin1String("IW") || area == QLatin1String("IX");
    require(frame.sendBuf[1] == (inputs ? 4 : 3), "inputs are read with function 4, others with 3");
    require(frame.sendLen == SHORT_REQUEST, "a read request takes 8 bytes");
    if (frame.var.station == 0) {
        require(frame.recvLen == 0 && frame.itemCount == 0, "nobody answers a broadcast read");
        return;
    }
    require(frame.dataStart == DATA_START, "read data starts at byte 3");
    require(frame.itemCount == frame.var.count, "a read counts the units of its variable");
    if (frame.recvLen == NO_REPLY_FITS) return;
    const int registers = (frame.recvLen - READ_REPLY_HEAD) / 2;
    require((registers & 0xFFFF) == bigEndian(frame.sendBuf + 4),
            "a read expects the registers that it asks for");
}

void requireSoundWrite(const FRAME_PRO& frame)
{
    const int function = frame.sendBuf[1];
    const bool words = isWordName(frame.var.regName);
    require(words ? function == 6 || function == 16 : function == 5 || function == 15,
            "words are written with 6 or 16, bits with 5 or 15");
    require(frame.itemCount == 0 && frame.dataStart == 0, "a write brings no data");
    require(frame.recvLen == (frame.var.station != 0 ? int(ECHO) : 0), "a write is echoed");
    if (function < 15) {
        require(frame.sendLen == SHORT_REQUEST, "a single write takes 8 bytes");
        return;
    }
    const int count = bigEndian(frame.sendBuf + 4);
    const int dataBytes = words ? 2 * count : (count + 7) / 8;
    require(count == frame.var.count, "a multiple write carries its count");
    require(frame.sendLen == LONG_REQUEST_HEAD + dataBytes, "a multiple write carries its data");
    require(frame.sendBuf[6] == (dataBytes & 0xFF), "a multiple write tells its data's length");
}

} // namespace

void require(bool holds, const char* rule)
{
    if (holds) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

unsigned checksumOf(const unsigned char* bytes, int length)
{
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < length; ++i) {
        remainder ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) != 0 ? remainder >> 1 ^ 0xA001u : remainder >> 1;
    }
    return remainder;
}

QByteArray closed(QByteArray body)
{
    const unsigned crc = checksumOf(bytesOf(body), int(body.size()));
    body.append(char(crc & 0xFF));
    body.append(char(crc >> 8));
    return body;
}

bool isWordName(const QString& regName)
{
    return regName == QLatin1String("MW") || regName == QLatin1String("IW") ||
           regName == QLatin1String("QW");
}

void requireSoundFrame(const FRAME_PRO& frame)
{
    require(frame.sendLen >= 0 && frame.sendLen <= FRAME_BYTES, "a request fits its buffer");
    if (frame.sendLen == 0) {
        require(frame.recvLen == 0 || frame.recvLen == NO_REPLY_FITS,
                "what is not sent has no reply");
        return;
    }
    require(frame.sendLen >= SHORT_REQUEST, "no request is shorter than 8 bytes");
    const int body = frame.sendLen - CRC_BYTES;
    const unsigned crc = checksumOf(frame.sendBuf, body);
    require(frame.sendBuf[body] == (crc & 0xFF) && frame.sendBuf[body + 1] == crc >> 8,
            "a request ends with its checksum");
    require(frame.sendBuf[0] == (unsigned(frame.var.station) & 0xFF),
            "a request starts with its station");
    if (isRead(frame.sendBuf[1]))
        requireSoundRead(frame);
    else
        requireSoundWrite(frame);
}

bool answers(const FRAME_PRO& frame, const QByteArray& reply)
{
    const int length = int(reply.size());
    if (length == 0 && frame.recvLen == 0) return true;
    if (length != frame.recvLen || length < CRC_BYTES) return false;
    return closed(reply.left(length - CRC_BYTES)) == reply;
}

QByteArray goodReply(FuzzInput& input, const FRAME_PRO& frame)
{
    if (frame.recvLen < CRC_BYTES) return QByteArray();
    return closed(input.bytes(frame.recvLen - CRC_BYTES));
}

QByteArray anyReply(FuzzInput& input, const FRAME_PRO& frame)
{
    QByteArray reply = goodReply(input, frame);
    switch (input.number(0, 7)) {
    case 0:
        return QByteArray();
    case 1:
        return input.bytes(input.number(0, 64));
    case 2:
        return reply.left(input.number(0, int(reply.size())));
    case 3:
        return reply + input.bytes(input.number(1, 4));
    case 4:
        if (reply.isEmpty()) return reply;
        reply[input.number(0, int(reply.size()) - 1)] = char(input.number(0, 255));
        return reply;
    default:
        return reply;
    }
}

QByteArray valuesIn(const QByteArray& reply, const FRAME_PRO& frame)
{
    const bool words = isWordName(frame.var.regName);
    QByteArray values;
    for (int i = 0; i < frame.itemCount; ++i) {
        if (words) {
            values.append(reply.at(DATA_START + 2 * i + 1));
            values.append(reply.at(DATA_START + 2 * i));
        } else if (i < GROUP_BITS) {
            const int word = bigEndian(bytesOf(reply) + DATA_START);
            values.append(char(word >> i & 1));
        }
    }
    return values;
}
