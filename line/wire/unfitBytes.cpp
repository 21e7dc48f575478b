#include "wire/unfitBytes.h"

#include "wire/frameShape.h"
#include "wire/replyFrames.h"

namespace {

// The header of Modbus TCP (MODBUS Messaging on TCP/IP V1.0b, 3.1.3): transaction, protocol 0,
// number of bytes behind the length, station; then function and data as in RTU, without a checksum.
enum {
    PROTOCOL_AT = 2,
    LENGTH_AT = 4,
    UNIT_AT = 6,
    FUNCTION_AT = 7,
    COUNT_AT = 8,
    SHORTEST_TCP_ANSWER = 9,
    REFUSAL_LENGTH = 3, ///< station, function, code
    READ_LENGTH = 3,    ///< station, function, number of data bytes; the data follow
    WRITE_LENGTH = 6    ///< station, function, two words
};

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString counted(int bytes)
{
    return bytes == 1 ? text("1 byte") : text("%1 bytes").arg(bytes);
}

/// The answer of Modbus TCP to what was asked.
bool isTcpAnswer(const QByteArray& request, const QByteArray& received)
{
    if (frameByte(received, UNIT_AT) != frameByte(request, 0)) return false;
    const int length = frameWord(received, LENGTH_AT);
    const int function = frameByte(received, FUNCTION_AT);
    if (function == (frameByte(request, 1) | EXCEPTION_BIT)) return length == REFUSAL_LENGTH;
    if (function != frameByte(request, 1)) return false;
    if (!isRead(request)) return length == WRITE_LENGTH;
    const int data = 2 * frameWord(request, QUANTITY_AT);
    return length == READ_LENGTH + data && frameByte(received, COUNT_AT) == data;
}

/// The answer of a peer that took the request's own bytes for a header: it returns them as
/// transaction, protocol and station.
bool isTcpAnswerToBytes(const QByteArray& request, const QByteArray& received)
{
    return received.startsWith(request.left(LENGTH_AT)) &&
           frameWord(received, LENGTH_AT) == received.size() - UNIT_AT &&
           frameByte(received, UNIT_AT) == frameByte(request, UNIT_AT);
}

bool isTcp(const QByteArray& request, const QByteArray& received)
{
    return received.size() >= SHORTEST_TCP_ANSWER && frameWord(received, PROTOCOL_AT) == 0 &&
           (isTcpAnswer(request, received) || isTcpAnswerToBytes(request, received));
}

/// The first whole frame among the bytes; empty: none.
QByteArray firstFrame(const QByteArray& received)
{
    for (int at = 0; at < received.size(); ++at) {
        const int length = replyLengthAt(received, at);
        if (length > 0) return received.mid(at, length);
    }
    return QByteArray();
}

QString describeFrame(const QByteArray& request, const QByteArray& frame)
{
    const int station = frameByte(frame, 0);
    if (station == frameByte(request, 0)) return text("an answer to another request");
    return text("an answer of another station, %1").arg(station);
}

QString describePart(const QByteArray& request, const QByteArray& received)
{
    const int size = int(received.size());
    if (size < EXCEPTION_BYTES) return counted(size) + text(", too few for an answer");
    const int due = dueReplyLength(request);
    if (size < due && received.startsWith(answerSignature(request).left(DATA_AT)))
        return text("%1 of %2 bytes of the answer").arg(size).arg(due);
    return counted(size) + text(" with a wrong checksum: noise, or another baud rate or parity");
}

} // namespace

QString describeUnfit(const QByteArray& request, const QByteArray& received)
{
    if (received.isEmpty() || dueReplyLength(request) == 0) return QString();
    if (!replyTo(request, received).isEmpty()) return QString();
    if (isTcp(request, received))
        return text("a Modbus TCP header: this peer speaks Modbus TCP, not RTU over TCP");
    if (received.contains(request)) return text("the request itself came back: an echoing adapter");
    const QByteArray frame = firstFrame(received);
    return frame.isEmpty() ? describePart(request, received) : describeFrame(request, frame);
}
