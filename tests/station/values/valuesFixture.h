#ifndef VALUES_FIXTURE_H
#define VALUES_FIXTURE_H

#include "values/linkValues.h"
#include "values/testClock.h"

#include <gtest/gtest.h>

/// The tags of a link: "fast" and "slow" of station 1, "once" of station 2.
inline std::vector<Tag> threeTags()
{
    std::vector<Tag> tags(3);
    const char* const names[] = {"fast", "slow", "once"};
    for (size_t i = 0; i < tags.size(); ++i) {
        tags[i].name = QLatin1String(names[i]);
        tags[i].area = QLatin1String("MW");
        tags[i].number = 3000 + int(i);
        tags[i].station = i == 2 ? 2 : 1;
    }
    return tags;
}

/// Notes what it is told.
class NotingListener : public ValueListener
{
public:
    void tagChanged(const LinkValues&, int tag, const TagReading& reading) override
    {
        notes.emplace_back(tag, reading);
    }

    std::vector<std::pair<int, TagReading>> notes;
};

/// The value model of three tags, on a clock that the test moves. The turns are 100 ms, 10 s and
/// none.
class LinkValuesTest : public testing::Test
{
protected:
    enum { FAST, SLOW, ONCE, MS = 1000, START_LINK = 4000000 };

    LinkValuesTest() : values(QLatin1String("plc"), threeTags(), clock), wallAtStart(clock.wall())
    {
        values.setTurns({100 * MS, 10000 * MS, std::nullopt});
        values.addListener(&listener);
        values.setEvents(&events);
        values.linkChanged(true, QString(), linkNow());
    }

    /// The time of the link's thread.
    qint64 linkNow() const
    {
        return clock.steady() - START_LINK;
    }

    /// An answer to a request that was sent just now brings the value.
    void read(int tag, int value)
    {
        answer(tag, value, linkNow());
    }

    /// @param after  the bytes came after this time of the link's thread
    void answer(int tag, int value, qint64 after)
    {
        values.bytesCame(after, linkNow());
        values.tagRead(tag, bytesOf(value), linkNow());
    }

    static QByteArray bytesOf(int value)
    {
        QByteArray bytes(2, '\0');
        bytes[0] = char(value & 255);
        bytes[1] = char(value >> 8);
        return bytes;
    }

    Quality quality(int tag) const
    {
        return values.reading(tag).quality;
    }

    std::string trouble(int tag) const
    {
        return values.reading(tag).trouble.toStdString();
    }

    TestClock clock;
    StationEvents events;
    NotingListener listener;
    LinkValues values;
    const qint64 wallAtStart;
};

#endif
