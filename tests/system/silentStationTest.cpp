// Stations that do not answer, for good or for a while.

#include "pollingHost.h"
#include "simulatorProcess.h"

#include <gtest/gtest.h>

namespace {

enum {
    ANSWER_MS = 20,
    ATTEMPTS = 2,
    EXCHANGES = 2000,
    MOST_ASKED = EXCHANGES / 50,
    FIRST_VALUE = 100
};

const char* const UNANSWERED = "3"; // both attempts and the first probe

LinkThread::Settings settingsFor(const SimulatorProcess& plc)
{
    LinkThread::Settings settings = PollingHost::settings(plc.opener(), ANSWER_MS, ATTEMPTS);
    settings.timing = LineTiming::network();
    return settings;
}

} // namespace

TEST(SilentStation, IsShownAsBadAndSeldomAskedWhileTheOtherGoesOn)
{
    SimulatorProcess plc({"--station", "1,2", "--silent", "2"});
    const std::vector<Tag> tags = tagsFrom({"MW100", "2:MW100"});
    {
        PollingHost host(settingsFor(plc), tags);
        ASSERT_TRUE(host.await([&] { return !host.states()[1].trouble.isEmpty(); }));
        host.write({elementOf(tags[0], 17)});
        host.write({elementOf(tags[1], 18)});
        ASSERT_TRUE(host.await(
            [&] { return host.ledger.open() == 0 && host.figures().exchanges >= EXCHANGES; }));
        EXPECT_EQ(1, host.ledger.count(JobEnd::DONE));
        EXPECT_EQ(1, host.ledger.count(JobEnd::TIMED_OUT));
        EXPECT_TRUE(host.states()[0].good);
        EXPECT_FALSE(host.states()[1].good);
        EXPECT_EQ("station 2 does not answer", host.states()[1].trouble.toStdString());
    }
    plc.end();
    EXPECT_EQ(elementOf(tags[0], 17).bytes, plc.bytesOf(tags[0]));
    EXPECT_LT(plc.reported("silent"), MOST_ASKED);
}

/// The write is handed in while the probe is under way, and nothing is monitored.
TEST(SilentStation, ShowsWhatWasWrittenAsItCameBack)
{
    SimulatorProcess plc({"--drop-request", "1", "--fault-exchanges", UNANSWERED});
    const std::vector<Tag> tags = tagsFrom({"MW100", "QW40", "QX3.1"});
    std::vector<TagState> states;
    {
        PollingHost host(settingsFor(plc), tags);
        ASSERT_TRUE(host.await([&] { return !host.states()[0].trouble.isEmpty(); }));
        int value = FIRST_VALUE;
        ASSERT_TRUE(host.await([&] {
            if (host.ledger.open() > 0) return false;
            if (host.ledger.count(JobEnd::DONE) > 0) return true;
            ++value;
            host.write({elementOf(tags[0], value), elementOf(tags[1], value)});
            return false;
        }));
        const qint64 written = host.now();
        ASSERT_TRUE(host.await([&] { return host.allReadSince(written); })) << host.badTags();
        EXPECT_EQ(elementOf(tags[0], value).bytes, host.states()[0].bytes);
        states = host.states();
    }
    plc.end();
    for (size_t tag = 0; tag < tags.size(); ++tag)
        EXPECT_EQ(plc.bytesOf(tags[tag]), states[tag].bytes) << tags[tag].name.toStdString();
}
