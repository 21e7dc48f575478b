#include "values/sharedTags.h"

#include <algorithm>
#include <numeric>

SharedTags::Shared::Shared(std::vector<Tag> all) : tags(std::move(all)), byName(tags.size())
{
    std::iota(byName.begin(), byName.end(), 0);
    std::stable_sort(byName.begin(), byName.end(),
                     [this](int a, int b) { return tags[size_t(a)].name < tags[size_t(b)].name; });
}

std::optional<int> SharedTags::named(const QString& name) const
{
    const auto isBefore = [this](int index, const QString& wanted) {
        return m_shared->tags[size_t(index)].name < wanted;
    };
    const auto found =
        std::lower_bound(m_shared->byName.begin(), m_shared->byName.end(), name, isBefore);
    if (found == m_shared->byName.end() || m_shared->tags[size_t(*found)].name != name)
        return std::nullopt;
    return *found;
}
