#include "events/recentMessages.h"

#include <algorithm>

void RecentMessages::add(const SharedMessage& message, qint64 now)
{
    m_messages.push_back({message, now});
    m_bytes += message->text.size();
    forget(now);
}

bool RecentMessages::isBeyondLimits(qint64 now) const
{
    const bool isTooMuch = m_messages.size() > m_limits.messages || m_bytes > m_limits.bytes;
    return (isTooMuch && m_messages.size() > 1) || now - m_messages.front().since > m_limits.age;
}

void RecentMessages::forgetOldest()
{
    const SharedMessage& oldest = m_messages.front().message;
    m_bytes -= oldest->text.size();
    m_lastForgotten = oldest->id;
    m_messages.pop_front();
}

void RecentMessages::forget(qint64 now)
{
    while (!m_messages.empty() && isBeyondLimits(now))
        forgetOldest();
}

void RecentMessages::clear()
{
    while (!m_messages.empty())
        forgetOldest();
}

SharedMessage RecentMessages::after(quint64 id) const
{
    const auto behind = [](quint64 wanted, const Dated& dated) {
        return wanted < dated.message->id;
    };
    const auto found = std::upper_bound(m_messages.begin(), m_messages.end(), id, behind);
    return found == m_messages.end() ? nullptr : found->message;
}
