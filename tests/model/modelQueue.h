#ifndef MODEL_QUEUE_H
#define MODEL_QUEUE_H

#include "modelTypes.h"

namespace model {

bool sameRange(const Variable& a, const Variable& b);

/// Pending writes or one-shot reads, oldest first, never more than 513.
class CappedQueue
{
public:
    /// A queued entry of the same range is replaced, unless it is the oldest.
    void add(const Variable& var);
    void removeOldest();
    void clear()
    {
        m_items.clear();
    }

    bool empty() const
    {
        return m_items.empty();
    }
    const Variable& oldest() const
    {
        return m_items.front();
    }

private:
    std::vector<Variable> m_items;
};

} // namespace model

#endif
