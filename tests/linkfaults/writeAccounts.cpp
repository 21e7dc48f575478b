#include "writeAccounts.h"

void WriteAccounts::open(const BookedWrite& write)
{
    ++opened;
    m_newest[write.element] = write.value;
    for (size_t at = m_open.size(); at > 1; --at) {
        if (!(m_open[at - 1].element == write.element)) continue;
        m_open[at - 1] = write;
        ++replaced;
        return;
    }
    m_open.push_back(write);
}

bool WriteAccounts::isOldest(int id, const Element& element) const
{
    return !m_open.empty() && m_open.front().id == id && m_open.front().element == element;
}

void WriteAccounts::confirmOldest()
{
    const BookedWrite& write = m_open.front();
    m_possible[write.element] = {write.value};
    m_open.pop_front();
    ++confirmed;
}

void WriteAccounts::withdrawOldest()
{
    const BookedWrite& write = m_open.front();
    std::set<int>& possible = m_possible[write.element];
    // Before the first one the PLC holds 0.
    if (possible.empty()) possible.insert(0);
    possible.insert(write.value);
    m_open.pop_front();
    ++withdrawn;
}
