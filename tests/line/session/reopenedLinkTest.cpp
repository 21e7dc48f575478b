#include "builtDriver.h"
#include "scriptedLink.h"
#include "session/linkThread.h"
#include "session/sharedValues.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

// The pauses between the openings of a link that is lost again and again. The thread is a real one,
// so the tests know only the shortest time that it may take.

namespace {

enum { FIRST_PAUSE_MS = 1 };

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// The times of the first `count` openings of a link that brings the bytes and is lost.
std::vector<Clock::time_point> openings(size_t count, const std::deque<QByteArray>& portions)
{
    std::vector<Clock::time_point> times;
    std::promise<void> enough;
    LinkThread::Settings settings;
    settings.firstPauseMs = FIRST_PAUSE_MS;
    settings.openLink = [&] {
        times.push_back(Clock::now());
        if (times.size() == count) enough.set_value();
        return std::make_unique<ScriptedLink>(portions, ScriptedLink::IS_LOST);
    };
    SharedValues shared(0, false);
    {
        LinkThread thread(driver(), settings, shared);
        thread.start();
        enough.get_future().wait();
    }
    times.resize(count);
    return times;
}

} // namespace

TEST(ReopenedLink, PausesGoOnGrowingWhenItOpensAndBringsNothing)
{
    const std::vector<Clock::time_point> opened = openings(8, {});
    milliseconds pause(FIRST_PAUSE_MS);
    for (size_t i = 1; i < opened.size(); ++i, pause *= 2)
        EXPECT_GE(opened[i] - opened[i - 1], pause) << i;
}

TEST(ReopenedLink, PausesStartAnewWhenItBringsBytes)
{
    enum { OPENINGS = 14, GROWN_MS = (1 << (OPENINGS - 1)) - 1 };
    const std::vector<Clock::time_point> opened = openings(OPENINGS, {"x"});
    EXPECT_LT(opened.back() - opened.front(), milliseconds(GROWN_MS));
}
