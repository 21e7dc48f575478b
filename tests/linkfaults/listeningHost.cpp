#include "listeningHost.h"

#include "benchHost.h"
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

QByteArray ListeningHost::exchange(const FRAME_PRO& frame)
{
    ++m_exchange;
    const QByteArray request = requestOf(frame);
    const QByteArray signature = answerSignature(request);
    holdBack(signature);
    bool answered = false;
    const QByteArray reply = handedIn(m_line.exchange(request), request, frame.recvLen, answered);
    if (!answered) m_awaited.push_back({signature, m_exchange + FaultyLine::LATEST});
    return reply;
}

void ListeningHost::holdBack(const QByteArray& signature)
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

QByteArray ListeningHost::handedIn(const QByteArray& received, const QByteArray& request,
                                   int length, bool& answered)
{
    const QByteArray reply = replyTo(request, received);
    answered = !reply.isEmpty();
    if (answered) return reply;
    if (!isWholeFrame(received)) return received.left(length);
    ++m_dropped;
    return QByteArray();
}
