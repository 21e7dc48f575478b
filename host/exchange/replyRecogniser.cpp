#include "exchange/replyRecogniser.h"

namespace {

enum {
    CHECKSUM_BYTES = 2,
    EXCEPTION_BYTES = 5,
    READ_OVERHEAD = 5,
    ECHOED_BYTES = 6,
    LAST_READ_FUNCTION = 4,
    EXCEPTION_FLAG = 0x80
};

int byteAt(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

/// MODBUS over Serial Line V1.02, 6.2.2. The host's own, as it never links to the driver.
bool endsInItsChecksum(const QByteArray& frame)
{
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < frame.size() - CHECKSUM_BYTES; ++i) {
        remainder ^= unsigned(byteAt(frame, i));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) != 0 ? (remainder >> 1) ^ 0xA001u : remainder >> 1;
    }
    const int low = byteAt(frame, int(frame.size()) - 2);
    const int high = byteAt(frame, int(frame.size()) - 1);
    return unsigned(low + 256 * high) == remainder;
}

bool isFrameAt(const QByteArray& received, int at, const QByteArray& start, int length)
{
    return received.size() - at >= length && received.mid(at, start.size()) == start &&
           endsInItsChecksum(received.mid(at, length));
}

QByteArray exceptionStart(const QByteArray& request)
{
    QByteArray start = request.left(2);
    start[1] = static_cast<char>(byteAt(request, 1) | EXCEPTION_FLAG);
    return start;
}

} // namespace

QByteArray replySignature(const QByteArray& request, int replyLength)
{
    if (byteAt(request, 1) > LAST_READ_FUNCTION) return request.left(ECHOED_BYTES);
    return request.left(2) + static_cast<char>((replyLength - READ_OVERHEAD) & 0xFF);
}

RECOGNISED recogniseReply(const QByteArray& received, const QByteArray& request, int replyLength)
{
    const QByteArray replyStart = replySignature(request, replyLength);
    const QByteArray refusal = exceptionStart(request);
    RECOGNISED found;
    for (int at = 0; at + EXCEPTION_BYTES <= received.size(); ++at) {
        if (isFrameAt(received, at, replyStart, replyLength)) {
            found.reply = received.mid(at, replyLength);
            return found;
        }
        if (isFrameAt(received, at, refusal, EXCEPTION_BYTES)) {
            found.reply = received.mid(at, EXCEPTION_BYTES);
            found.exceptionCode = byteAt(found.reply, 2);
            return found;
        }
    }
    return found;
}

const char* exceptionText(int code)
{
    switch (code) { // MODBUS Application Protocol V1.1b3, 7
    case 1:
        return "illegal function";
    case 2:
        return "illegal address";
    case 3:
        return "illegal value";
    case 4:
        return "device failure";
    case 5:
        return "acknowledged, still working";
    case 6:
        return "device busy";
    case 8:
        return "memory parity error";
    case 10:
        return "gateway path unavailable";
    case 11:
        return "gateway target does not respond";
    default:
        return "unknown exception";
    }
}
