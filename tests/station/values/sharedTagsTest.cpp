#include "values/sharedTags.h"

#include <gtest/gtest.h>

namespace {

std::vector<Tag> tagsOf(std::initializer_list<const char*> names)
{
    std::vector<Tag> tags;
    for (const char* const name : names) {
        Tag tag;
        tag.name = QString::fromUtf8(name);
        tags.push_back(tag);
    }
    return tags;
}

} // namespace

TEST(SharedTags, AreFoundByTheirNames)
{
    const SharedTags tags(tagsOf({"speed", "level", "Level", "temperature", "änderung"}));
    for (size_t tag = 0; tag < tags.all().size(); ++tag)
        EXPECT_EQ(int(tag), tags.named(tags.all()[tag].name).value_or(-1));
    for (const char* const name : {"", "speeds", "spee", "SPEED", "zebra", "a"})
        EXPECT_FALSE(tags.named(QString::fromUtf8(name))) << name;
    EXPECT_FALSE(SharedTags().named(QString()));
}

TEST(SharedTags, TheFirstOfAlikeNamesIsFound)
{
    EXPECT_EQ(1, SharedTags(tagsOf({"b", "a", "a", "b"})).named(QLatin1String("a")).value_or(-1));
}
