#ifndef SHARED_TAGS_H
#define SHARED_TAGS_H

#include "plan/tag.h"

#include <memory>
#include <utility>
#include <vector>

/// Tags that nobody changes. Copies share them: of the configuration, of its links and of their
/// values, and of links with the same tag file. Any thread reads them.
class SharedTags
{
public:
    SharedTags() : SharedTags(std::vector<Tag>()) {}

    // Not explicit: a function that takes shared tags takes any.
    SharedTags(std::vector<Tag> tags)
        : m_tags(std::make_shared<const std::vector<Tag>>(std::move(tags)))
    {
    }

    const std::vector<Tag>& all() const
    {
        return *m_tags;
    }
    auto begin() const
    {
        return m_tags->begin();
    }
    auto end() const
    {
        return m_tags->end();
    }

private:
    std::shared_ptr<const std::vector<Tag>> m_tags; ///< never null
};

#endif
