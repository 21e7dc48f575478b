#include "modelQueue.h"

namespace model {

namespace {

enum { MOST_ITEMS = 513 };

} // namespace

bool sameRange(const Variable& a, const Variable& b)
{
    return a.station == b.station && a.area == b.area && a.addr == b.addr && a.count == b.count;
}

void CappedQueue::add(const Variable& var)
{
    for (size_t i = m_items.size(); i > 1; --i) {
        Variable& queued = m_items[i - 1];
        if (!sameRange(queued, var)) continue;
        reach(m_branches.replaced);
        queued = var;
        return;
    }
    if (m_items.size() >= MOST_ITEMS) {
        countFull();
        m_items.back() = var;
        return;
    }
    const bool equalsOldest = !m_items.empty() && sameRange(m_items.front(), var);
    reach(equalsOldest ? m_branches.appendedBesideOldest : m_branches.appended);
    m_items.push_back(var);
}

/// Once until the queue is shorter again: one long call is not hundreds.
void CappedQueue::countFull()
{
    if (!m_overflowed) reach(m_branches.full);
    m_overflowed = true;
}

void CappedQueue::removeOldest()
{
    m_overflowed = false;
    if (!m_items.empty()) m_items.erase(m_items.begin());
}

} // namespace model
