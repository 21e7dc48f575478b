#include "session/frameMeaning.h"

#include "wire/exceptionText.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"
#include "wire/unfitBytes.h"

#include <QStringList>

#include <algorithm>

namespace {

enum {
    LONG_REQUEST_OVERHEAD = 9,
    NUMBER_AT = 2,
    QUANTITY_AT = 4,
    WRITE_DATA_AT = 7,
    READ_DATA_AT = 3,
    COIL_ON = 0xFF00,
    MOST_REGISTERS_SHOWN = 8,
    MOST_COILS_SHOWN = 16
};

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString noFrame(const QByteArray& bytes)
{
    if (bytes.size() == 1) return text("1 byte that is no frame");
    return text("%1 bytes that are no frame").arg(bytes.size());
}

QString fromStation(const QByteArray& frame)
{
    const int station = frameByte(frame, 0);
    return station == 0 ? text("broadcast: ") : text("station %1: ").arg(station);
}

QString counted(int count, const char* one)
{
    return text("%1 %2%3").arg(count).arg(text(one), text(count == 1 ? "" : "s"));
}

/// The first values, separated by blanks, with an ellipsis for the rest.
template <typename ValueText> QString listed(int count, int mostShown, ValueText valueText)
{
    QStringList values;
    for (int i = 0; i < std::min(count, mostShown); ++i)
        values.append(valueText(i));
    if (count > mostShown) values.append(QString(QChar(0x2026)));
    return values.join(QLatin1Char(' '));
}

QString readRequest(const QByteArray& frame, const char* unit)
{
    return text("read %1 from %2")
        .arg(counted(frameWord(frame, QUANTITY_AT), unit))
        .arg(frameWord(frame, NUMBER_AT));
}

QString coilRequest(const QByteArray& frame)
{
    const int state = frameWord(frame, QUANTITY_AT);
    const bool known = state == 0 || state == COIL_ON;
    return text("write coil %1 = %2%3")
        .arg(frameWord(frame, NUMBER_AT))
        .arg(state == COIL_ON ? 1 : state)
        .arg(text(known ? "" : ", neither on nor off"));
}

QString manyRequest(const QByteArray& frame, const char* unit, const QString& values)
{
    return text("write %1 from %2 = %3")
        .arg(counted(frameWord(frame, QUANTITY_AT), unit))
        .arg(frameWord(frame, NUMBER_AT))
        .arg(values);
}

QString coilsRequest(const QByteArray& frame)
{
    const auto coil = [&frame](int i) {
        return QString::number(frameByte(frame, WRITE_DATA_AT + i / 8) >> (i % 8) & 1);
    };
    return manyRequest(frame, "coil",
                       listed(frameWord(frame, QUANTITY_AT), MOST_COILS_SHOWN, coil));
}

QString registersRequest(const QByteArray& frame)
{
    const auto value = [&frame](int i) {
        return QString::number(frameWord(frame, WRITE_DATA_AT + 2 * i));
    };
    return manyRequest(frame, "register",
                       listed(frameWord(frame, QUANTITY_AT), MOST_REGISTERS_SHOWN, value));
}

/// The length according to the counts in the frame; 0: a function that the driver does not use.
int promisedRequestLength(const QByteArray& frame)
{
    const int function = frameByte(frame, 1);
    if (function >= READ_HOLDING && function <= WRITE_REGISTER) return FIXED_REQUEST_BYTES;
    if (frame.size() < LONG_REQUEST_OVERHEAD) return LONG_REQUEST_OVERHEAD;
    const int quantity = frameWord(frame, QUANTITY_AT);
    if (function == WRITE_COILS) return LONG_REQUEST_OVERHEAD + (quantity + 7) / 8;
    if (function == WRITE_REGISTERS) return LONG_REQUEST_OVERHEAD + 2 * quantity;
    return 0;
}

QString requestWords(const QByteArray& frame)
{
    if (promisedRequestLength(frame) != frame.size())
        return text("function %1 in %2 bytes").arg(frameByte(frame, 1)).arg(frame.size());
    switch (frameByte(frame, 1)) {
    case READ_HOLDING:
        return readRequest(frame, "holding register");
    case READ_INPUT:
        return readRequest(frame, "input register");
    case WRITE_COIL:
        return coilRequest(frame);
    case WRITE_REGISTER:
        return text("write register %1 = %2")
            .arg(frameWord(frame, NUMBER_AT))
            .arg(frameWord(frame, QUANTITY_AT));
    case WRITE_COILS:
        return coilsRequest(frame);
    default:
        return registersRequest(frame);
    }
}

QString registersReply(const QByteArray& frame)
{
    const auto value = [&frame](int i) {
        const int number = frameWord(frame, READ_DATA_AT + 2 * i);
        return text("0x%1").arg(
            QString::number(number, 16).toUpper().rightJustified(4, QLatin1Char('0')));
    };
    const int count = (int(frame.size()) - READ_OVERHEAD) / 2;
    return text("%1 %2").arg(counted(count, "register"),
                             listed(count, MOST_REGISTERS_SHOWN, value));
}

bool isReadReply(const QByteArray& frame)
{
    const int function = frameByte(frame, 1);
    return (function == READ_HOLDING || function == READ_INPUT) && frame.size() > READ_OVERHEAD &&
           frame.size() % 2 == READ_OVERHEAD % 2 &&
           frameByte(frame, 2) == frame.size() - READ_OVERHEAD;
}

bool isEcho(const QByteArray& frame)
{
    const int function = frameByte(frame, 1);
    const bool writes = function == WRITE_COIL || function == WRITE_REGISTER ||
                        function == WRITE_COILS || function == WRITE_REGISTERS;
    return writes && frame.size() == FIXED_REQUEST_BYTES;
}

QString replyWords(const QByteArray& frame)
{
    if (isReadReply(frame)) return registersReply(frame);
    if (isEcho(frame)) return text("echo, written");
    if ((frameByte(frame, 1) & EXCEPTION_BIT) != 0 && frame.size() == EXCEPTION_BYTES) {
        const int code = frameByte(frame, 2);
        return text("exception %1: %2").arg(code).arg(text(exceptionText(code)));
    }
    return text("function %1 in %2 bytes").arg(frameByte(frame, 1)).arg(frame.size());
}

QString damagedReply(const QByteArray& bytes, const QByteArray& request)
{
    const int due = dueReplyLength(request);
    if (due == 0 || bytes.size() < 2) return noFrame(bytes);
    const bool refuses = frameByte(bytes, 1) == (frameByte(request, 1) | EXCEPTION_BIT);
    if (bytes.at(0) != request.at(0) || (bytes.at(1) != request.at(1) && !refuses))
        return noFrame(bytes);
    const int length = refuses ? int(EXCEPTION_BYTES) : due;
    if (bytes.size() < length)
        return text("%1 bytes of a reply of %2").arg(bytes.size()).arg(length);
    return bytes.size() == length ? text("checksum wrong") : noFrame(bytes);
}

/// Says also why the bytes were dropped.
QString strayMeaning(const GatheredFrame& frame)
{
    if (frame.bytes == frame.request) return QLatin1String("echo of the request");
    const QLatin1String stray("stray: ");
    const QString why = describeUnfit(frame.request, frame.bytes);
    const QString words = replyMeaning(frame.bytes, frame.request);
    if (why.isEmpty()) return stray + words;
    return hasRightChecksum(frame.bytes) ? stray + words + QLatin1String(": ") + why : stray + why;
}

} // namespace

QString requestMeaning(const QByteArray& bytes)
{
    if (bytes.size() < SHORTEST_FRAME) return noFrame(bytes);
    if (!hasRightChecksum(bytes)) return text("checksum wrong");
    return fromStation(bytes) + requestWords(bytes);
}

QString replyMeaning(const QByteArray& bytes, const QByteArray& request)
{
    if (!hasRightChecksum(bytes)) return damagedReply(bytes, request);
    const int due = dueReplyLength(request);
    const bool answers = due > 0 && replyTo(request, bytes) == bytes;
    return fromStation(bytes) + replyWords(bytes) + text(answers ? "" : ", not the answer");
}

QString frameMeaning(const GatheredFrame& frame)
{
    if (frame.kind == GatheredFrame::REQUEST) return requestMeaning(frame.bytes);
    if (frame.kind == GatheredFrame::FENCE)
        return requestMeaning(frame.bytes) + QLatin1String(", a fence");
    return frame.kind == GatheredFrame::STRAY ? strayMeaning(frame)
                                              : replyMeaning(frame.bytes, frame.request);
}
