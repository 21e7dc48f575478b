#include "plant/rowRanges.h"

#include <algorithm>
#include <iterator>
#include <limits>

void RowRanges::add(qint64 first, qint64 last)
{
    if (first > last) return;
    auto range = m_ranges.lower_bound(first);
    if (range != m_ranges.begin() && std::prev(range)->second >= first - 1) --range;
    while (range != m_ranges.end() && range->first <= last + 1) {
        first = std::min(first, range->first);
        last = std::max(last, range->second);
        m_count -= range->second - range->first + 1;
        range = m_ranges.erase(range);
    }
    m_ranges.emplace_hint(range, first, last);
    m_count += last - first + 1;
}

void RowRanges::add(const RowRanges& other)
{
    for (const auto& [first, last] : other.m_ranges)
        add(first, last);
}

void RowRanges::remove(qint64 first, qint64 last)
{
    auto range = m_ranges.lower_bound(first);
    if (range != m_ranges.begin() && std::prev(range)->second >= first) --range;
    while (first <= last && range != m_ranges.end() && range->first <= last) {
        const auto [begin, end] = *range;
        range = m_ranges.erase(range);
        if (begin < first) m_ranges.emplace(begin, first - 1);
        if (end > last) m_ranges.emplace(last + 1, end);
        m_count -= std::min(end, last) - std::max(begin, first) + 1;
    }
}

void RowRanges::removeUpTo(qint64 last)
{
    remove(std::numeric_limits<qint64>::min(), last);
}

void RowRanges::removeFrom(qint64 first)
{
    remove(first, std::numeric_limits<qint64>::max());
}

void RowRanges::clear()
{
    m_ranges.clear();
    m_count = 0;
}

bool RowRanges::has(qint64 row) const
{
    const auto behind = m_ranges.upper_bound(row);
    return behind != m_ranges.begin() && std::prev(behind)->second >= row;
}

std::pair<qint64, qint64> RowRanges::from(qint64 row, qint64 otherwise) const
{
    const auto behind = m_ranges.upper_bound(row);
    if (behind != m_ranges.begin() && std::prev(behind)->second >= row)
        return {row, std::prev(behind)->second};
    if (behind == m_ranges.end()) return {otherwise, otherwise};
    return *behind;
}
