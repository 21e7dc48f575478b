#include "exchange/replyRecogniser.h"

#include "exchange/frameShape.h"

namespace {

enum { ECHOED_BYTES = 6 };

bool isFrameAt(const QByteArray& received, int at, const QByteArray& start, int length)
{
    return received.size() - at >= length && received.mid(at, start.size()) == start &&
           hasRightChecksum(received.mid(at, length));
}

QByteArray exceptionStart(const QByteArray& request)
{
    QByteArray start = request.left(2);
    start[1] = static_cast<char>(frameByte(request, 1) | EXCEPTION_BIT);
    return start;
}

} // namespace

QByteArray replySignature(const QByteArray& request, int replyLength)
{
    if (frameByte(request, 1) > READ_INPUT) return request.left(ECHOED_BYTES);
    return request.left(2) + static_cast<char>((replyLength - READ_OVERHEAD) & 0xFF);
}

int replyPosition(const QByteArray& received, const QByteArray& signature, int length)
{
    for (int at = 0; at + length <= received.size(); ++at) {
        if (isFrameAt(received, at, signature, length)) return at;
    }
    return -1;
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
            found.exceptionCode = frameByte(found.reply, 2);
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
