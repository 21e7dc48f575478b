#include "plant/heldRows.h"

#include <algorithm>

namespace {

bool beginsBefore(const HeldRows::Range& range, qint64 sequence)
{
    return range.first < sequence;
}

} // namespace

void HeldRows::hold(const Tag& tag, qint64 sequence)
{
    const auto open = m_open.find(tag);
    if (open == m_open.end()) {
        m_open[tag] = sequence;
        return put(tag, {sequence, sequence, 1});
    }
    std::vector<Range>& ranges = m_ranges[tag];
    const auto range = std::lower_bound(ranges.begin(), ranges.end(), open->second, beginsBefore);
    if (range == ranges.end() || range->first != open->second) {
        m_open[tag] = sequence;
        return put(tag, {sequence, sequence, 1});
    }
    range->last = sequence;
    ++range->rows;
    ++m_count;
}

void HeldRows::sent(const Tag& tag)
{
    if (!m_open.empty()) m_open.erase(tag);
}

void HeldRows::jumped()
{
    m_open.clear();
}

void HeldRows::put(const Tag& tag, const Range& range)
{
    std::vector<Range>& ranges = m_ranges[tag];
    ranges.insert(std::lower_bound(ranges.begin(), ranges.end(), range.first, beginsBefore), range);
    m_count += range.rows;
}

qint64 HeldRows::walked(const Tag& tag, qint64 upTo, qint64 rows)
{
    const auto found = m_ranges.find(tag);
    if (found == m_ranges.end()) return 0;
    qint64 gone = 0;
    std::vector<Range> left;
    for (Range range : found->second) {
        if (range.first <= upTo) {
            const qint64 taken = std::min(rows, range.rows);
            rows -= taken;
            range.rows -= taken;
            m_count -= taken;
            range.first = upTo + 1;
        }
        if (range.first <= range.last && range.rows > 0) {
            left.push_back(range);
            continue;
        }
        gone += range.rows;
        m_count -= range.rows;
    }
    found->second = left;
    if (left.empty()) m_ranges.erase(found);
    m_open.erase(tag);
    return gone;
}

/// @return the rows of the ranges that are not kept
qint64 HeldRows::filter(const std::function<bool(Range&)>& isKept)
{
    const qint64 before = m_count;
    m_count = 0;
    for (auto tag = m_ranges.begin(); tag != m_ranges.end();) {
        std::vector<Range> left;
        for (Range range : tag->second) {
            if (!isKept(range)) continue;
            m_count += range.rows;
            left.push_back(range);
        }
        tag->second = left;
        tag = left.empty() ? m_ranges.erase(tag) : std::next(tag);
    }
    m_open.clear();
    return before - m_count;
}

qint64 HeldRows::dropBefore(qint64 oldest)
{
    return filter([oldest](const Range& range) { return range.last >= oldest; });
}

void HeldRows::cutBehind(qint64 last)
{
    filter([last](Range& range) {
        range.last = std::min(range.last, last);
        return range.first <= range.last;
    });
}

void HeldRows::clear()
{
    m_ranges.clear();
    m_open.clear();
    m_count = 0;
}

bool HeldRows::has(const Tag& tag, qint64 sequence) const
{
    const std::vector<Range>* const ranges = rangesOf(tag);
    if (ranges == nullptr) return false;
    return std::any_of(ranges->begin(), ranges->end(), [sequence](const Range& range) {
        return range.first <= sequence && sequence <= range.last;
    });
}

bool HeldRows::isBefore(const Tag& tag, qint64 sequence) const
{
    const std::vector<Range>* const ranges = rangesOf(tag);
    return ranges != nullptr && ranges->front().first < sequence;
}

const std::vector<HeldRows::Range>* HeldRows::rangesOf(const Tag& tag) const
{
    const auto found = m_ranges.find(tag);
    return found == m_ranges.end() ? nullptr : &found->second;
}
