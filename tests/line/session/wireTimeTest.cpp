#include "builtDriver.h"
#include "scriptedLink.h"
#include "session/linkThread.h"
#include "session/sharedValues.h"

#include <gtest/gtest.h>

// The time on the wire that the frames of a link are counted with.

namespace {

enum { WAIT_MS = 100 };

const qint64 HOUR = 3600LL * 1000000;

LineSettings lineOf(int baud)
{
    LineSettings settings;
    settings.baud = baud;
    return settings;
}

/// The wire's share of an hour in which one request goes to a silent station; -1: no wire.
double shareOfOneRequest(const LineTiming& timing)
{
    Tag tag;
    tag.station = 1;
    tag.area = QLatin1String("MW");
    tag.number = 3000;
    ReadBlock block;
    block.station = 1;
    block.area = tag.area;
    block.number = tag.number;
    block.count = 1;
    block.tags = {0};

    LinkThread::Settings settings;
    settings.timing = timing;
    settings.exchange.answer = HOUR; // no second request
    settings.openLink = [] {
        return std::make_unique<ScriptedLink>(std::deque<QByteArray>(), ScriptedLink::STAYS_SILENT);
    };
    SharedValues shared(1, true);
    {
        LinkThread thread(driver(), settings, shared);
        thread.poll({tag}, {block});
        thread.start();
        std::vector<FrameRecord> frames;
        while (frames.empty()) {
            shared.waitForNews(WAIT_MS);
            frames = shared.takeNews().frames;
        }
        EXPECT_EQ(8, int(frames.front().bytes.size()));
    }
    return shared.figures(HOUR).wholeRun.wireShare;
}

} // namespace

TEST(WireTime, OfARequestHasTheSilenceAheadOfIt)
{
    // 8 characters of 10 bits, and 3.5 characters of silence: 8333.3 and 3645.8 us, rounded up.
    EXPECT_NEAR(8334 + 3646, shareOfOneRequest(LineTiming(lineOf(9600))) * double(HOUR), 0.5);
    // Above 19200 baud the silence is fixed: 2083.3 us, rounded up, and 1750 us.
    EXPECT_NEAR(2084 + 1750, shareOfOneRequest(LineTiming(lineOf(38400))) * double(HOUR), 0.5);
}

TEST(WireTime, OfANetworkIsNotCounted)
{
    EXPECT_EQ(-1, shareOfOneRequest(LineTiming::network()));
}
