#ifndef RECIPE_STEPS_H
#define RECIPE_STEPS_H

#include "plan/readPlan.h"
#include "plan/recipePlan.h"
#include "session/recipeTransfers.h"

#include <vector>

/// The jobs that carry a recipe to the PLC or back, and the values that they bring.
///
///     download     one transfer writes words and bits
///     upload       one transfer reads the words; one-shot reads bring the bits, because the driver
///                  stores whole words for uploaded bits
class RecipeSteps
{
public:
    /// @param cost  of reading on the link
    /// @throws RecipeError when two tags share memory, or the tags do not fit into the buffer
    RecipeSteps(std::vector<Tag> tags, const WireCost& cost);

    /// @param values  by tag, in the format of intf_setData
    RecipeJob download(int job, const std::vector<QByteArray>& values) const;

    /// Of the words. Without words it has no blocks: the driver does not take it.
    RecipeJob upload(int job) const;

    int downloadBlocks() const
    {
        return int(m_plan.downloadRecords().size());
    }
    int uploadBlocks() const
    {
        return int(m_plan.uploadRecords().size());
    }

    /// The reads that bring the bits; empty: the recipe has none.
    const std::vector<ReadBlock>& bitBlocks() const
    {
        return m_bitBlocks;
    }

    /// The values in the PLC, by tag, in the format of intf_getData.
    /// @param words  values of the end of upload()
    /// @param bits   values of the end of the reads of bitBlocks(), all of which were done
    std::vector<QByteArray> values(const QByteArray& words, const QByteArray& bits) const;

private:
    enum { NO_BIT = -1 };

    /// Where the values of the reads hold a bit.
    struct BitPlace
    {
        size_t tag;
        int byte;      ///< of the bit, or the first of its word
        int bitOfWord; ///< 0 to 15; NO_BIT: the byte is the bit
    };

    void planBits(const WireCost& cost);

    const std::vector<Tag> m_tags;
    const RecipePlan m_plan;
    std::vector<ReadBlock> m_bitBlocks; ///< without tags: those of the link are others
    std::vector<BitPlace> m_bitPlaces;
};

/// The indices of the values that differ.
std::vector<size_t> differingValues(const std::vector<QByteArray>& expected,
                                    const std::vector<QByteArray>& found);

#endif
