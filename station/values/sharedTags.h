#ifndef SHARED_TAGS_H
#define SHARED_TAGS_H

#include "plan/tag.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Tags that nobody changes. Copies share them: of the configuration, of its links and of their
/// values, and of links with the same tag file. Any thread reads them.
class SharedTags
{
public:
    SharedTags() : SharedTags(std::vector<Tag>()) {}

    // Not explicit: a function that takes shared tags takes any.
    SharedTags(std::vector<Tag> tags) : m_shared(std::make_shared<const Shared>(std::move(tags))) {}

    const std::vector<Tag>& all() const
    {
        return m_shared->tags;
    }
    auto begin() const
    {
        return m_shared->tags.begin();
    }
    auto end() const
    {
        return m_shared->tags.end();
    }

    /// The index of the first tag with this name; empty: there is none. A stranger may ask for very
    /// many names, so none is looked for by a walk through the tags.
    std::optional<int> named(const QString& name) const;

private:
    struct Shared
    {
        explicit Shared(std::vector<Tag> all);

        const std::vector<Tag> tags;
        std::vector<int> byName; ///< indexes in the order of names; alike ones as they stand
    };

    std::shared_ptr<const Shared> m_shared; ///< never null
};

#endif
