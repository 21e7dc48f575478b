#include "wire/replyFrames.h"

#include "wire/frameShape.h"

namespace {

enum { SIGNATURE_OF_READ = 3, SIGNATURE_OF_WRITE = 6, SIGNATURE_OF_REFUSAL = 2 };

/// The length of a reply, from its second and third byte; 0 when no reply has these bytes.
int lengthByShape(int function, int third)
{
    switch (function & ~int(EXCEPTION_BIT)) {
    case READ_HOLDING:
    case READ_INPUT:
        if ((function & EXCEPTION_BIT) != 0) return EXCEPTION_BYTES;
        return third > 0 && third % 2 == 0 ? READ_OVERHEAD + third : 0;
    case WRITE_COIL:
    case WRITE_REGISTER:
    case WRITE_COILS:
    case WRITE_REGISTERS:
        return (function & EXCEPTION_BIT) != 0 ? EXCEPTION_BYTES : FIXED_REQUEST_BYTES;
    default:
        return 0;
    }
}

} // namespace

QByteArray answerSignature(const QByteArray& request)
{
    if (!isRead(request)) return request.left(SIGNATURE_OF_WRITE);
    QByteArray signature = request.left(2);
    signature.append(static_cast<char>(2 * frameWord(request, QUANTITY_AT) & 0xFF));
    return signature;
}

QByteArray refusalSignature(const QByteArray& request)
{
    QByteArray signature = request.left(1);
    signature.append(static_cast<char>(frameByte(request, 1) | EXCEPTION_BIT));
    return signature;
}

QByteArray signatureOf(const QByteArray& reply)
{
    if (exceptionCodeOf(reply) >= 0) return reply.left(SIGNATURE_OF_REFUSAL);
    return reply.left(isRead(reply) ? SIGNATURE_OF_READ : SIGNATURE_OF_WRITE);
}

int exceptionCodeOf(const QByteArray& reply)
{
    return (frameByte(reply, 1) & EXCEPTION_BIT) != 0 ? frameByte(reply, 2) : -1;
}

int replyLengthAt(const QByteArray& received, int at)
{
    if (received.size() - at < EXCEPTION_BYTES) return 0;
    const int length = lengthByShape(frameByte(received, at + 1), frameByte(received, at + 2));
    if (length == 0 || received.size() - at < length) return 0;
    return hasRightChecksum(received.mid(at, length)) ? length : 0;
}

QByteArray replyTo(const QByteArray& request, const QByteArray& received)
{
    const QByteArray answer = answerSignature(request);
    const QByteArray refusal = refusalSignature(request);
    for (int at = 0; at + EXCEPTION_BYTES <= received.size(); ++at) {
        const QByteArray reply = received.mid(at, replyLengthAt(received, at));
        if (reply.isEmpty()) continue;
        const QByteArray signature = signatureOf(reply);
        if (signature == answer || signature == refusal) return reply;
    }
    return QByteArray();
}
