#include "topics/jsonNodeRoom.h"

// What a reload of the configuration does to retained topics.

class JsonReloadsTest : public JsonNodeTest
{
protected:
    /// Publishes of QoS 1 that the broker has not acknowledged.
    size_t unacknowledged() const
    {
        size_t found = 0;
        for (const RecordedSession::Published& one : session.published)
            if (one.message.qos == 1 && !one.isDelivered) ++found;
        return found;
    }

    size_t cleared() const
    {
        size_t found = 0;
        for (const RecordedSession::Published& one : session.published)
            if (one.message.payload.isEmpty()) ++found;
        return found;
    }
};

TEST_F(JsonReloadsTest, AValueOfTheTypeBeforeIsNotToldAsOneOfTheNewType)
{
    take({standing("left", 1, true), reading("left", "level", 21.5)});
    open();
    news();
    std::vector<EdgeDevice> changed = devices();
    changed[0].tags[0].type = Tag::BOOL;
    node->setDevices(changed);
    turns();
    EXPECT_EQ(Texts{R"(left/level {"v":null,"q":"bad","t":null})"}, news());
    take({reading("left", "level", 21.6)}); // the link before the reload told it
    EXPECT_EQ(Texts(), news());
    take({reading("left", "level", 1)});
    EXPECT_EQ(Texts{R"(left/level {"v":true,"q":"good","t":1700000000000})"}, news());
}

TEST_F(JsonReloadsTest, ManyTopicsAreClearedAFewAtATime)
{
    enum { TAGS = 20000, MOST = 2000 };
    std::vector<Tag> tags;
    for (int number = 0; number < TAGS; ++number)
        tags.push_back(tagOf(std::to_string(number).c_str(), Tag::UINT16));
    node->setDevices({{QLatin1String("left"), 1, tags}});
    open();
    turns();
    session.acknowledge();
    turns();
    const size_t first = cleared();
    node->setDevices(devices());
    size_t before = 0;
    do {
        before = cleared();
        turns();
        ASSERT_LE(unacknowledged(), size_t(MOST));
        session.acknowledge();
        turns();
    } while (cleared() > before);
    EXPECT_EQ(size_t(TAGS), cleared() - first);
    EXPECT_EQ(0u, unacknowledged());
}
