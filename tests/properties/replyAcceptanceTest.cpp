// Which replies the driver takes: those of the due length with a good checksum, and no other.

#include "engineSteps.h"
#include "figures.h"
#include "modbusChecksum.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

enum { MERGE = 125, TWO_ATTEMPTS = 2, MOST_WORDS = 125, CHECKSUM = 2 };

/// A body of any length, closed by its own checksum or by two bytes of noise.
struct DrawnReply
{
    std::vector<unsigned char> body;
    bool rightChecksum;
    unsigned char low;
    unsigned char high;
};

std::ostream& operator<<(std::ostream& out, const DrawnReply& drawn)
{
    return out << drawn.body.size() << " bytes, "
               << (drawn.rightChecksum ? "right checksum" : "two more bytes");
}

rc::Gen<DrawnReply> drawnReply(int bodyLength)
{
    const auto byte = rc::gen::arbitrary<unsigned char>();
    const auto due =
        rc::gen::container<std::vector<unsigned char>>(static_cast<size_t>(bodyLength), byte);
    const auto any = rc::gen::container<std::vector<unsigned char>>(byte);
    return rc::gen::build<DrawnReply>(
        rc::gen::set(&DrawnReply::body, rc::gen::oneOf(due, any)),
        rc::gen::set(&DrawnReply::rightChecksum,
                     rc::gen::weightedElement<bool>({{3, true}, {1, false}})),
        rc::gen::set(&DrawnReply::low, byte), rc::gen::set(&DrawnReply::high, byte));
}

QByteArray bytesOf(const DrawnReply& drawn)
{
    const QByteArray body(reinterpret_cast<const char*>(drawn.body.data()),
                          static_cast<int>(drawn.body.size()));
    if (drawn.rightChecksum) return frameWith(body);
    return body + static_cast<char>(drawn.low) + static_cast<char>(drawn.high);
}

bool hasRightChecksum(const QByteArray& reply)
{
    return frameWith(reply.left(int(reply.size()) - CHECKSUM)) == reply;
}

void checkVerdict(const FRAME_PRO& frame)
{
    QByteArray reply = bytesOf(*drawnReply(frame.recvLen - CHECKSUM));
    const bool dueLength = int(reply.size()) == frame.recvLen;
    const bool due = dueLength && hasRightChecksum(reply);
    countCase();
    tally("due", due);
    tally("with the checksum wrong alone", dueLength && !due);
    tally("with the length wrong alone", !dueLength && hasRightChecksum(reply));
    QString errorText;
    RC_ASSERT(intf_dealRcvFrame(reply, errorText) == (due ? REPLY_ACCEPTED : REPLY_RETRY));
}

} // namespace

RC_GTEST_PROP(AnyReply, ToAReadIsTakenByLengthAndChecksumAlone, ())
{
    PropertyBench bench(TWO_ATTEMPTS, MERGE);
    const int words = *rc::gen::inRange(1, int(MOST_WORDS));
    bench.poll({{1, "MW", 3000, words}});
    FRAME_PRO frame;
    RC_ASSERT(intf_getSendFrame(&frame) == 1);
    checkVerdict(frame);
}

RC_GTEST_PROP(AnyReply, ToAWriteIsTakenByLengthAndChecksumAlone, ())
{
    PropertyBench bench(TWO_ATTEMPTS, MERGE);
    bench.write({1, "QX", *rc::gen::inRange(0, 4096), 1}, {1}, 1);
    FRAME_PRO frame;
    RC_ASSERT(intf_getSendFrame(&frame) == 1);
    checkVerdict(frame);
}
