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

Bytes FaultyLine::exchange(const Bytes& request)
{
    ++m_exchange;
    const auto due = std::find_if(m_late.begin(), m_late.end(),
                                  [this](const Late& late) { return late.due <= m_exchange; });
    if (due != m_late.end()) {
        const Bytes late = due->reply;
        m_late.erase(due);
        m_plc.answer(request);
        ++m_displaced;
        return late;
    }
    const Fault fault = drawFault();
    ++m_faults[static_cast<size_t>(fault)];
    return fault == Fault::DROP_REQUEST ? Bytes() : faulty(fault, m_plc.answer(request));
}

void FaultyLine::waitUntilQuiet()
{
    m_late.clear();
}

void FaultyLine::setFaultEvery(unsigned of)
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
    if (wanted != Fault::NONE || m_faultEvery == 0 || below(m_faultEvery) != 0) return wanted;
    const auto fault = static_cast<Fault>(1 + below(static_cast<unsigned>(Fault::KINDS) - 1));
    return fault == Fault::LATE && m_losesLateReplies ? Fault::DROP : fault;
}

Bytes FaultyLine::faulty(Fault fault, const Bytes& reply)
{
    Bytes out = reply;
    if (reply.empty()) return out;
    switch (fault) {
    case Fault::DROP:
        return Bytes();
    case Fault::CORRUPT:
        return corrupted(reply);
    case Fault::TRUNCATE:
        out.resize(below(static_cast<unsigned>(reply.size())));
        return out;
    case Fault::DUPLICATE:
        out.insert(out.end(), reply.begin(), reply.end());
        return out;
    case Fault::LATE:
        m_late.push_back({m_exchange + 1 + static_cast<int>(below(LATEST)), reply});
        return Bytes();
    case Fault::GARBAGE_BEFORE:
        out = garbage();
        out.insert(out.end(), reply.begin(), reply.end());
        return out;
    case Fault::GARBAGE_AFTER: {
        const Bytes behind = garbage();
        out.insert(out.end(), behind.begin(), behind.end());
        return out;
    }
    default:
        return out;
    }
}

/// Different bits, so that they do not cancel.
Bytes FaultyLine::corrupted(Bytes reply)
{
    const unsigned bits = 8 * static_cast<unsigned>(reply.size());
    const unsigned flips = 1 + below(MOST_FLIPPED);
    const unsigned first = below(bits);
    for (unsigned i = 0; i < flips; ++i) {
        const unsigned bit = (first + i * (1 + bits / 5)) % bits;
        reply[bit / 8] = static_cast<std::uint8_t>(reply[bit / 8] ^ 1u << bit % 8);
    }
    return reply;
}

Bytes FaultyLine::garbage()
{
    Bytes out(1 + below(MOST_GARBAGE));
    for (std::uint8_t& byte : out)
        byte = static_cast<std::uint8_t>(below(256));
    return out;
}

unsigned FaultyLine::below(unsigned bound)
{
    return static_cast<unsigned>(m_random() % bound);
}
