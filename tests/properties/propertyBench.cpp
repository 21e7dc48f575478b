#include "propertyBench.h"

#include "modbusChecksum.h"

#include <random>

namespace {

enum { READ_INPUTS = 4, ECHOED = 6, FIRST_DATA = 3 };

const DriverFunctions& renewedDriver()
{
    renewDriver();
    return linkedDriver();
}

QByteArray noiseBytes(std::mt19937& random, int length)
{
    QByteArray out;
    for (int i = 0; i < length; ++i)
        out.append(static_cast<char>(random() & 255u));
    return out;
}

/// Nothing answers a broadcast or a frame without a request.
QByteArray goodReply(const FRAME_PRO& frame, std::mt19937& random, int stationShift)
{
    if (frame.recvLen <= 0 || frame.sendLen == 0) return QByteArray();
    QByteArray body = requestOf(frame).left(ECHOED);
    body[0] = static_cast<char>(frame.sendBuf[0] + stationShift);
    if (frame.sendBuf[1] > READ_INPUTS) return frameWith(body);
    const int dataBytes = frame.recvLen - FIRST_DATA - 2;
    body.truncate(2);
    body.append(static_cast<char>(dataBytes & 255));
    return frameWith(body + noiseBytes(random, dataBytes));
}

QByteArray damaged(QByteArray reply, std::mt19937& random)
{
    if (reply.isEmpty()) return QByteArray(1, '\x55');
    const int at = static_cast<int>(random() % static_cast<unsigned>(reply.size()));
    reply[at] = static_cast<char>(reply.at(at) ^ (1 << random() % 8));
    return reply;
}

QByteArray cut(const QByteArray& reply, std::mt19937& random)
{
    if (reply.isEmpty()) return reply;
    return reply.left(static_cast<int>(random() % static_cast<unsigned>(reply.size())));
}

} // namespace

const char* nameOf(Reply reply)
{
    static const char* const names[] = {"good", "empty",         "damaged",
                                        "cut",  "other station", "random"};
    return names[static_cast<int>(reply)];
}

std::ostream& operator<<(std::ostream& out, Reply reply)
{
    return out << nameOf(reply);
}

PropertyBench::PropertyBench(int retryLimit, int mergeLimit)
    : BenchHost(renewedDriver(), {retryLimit, mergeLimit, RECIPE_WORDS})
{
}

void PropertyBench::writeRun(const Units& units, int value, int id) const
{
    const bool bits = units.area[1] == 'X';
    std::vector<int> values;
    for (int i = 0; i < units.count; ++i)
        values.push_back((value + i) & (bits ? 1 : 65535));
    write(units, values, id);
}

int PropertyBench::answer(const FRAME_PRO& frame, Reply reply, unsigned noise)
{
    return takeReply(replyTo(frame, reply, noise));
}

QByteArray replyTo(const FRAME_PRO& frame, Reply reply, unsigned noise)
{
    std::mt19937 random(noise);
    switch (reply) {
    case Reply::GOOD:
        return goodReply(frame, random, 0);
    case Reply::DAMAGED:
        return damaged(goodReply(frame, random, 0), random);
    case Reply::CUT:
        return cut(goodReply(frame, random, 0), random);
    case Reply::OTHER_STATION:
        return goodReply(frame, random, 1);
    case Reply::RANDOM:
        return noiseBytes(random, static_cast<int>(random() % 300));
    default:
        return QByteArray();
    }
}
