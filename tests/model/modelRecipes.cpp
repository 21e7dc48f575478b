#include "modelRecipes.h"

#include "branches.h"
#include "modelAddresses.h"
#include "modelMerging.h"

#include <algorithm>

namespace model {

namespace {

enum { MOST_WRITTEN_WORDS = 507, MOST_WRITTEN_BITS = 1024, VALUE_BYTES = 1024 };

bool lighter(const Key& a, const Key& b)
{
    return addressWeight(a.station, a.area, a.addr) < addressWeight(b.station, b.area, b.addr);
}

bool isTooLongToWrite(const Key& block)
{
    const bool words = findArea(block.area)->words;
    if (block.count <= (words ? MOST_WRITTEN_WORDS : MOST_WRITTEN_BITS)) return false;
    reach(words ? Branch::RECIPE_TOO_MANY_WORDS : Branch::RECIPE_TOO_MANY_BITS);
    return true;
}

} // namespace

int Recipes::replace(const std::vector<RecipeRecord>& records, int linkNo, int mergeLimit)
{
    m_records.clear();
    for (const RecipeRecord& record : records) {
        if (record.linkNo != linkNo) continue;
        m_records.push_back(
            {record.station, record.area, record.addr, 0, record.count, record.offset});
    }
    if (m_records.empty()) {
        reach(Branch::RECIPE_SET_WITHOUT_RECORDS);
        return 0;
    }
    if (m_place > 0) reach(Branch::RECIPE_SET_DURING_TRANSFER);
    std::stable_sort(m_records.begin(), m_records.end(), lighter);
    m_starts.clear();
    m_blocks = mergeTouching(m_records, mergeLimit, m_starts);
    reach(m_blocks.size() < m_records.size() ? Branch::RECIPE_SET_MERGED
                                             : Branch::RECIPE_SET_UNMERGED);
    return static_cast<int>(m_records.size());
}

bool Recipes::isTransferable(bool writing, const Bytes* buffer) const
{
    const Key& block = m_blocks[m_place];
    if (buffer == nullptr) {
        reach(Branch::RECIPE_WITHOUT_BUFFER);
        return false;
    }
    if (findArea(block.area) == nullptr) {
        reach(Branch::RECIPE_UNKNOWN_AREA);
        return false;
    }
    if (block.count < 0 || block.offset < 0) {
        reach(block.count < 0 ? Branch::RECIPE_NEGATIVE_COUNT : Branch::RECIPE_NEGATIVE_OFFSET);
        return false;
    }
    return !writing || !isTooLongToWrite(block);
}

void Recipes::fill(Variable& var, const Bytes* buffer) const
{
    const Key& block = m_blocks[m_place];
    var.station = block.station;
    var.area = block.area;
    var.addr = block.addr;
    var.count = block.count;
    var.value.assign(VALUE_BYTES, 0);
    if (buffer == nullptr) return;
    const auto length = static_cast<size_t>(std::min<int>(2 * block.count, VALUE_BYTES));
    for (size_t i = 0; i < length; ++i)
        var.value[i] = (*buffer)[2 * static_cast<size_t>(block.offset) + i];
}

bool Recipes::advance()
{
    ++m_place;
    return hasBlock();
}

void Recipes::spread(const Bytes& reply, int dataStart, Bytes& buffer,
                     const std::function<void(int word)>& filled) const
{
    if (m_place >= m_starts.size()) {
        reach(Branch::UPLOAD_PLACE_WITHOUT_BLOCK);
        return;
    }
    const size_t first = m_starts[m_place];
    const bool isLast = m_place + 1 == m_starts.size();
    const size_t end =
        isLast ? m_records.size() : std::min(m_starts[m_place + 1], m_records.size());
    if (first >= end) reach(Branch::UPLOAD_WITHOUT_RECORDS);
    const Bytes data(reply.begin() + dataStart, reply.end());
    for (size_t j = first; j < end; ++j)
        spreadRecord(m_records[j], m_records[j].addr - m_records[first].addr, data, buffer, filled);
}

void Recipes::spreadRecord(const Key& record, int position, const Bytes& data, Bytes& buffer,
                           const std::function<void(int word)>& filled) const
{
    for (int k = 0; k < record.count; ++k) {
        const size_t source = 2 * static_cast<size_t>(position + k);
        const auto word = static_cast<size_t>(record.offset) + static_cast<size_t>(k);
        const bool inside = source + 1 < data.size();
        reach(inside ? Branch::UPLOAD_WORD_STORED : Branch::UPLOAD_WORD_BEYOND_REPLY);
        buffer[2 * word] = inside ? data[source + 1] : 0;
        buffer[2 * word + 1] = source < data.size() ? data[source] : 0;
        filled(record.offset + k);
    }
}

} // namespace model
