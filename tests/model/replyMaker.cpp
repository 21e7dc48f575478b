#include "replyMaker.h"

#include "branches.h"
#include "modbusChecksum.h"

#include <algorithm>

namespace model {

namespace {

enum { HISTORY = 8, HEAD_BYTES = 3, CRC_BYTES = 2, ECHO_BYTES = 6, WRITE_REPLY_BYTES = 8 };

unsigned char someByte(RandomSource& random, int style)
{
    enum { ALL_ZERO, SMALL, ALL_ONES, STYLES_OF_WORDS };
    if (style == ALL_ZERO) return 0;
    if (style == SMALL) return static_cast<unsigned char>(random.below(2));
    if (style == ALL_ONES) return 0xFF;
    return static_cast<unsigned char>(random.below(256));
}

bool isRead(const Frame& frame)
{
    return frame.bytes.size() > 1 && (frame.bytes[1] == 3 || frame.bytes[1] == 4);
}

Bytes readReply(const Frame& frame, RandomSource& random)
{
    enum { STYLES = 6 };
    const int style = random.below(STYLES);
    const auto length = static_cast<size_t>(frame.recvLen - CRC_BYTES);
    Bytes bytes = {frame.bytes[0], frame.bytes[1],
                   static_cast<unsigned char>((length - HEAD_BYTES) & 0xFF)};
    while (bytes.size() < length)
        bytes.push_back(someByte(random, style));
    bytes.resize(length);
    return frameWith(bytes);
}

Bytes randomBytes(size_t length, RandomSource& random)
{
    Bytes bytes(length);
    for (unsigned char& byte : bytes)
        byte = static_cast<unsigned char>(random.below(256));
    return bytes;
}

Bytes goodReply(const Frame& frame, RandomSource& random)
{
    if (frame.unsendable) return {};
    if (frame.recvLen <= CRC_BYTES)
        return randomBytes(static_cast<size_t>(std::max(frame.recvLen, 0)), random);
    if (isRead(frame)) return readReply(frame, random);
    Bytes bytes(frame.bytes.begin(), frame.bytes.begin() + ECHO_BYTES);
    return frameWith(bytes);
}

void replaceByte(Bytes& bytes, size_t position, RandomSource& random)
{
    if (bytes.size() <= position + CRC_BYTES) return;
    bytes[position] = static_cast<unsigned char>(random.below(256));
    bytes.resize(bytes.size() - CRC_BYTES);
    bytes = frameWith(bytes);
}

void flipBit(Bytes& bytes, size_t position, RandomSource& random)
{
    if (position < bytes.size())
        bytes[position] ^= static_cast<unsigned char>(1 << random.below(8));
}

void spoil(Bytes& bytes, ReplyKind kind, RandomSource& random)
{
    const size_t length = bytes.size();
    const size_t place = length == 0 ? 0 : static_cast<size_t>(random.below(int(length)));
    if (kind == ReplyKind::TRUNCATED) bytes.resize(place);
    if (kind == ReplyKind::EXTENDED) bytes.resize(length + 1 + place % 3);
    if (kind == ReplyKind::CORRUPTED) flipBit(bytes, place, random);
    if (kind == ReplyKind::WRONG_CRC_LOW) flipBit(bytes, length - 2, random);
    if (kind == ReplyKind::WRONG_CRC_HIGH) flipBit(bytes, length - 1, random);
    if (kind == ReplyKind::OTHER_STATION) replaceByte(bytes, 0, random);
    if (kind == ReplyKind::OTHER_FUNCTION) replaceByte(bytes, 1, random);
    if (kind == ReplyKind::NOISE) bytes = randomBytes(length, random);
}

Bytes exceptionReply(const Frame& frame, RandomSource& random)
{
    if (frame.bytes.size() < 2) return {};
    Bytes bytes = {frame.bytes[0], static_cast<unsigned char>(frame.bytes[1] | 0x80),
                   static_cast<unsigned char>(random.between(1, 4))};
    return frameWith(bytes);
}

/// Also with no reply at all, as to a broadcast.
bool hasGoodReply(const Frame& frame)
{
    return !frame.unsendable && (frame.recvLen == 0 || frame.recvLen > CRC_BYTES);
}

} // namespace

void ReplyMaker::note(const Frame& frame)
{
    if (!m_frames.empty() && m_frames.front().bytes == frame.bytes) return;
    m_frames.push_front(frame);
    if (m_frames.size() > HISTORY) m_frames.pop_back();
}

Bytes ReplyMaker::reply(const ReplyCall& call) const
{
    RandomSource random(call.seed);
    if (call.kind == ReplyKind::EMPTY) return {};
    if (m_frames.empty()) return randomBytes(WRITE_REPLY_BYTES, random);
    const Frame& latest = m_frames.front();
    if (latest.unsendable) return randomBytes(static_cast<size_t>(random.below(3)), random);
    if (call.kind == ReplyKind::EXCEPTION) return exceptionReply(latest, random);
    Bytes bytes = goodReply(m_frames[ageOf(call, random)], random);
    spoil(bytes, call.kind, random);
    return bytes;
}

size_t ReplyMaker::ageOf(const ReplyCall& call, RandomSource& random) const
{
    if (call.kind != ReplyKind::LATE) return 0;
    return static_cast<size_t>(random.below(int(m_frames.size())));
}

bool ReplyMaker::answersAnOlderRequest(const ReplyCall& call) const
{
    RandomSource random(call.seed);
    const Frame& answered = m_frames[ageOf(call, random)];
    return hasGoodReply(answered) && answered.bytes != m_frames.front().bytes;
}

bool ReplyMaker::isOfItsKind(const ReplyCall& call, const Bytes& bytes) const
{
    if (m_frames.empty() || !hasGoodReply(m_frames.front())) return false;
    const Frame& latest = m_frames.front();
    RandomSource random(call.seed);
    const bool good = bytes == goodReply(latest, random);
    if (good != (call.kind == ReplyKind::GOOD)) return false;
    if (call.kind == ReplyKind::LATE) return !bytes.empty() && answersAnOlderRequest(call);
    if (call.kind == ReplyKind::OTHER_STATION)
        return static_cast<int>(bytes.size()) == latest.recvLen;
    return true;
}

void ReplyMaker::count(const ReplyCall& call, const Bytes& bytes) const
{
    if (!isOfItsKind(call, bytes)) return;
    const int first = static_cast<int>(Branch::HANDED_IN_GOOD);
    reach(static_cast<Branch>(first + static_cast<int>(call.kind)));
}

} // namespace model
