#include "session/framePacket.h"

namespace {

enum { HOST_PORT = 50000, IP_BYTES = 20, UDP_BYTES = 8, UDP_PROTOCOL = 17, TIME_TO_LIVE = 64 };

const quint32 HOST_ADDRESS = 0xC0000201; // 192.0.2.1 and .2 are kept for examples by RFC 5737
const quint32 PLC_ADDRESS = 0xC0000202;

QByteArray word(int value)
{
    QByteArray bytes;
    bytes += static_cast<char>((value >> 8) & 0xFF);
    bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

QByteArray longWord(quint32 value)
{
    return word(int(value >> 16)) + word(int(value & 0xFFFFu));
}

/// RFC 1071. An odd number of bytes is padded with a zero.
int internetChecksum(const QByteArray& bytes)
{
    quint32 sum = 0;
    for (int i = 0; i < bytes.size(); ++i) {
        const quint32 byte = static_cast<unsigned char>(bytes.at(i));
        sum += i % 2 == 0 ? byte << 8 : byte;
    }
    while (sum > 0xFFFFu)
        sum = (sum & 0xFFFFu) + (sum >> 16);
    return int(~sum & 0xFFFFu);
}

/// RFC 768. A checksum of 0 is sent as 0xFFFF, because 0 means "no checksum".
QByteArray datagram(const QByteArray& addresses, int from, int to, const QByteArray& payload)
{
    const QByteArray length = word(UDP_BYTES + int(payload.size()));
    const QByteArray start = word(from) + word(to) + length;
    const int sum =
        internetChecksum(addresses + word(UDP_PROTOCOL) + length + start + word(0) + payload);
    return start + word(sum == 0 ? 0xFFFF : sum) + payload;
}

} // namespace

/// RFC 791, without options.
QByteArray framePacket(const GatheredFrame& frame, int number)
{
    const bool sent = isSent(frame);
    const QByteArray addresses =
        longWord(sent ? HOST_ADDRESS : PLC_ADDRESS) + longWord(sent ? PLC_ADDRESS : HOST_ADDRESS);
    const QByteArray content =
        datagram(addresses, sent ? int(HOST_PORT) : int(CAPTURED_PLC_PORT),
                 sent ? int(CAPTURED_PLC_PORT) : int(HOST_PORT), frame.bytes);
    const QByteArray start = word(0x4500) + word(IP_BYTES + int(content.size())) +
                             word(number & 0xFFFF) + word(0) +
                             word(TIME_TO_LIVE * 256 + UDP_PROTOCOL);
    return start + word(internetChecksum(start + word(0) + addresses)) + addresses + content;
}

bool isCaptured(const GatheredFrame& frame)
{
    return frame.kind != GatheredFrame::STRAY;
}
