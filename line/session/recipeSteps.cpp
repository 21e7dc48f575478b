#include "session/recipeSteps.h"

#include "plan/sharedMemory.h"
#include "plan/tagSpan.h"
#include "wire/protocolLimits.h"

#include <utility>

namespace {

enum {
    BYTES_PER_WORD = 2,
    NO_GAP = 0 ///< a gap that the PLC lacks would spoil the read
};

} // namespace

RecipeSteps::RecipeSteps(std::vector<Tag> tags, const WireCost& cost)
    : m_tags(std::move(tags)), m_plan(m_tags, StartedDriver::LINK_NUMBER)
{
    planBits(cost);
}

void RecipeSteps::planBits(const WireCost& cost)
{
    std::vector<Tag> bits;
    std::vector<size_t> indices;
    for (size_t tag = 0; tag < m_tags.size(); ++tag) {
        if (!m_tags[tag].isBit()) continue;
        bits.push_back(m_tags[tag]);
        indices.push_back(tag);
    }
    int begin = 0; // of the block's values
    for (ReadBlock block : shortestReads(bits, cost, MOST_READ_REGISTERS, NO_GAP)) {
        const int size = isBitArea(block.area) ? 1 : int(BYTES_PER_WORD);
        for (const int index : std::exchange(block.tags, {})) {
            const Tag& bit = bits[size_t(index)];
            const int unit = spanIn(block, bit)->start - block.number;
            const int bitOfWord = size == 1 ? NO_BIT : wordBitOf(bit.area, bit.number).bit;
            m_bitPlaces.push_back({indices[size_t(index)], begin + size * unit, bitOfWord});
        }
        begin += size * block.count;
        m_bitBlocks.push_back(block);
    }
}

RecipeJob RecipeSteps::download(int job, const std::vector<QByteArray>& values) const
{
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_DOWNLOAD_FLAG;
    recipe.records = m_plan.downloadRecords();
    recipe.values = m_plan.buffer(values);
    return recipe;
}

RecipeJob RecipeSteps::upload(int job) const
{
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_UPLOAD_FLAG;
    recipe.records = m_plan.uploadRecords();
    recipe.values = QByteArray(m_plan.bufferBytes(), '\0');
    return recipe;
}

std::vector<QByteArray> RecipeSteps::values(const QByteArray& words, const QByteArray& bits) const
{
    std::vector<QByteArray> values(m_tags.size());
    for (size_t tag = 0; tag < m_tags.size(); ++tag) {
        if (!m_tags[tag].isBit()) values[tag] = m_plan.value(tag, words);
    }
    for (const BitPlace& place : m_bitPlaces) {
        if (place.bitOfWord == NO_BIT)
            values[place.tag] = bits.mid(place.byte, 1);
        else
            values[place.tag] = bitOfWord(bits.mid(place.byte, BYTES_PER_WORD), place.bitOfWord);
    }
    return values;
}

std::vector<size_t> differingValues(const std::vector<QByteArray>& expected,
                                    const std::vector<QByteArray>& found)
{
    std::vector<size_t> differing;
    for (size_t tag = 0; tag < expected.size(); ++tag) {
        if (expected[tag] != found[tag]) differing.push_back(tag);
    }
    return differing;
}
