#include "faultyLine.h"

#include <algorithm>

namespace {

enum { MOST_FLIPPED = 3, MOST_GARBAGE = 12 };

} // namespace

const char* faultName(Fault fault)
{
    static const char* const names[] = {"none",      "request dropped", "reply dropped",
                                        "corrupted", "truncated",       "duplicated",
                                        "late",      "garbage before",  "garbage after"};
    return names[static_cast<int>(fault)];
}

QByteArray FaultyLine::exchange(const QByteArray& request)
{
    ++m_exchange;
    const auto due = std::find_if(m_late.begin(), m_late.end(),
                                  [this](const Late& late) { return late.due <= m_exchange; });
    if (due != m_late.end()) {
        const QByteArray late = due->reply;
        m_late.erase(due);
        m_plc.answer(request);
        ++m_displaced;
        return late;
    }
    const Fault fault = drawFault();
    ++m_faults[static_cast<size_t>(fault)];
    return fault == Fault::DROP_REQUEST ? QByteArray() : faulty(fault, m_plc.answer(request));
}

void FaultyLine::waitUntilQuiet()
{
    m_late.clear();
}

void FaultyLine::setFaultEvery(int of)
{
    m_faultEvery = of;
}

void FaultyLine::loseLateReplies()
{
    m_losesLateReplies = true;
}

void FaultyLine::setNextFault(Fault fault)
{
    m_next = fault;
}

int FaultyLine::faults(Fault fault) const
{
    return m_faults[static_cast<size_t>(fault)];
}

Fault FaultyLine::drawFault()
{
    const Fault wanted = m_next;
    m_next = Fault::NONE;
    if (wanted != Fault::NONE || m_faultEvery == 0 || !m_random.oneIn(m_faultEvery)) return wanted;
    const auto fault = static_cast<Fault>(m_random.between(1, static_cast<int>(Fault::KINDS) - 1));
    return fault == Fault::LATE && m_losesLateReplies ? Fault::DROP : fault;
}

QByteArray FaultyLine::faulty(Fault fault, const QByteArray& reply)
{
    if (reply.isEmpty()) return reply;
    switch (fault) {
    case Fault::DROP:
        return QByteArray();
    case Fault::CORRUPT:
        return corrupted(reply);
    case Fault::TRUNCATE:
        return reply.left(m_random.below(int(reply.size())));
    case Fault::DUPLICATE:
        return reply + reply;
    case Fault::LATE:
        m_late.push_back({m_exchange + 1 + m_random.below(LATEST), reply});
        return QByteArray();
    case Fault::GARBAGE_BEFORE:
        return garbage() + reply;
    case Fault::GARBAGE_AFTER:
        return reply + garbage();
    default:
        return reply;
    }
}

/// Different bits, so that they do not cancel.
QByteArray FaultyLine::corrupted(QByteArray reply)
{
    const int bits = 8 * static_cast<int>(reply.size());
    const int flips = m_random.between(1, MOST_FLIPPED);
    const int first = m_random.below(bits);
    for (int i = 0; i < flips; ++i) {
        const int bit = (first + i * (1 + bits / 5)) % bits;
        reply[bit / 8] = static_cast<char>(reply.at(bit / 8) ^ 1 << bit % 8);
    }
    return reply;
}

QByteArray FaultyLine::garbage()
{
    QByteArray out(m_random.between(1, MOST_GARBAGE), 0);
    for (char& byte : out)
        byte = static_cast<char>(m_random.below(256));
    return out;
}
