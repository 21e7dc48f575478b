#include "exchange/longerRead.h"

#include "wire/deviceRegisters.h"
#include "wire/frameShape.h"
#include "wire/protocolLimits.h"
#include "wire/replyFrames.h"

int areaStart(int function, int reg)
{
    return function == READ_HOLDING && reg >= FIRST_MARKER ? int(FIRST_MARKER) : 0;
}

int areaEnd(int function, int reg)
{
    return areaStart(function, reg) == FIRST_MARKER ? int(LAST_MARKER) : int(LAST_INPUT_OR_OUTPUT);
}

QByteArray longerRead(const QByteArray& request)
{
    if (!isRead(request)) return QByteArray();
    const int station = frameByte(request, 0);
    const int function = frameByte(request, 1);
    const int first = frameWord(request, FIRST_REGISTER_AT);
    const int count = frameWord(request, QUANTITY_AT);
    if (count < 1 || count >= MOST_READ_REGISTERS) return QByteArray();
    if (first + count <= areaEnd(function, first))
        return readRequest(station, function, first, count + 1);
    if (first + count - 1 == areaEnd(function, first) && first > areaStart(function, first))
        return readRequest(station, function, first - 1, count + 1);
    return QByteArray();
}

QByteArray cutReply(const QByteArray& reply, const QByteArray& sent, const QByteArray& request)
{
    if (sent == request || exceptionCodeOf(reply) >= 0) return reply;
    const int bytes = 2 * frameWord(request, QUANTITY_AT);
    const int skipped =
        2 * (frameWord(request, FIRST_REGISTER_AT) - frameWord(sent, FIRST_REGISTER_AT));
    QByteArray cut = reply.left(2);
    cut.append(static_cast<char>(bytes));
    return withChecksum(cut + reply.mid(DATA_AT + skipped, bytes));
}
