// The topics of the JSON dialect, for names that topics cannot hold.

#include "topics/jsonTopics.h"
#include "broker/strangeNames.h"

#include <gtest/gtest.h>

namespace {

EdgeDevice deviceOf(const QString& link, int station, const std::vector<QString>& tags)
{
    EdgeDevice device{link, station, {}};
    for (const QString& name : tags) {
        Tag tag;
        tag.name = name;
        tag.station = station;
        device.tags.push_back(tag);
    }
    return device;
}

std::vector<QString> texts(std::initializer_list<const char*> all)
{
    std::vector<QString> found;
    for (const char* const text : all)
        found.push_back(QString::fromUtf8(text));
    return found;
}

class NamedTopics
{
public:
    explicit NamedTopics(const std::vector<EdgeDevice>& devices)
        : topics(QLatin1String("hall"), devices)
    {
    }

    std::string state(const char* link, const char* tag) const
    {
        return topics.state(QString::fromUtf8(link), QString::fromUtf8(tag)).toStdString();
    }
    std::string availability(const char* link, int station) const
    {
        return topics.availability(QString::fromUtf8(link), station).toStdString();
    }

    const JsonTopics topics;
};

} // namespace

TEST(JsonTopics, HaveAnUnderscoreForWhatNoLevelCanHold)
{
    for (const char* const link : {"mixer#1", "mixer+1", "mixer/1"}) {
        for (const char* const tag : {"a#b", "a+b", "a/b"}) {
            const NamedTopics named({deviceOf(QString::fromUtf8(link), 3, texts({tag}))});
            EXPECT_EQ("kakb/hall/mixer_1/a_b", named.state(link, tag));
            EXPECT_EQ("kakb/hall/mixer_1/3/availability", named.availability(link, 3));
        }
    }
    EXPECT_EQ("kakb/a_b_c_d/status",
              JsonTopics(QLatin1String("a/b#c+d"), {}).status().toStdString());
}

TEST(JsonTopics, OfNamesThatWouldBeAlikeHaveNumbers)
{
    const NamedTopics named({deviceOf(QLatin1String("oven#1"), 1, texts({"a#b", "A_b", "a+b"})),
                             deviceOf(QLatin1String("oven+1"), 1, texts({"a#b"})),
                             deviceOf(QLatin1String("Oven_1"), 1, texts({"a/b"}))});
    EXPECT_EQ("kakb/hall/oven_1-2/a_b-2", named.state("oven#1", "a#b"));
    EXPECT_EQ("kakb/hall/oven_1-2/A_b", named.state("oven#1", "A_b"));
    EXPECT_EQ("kakb/hall/oven_1-2/a_b-3", named.state("oven#1", "a+b"));
    EXPECT_EQ("kakb/hall/oven_1-3/a_b", named.state("oven+1", "a#b"));
    EXPECT_EQ("kakb/hall/Oven_1/a_b", named.state("Oven_1", "a/b"));
    EXPECT_EQ("kakb/hall/oven_1-3/1/availability", named.availability("oven+1", 1));
}

TEST(JsonTopics, OfOneLinkTellTheTagsOfAllItsStationsApart)
{
    const NamedTopics named({deviceOf(QLatin1String("oven"), 1, texts({"a#b"})),
                             deviceOf(QLatin1String("oven"), 2, texts({"a+b"}))});
    EXPECT_EQ("kakb/hall/oven/a_b", named.state("oven", "a#b"));
    EXPECT_EQ("kakb/hall/oven/a_b-2", named.state("oven", "a+b"));
}

TEST(JsonTopics, AreNeverSharedWhateverTheNamesAre)
{
    for (unsigned seed = 1; seed <= 100; ++seed) {
        std::mt19937 random(seed);
        std::vector<EdgeDevice> devices;
        for (const QString& link : strangeNames(30, random))
            devices.push_back(deviceOf(link, 1 + int(random() % 3), strangeNames(20, random)));
        const JsonTopics topics(QLatin1String("hall"), devices);
        std::set<QString> all{topics.status()};
        const auto put = [&](const QString& topic, int levels) {
            ASSERT_TRUE(all.insert(topic.toCaseFolded()).second) << seed << topic.toStdString();
            ASSERT_EQ(levels, topic.count(QLatin1Char('/')) + 1) << topic.toStdString();
            ASSERT_FALSE(topic.contains(QLatin1Char('#'))) << topic.toStdString();
            ASSERT_FALSE(topic.contains(QLatin1Char('+'))) << topic.toStdString();
            ASSERT_TRUE(topics.isRetained(topic)) << "it can be cleared: " << topic.toStdString();
        };
        for (const EdgeDevice& device : devices) {
            put(topics.availability(device.link, device.station), 5);
            for (const Tag& tag : device.tags)
                put(topics.state(device.link, tag.name), 4);
        }
        EXPECT_EQ(size_t(1 + 30 + 30 * 20), all.size());
    }
}
