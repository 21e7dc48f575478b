#ifndef MODEL_QUEUE_H
#define MODEL_QUEUE_H

#include "branches.h"
#include "modelTypes.h"

namespace model {

bool sameRange(const Variable& a, const Variable& b);

/// Pending writes or one-shot reads, oldest first, never more than 513.
class CappedQueue
{
public:
    /// The two queues are counted apart.
    struct Branches
    {
        Branch replaced;
        Branch full;
        Branch appendedBesideOldest;
        Branch appended;
    };

    explicit CappedQueue(const Branches& branches) : m_branches(branches) {}

    /// A queued entry of the same range is replaced, unless it is the oldest.
    void add(const Variable& var);
    void removeOldest();
    void clear()
    {
        m_items.clear();
        m_overflowed = false;
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
    void countFull();

    Branches m_branches;
    bool m_overflowed = false;
    std::vector<Variable> m_items;
};

} // namespace model

#endif
