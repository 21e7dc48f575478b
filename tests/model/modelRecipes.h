#ifndef MODEL_RECIPES_H
#define MODEL_RECIPES_H

#include "modelTypes.h"

#include <functional>

namespace model {

/// The recipe set of one link and the place of the transfer in it.
class Recipes
{
public:
    /// @return the number of records kept
    int replace(const std::vector<RecipeRecord>& records, int linkNo, int mergeLimit);

    bool hasBlock() const
    {
        return m_place < m_blocks.size();
    }

    /// Whether the present block can be written, or read.
    bool isTransferable(bool writing, const Bytes* buffer) const;

    /// Makes `var` the present block, with its values unless `buffer` is null; its varId stays.
    void fill(Variable& var, const Bytes* buffer) const;

    /// @return true while a block is left
    bool advance();
    void rewind()
    {
        m_place = 0;
    }

    /// Stores an upload's reply; tells each word of the buffer that it filled.
    void spread(const Bytes& reply, int dataStart, Bytes& buffer,
                const std::function<void(int word)>& filled) const;

private:
    void spreadRecord(const Key& record, int position, const Bytes& data, Bytes& buffer,
                      const std::function<void(int word)>& filled) const;

    std::vector<Key> m_records;
    std::vector<Key> m_blocks;
    std::vector<size_t> m_starts; ///< first record of each block
    size_t m_place = 0;
};

} // namespace model

#endif
