#include "modelQueue.h"

#include "branches.h"

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
        reach(Branch::QUEUE_REPLACED);
        queued = var;
        return;
    }
    if (m_items.size() >= MOST_ITEMS) {
        reach(Branch::QUEUE_FULL);
        m_items.back() = var;
        return;
    }
    const bool equalsOldest = !m_items.empty() && sameRange(m_items.front(), var);
    reach(equalsOldest ? Branch::QUEUE_APPENDED_BESIDE_OLDEST : Branch::QUEUE_APPENDED);
    m_items.push_back(var);
}

void CappedQueue::removeOldest()
{
    if (!m_items.empty()) m_items.erase(m_items.begin());
}

} // namespace model
