#include "carefulHost.h"

#include "lineBytes.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"

#include <algorithm>

namespace {

/// A frame with a good checksum that the recogniser did not take is someone else's answer.
bool isWholeFrame(const QByteArray& received)
{
    return hasRightChecksum(received);
}

} // namespace

QByteArray CarefulHost::exchange(const FRAME_PRO& frame)
{
    ++m_exchange;
    const Bytes request = requestOf(frame);
    const QByteArray asked = arrayOf(request);
    const QByteArray signature = answerSignature(asked);
    holdBack(signature);
    bool answered = false;
    const QByteArray reply =
        handedIn(arrayOf(m_line.exchange(request)), asked, frame.recvLen, answered);
    if (!answered) m_awaited.push_back({signature, m_exchange + FaultyLine::LATEST});
    return reply;
}

void CarefulHost::holdBack(const QByteArray& signature)
{
    while (!m_awaited.empty() && m_awaited.front().until < m_exchange)
        m_awaited.pop_front();
    const bool mayStillCome =
        std::any_of(m_awaited.begin(), m_awaited.end(),
                    [&](const Awaited& awaited) { return awaited.signature == signature; });
    if (!mayStillCome) return;
    m_line.waitUntilQuiet();
    m_awaited.clear();
    ++m_heldBack;
}

QByteArray CarefulHost::handedIn(const QByteArray& received, const QByteArray& request, int length,
                                 bool& answered)
{
    const QByteArray reply = replyTo(request, received);
    answered = !reply.isEmpty();
    if (answered) return reply;
    if (!isWholeFrame(received)) return received.left(length);
    ++m_dropped;
    return QByteArray();
}
