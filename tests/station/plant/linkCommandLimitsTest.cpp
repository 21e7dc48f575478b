#include "plant/linkCommands.h"

#include "machine/machineTest.h"

#include <QElapsedTimer>

// How long the commands of a host can hold up the thread of MQTT.

class LinkCommandLimits : public MachineTest
{
protected:
    enum { COMMANDS = 10000, LIMIT_MS = 6000 };

    std::vector<Tag> tagsOf(int count) const
    {
        std::vector<Tag> tags;
        for (int number = 0; number < count; ++number) {
            Tag one = tag("MW100");
            one.name = QString::number(1000000 + number);
            one.access = Tag::READ_WRITE;
            tags.push_back(one);
        }
        return tags;
    }

    /// The time that so many writes of the last tag take up; each has its end. The link leads
    /// nowhere, so that each write ends at once.
    qint64 timeOfWrites(const std::vector<Tag>& tags)
    {
        const LinkConfig link = config(QLatin1String("tcp:127.0.0.1,1"), tags);
        StationLinks links(surroundings);
        links.apply({link});
        const std::atomic<bool> areWritesAllowed{true};
        LinkCommands commands(links, areWritesAllowed, [] {});
        int ends = 0;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < COMMANDS; ++i)
            commands.write(link.name, tags.back().name, qint64(5), QLatin1String("a host"),
                           [&ends](const WriteEnd&) { ++ends; });
        const qint64 time = timer.elapsed();
        links.stop(QLatin1String("the test is over"));
        commands.turn();
        EXPECT_EQ(int(COMMANDS), ends);
        return time;
    }
};

TEST_F(LinkCommandLimits, ManyWritesOfALargeLinkAreTakenAtOnce)
{
    EXPECT_LT(timeOfWrites(tagsOf(100000)), LIMIT_MS);
}
