#include "handledRequests.h"

#include <algorithm>

namespace {

const std::int64_t LONGEST = 100 * MS;
const char* const OTHER = "02 03 00 00 00 01 84 39"; // pymodbus 3.0's RTU framer

Bytes bytesIn(const std::vector<OutgoingPiece>& pieces)
{
    return pieces.empty() ? Bytes() : pieces.front().bytes;
}

class LateReplies : public HandledRequests
{
protected:
    void late(double share)
    {
        m_faults.lateShare = share;
        m_faults.longestLatenessNs = LONGEST;
    }
    std::int64_t dueAt(const char* hex, std::int64_t at)
    {
        const std::vector<OutgoingPiece> pieces = handle(hex, at);
        return pieces.empty() ? -1 : pieces.back().dueAt;
    }
    /// The lateness of each of `count` replies, one request a second.
    std::vector<std::int64_t> latenesses(int count)
    {
        std::vector<std::int64_t> all;
        for (int i = 0; i < count; ++i)
            all.push_back(dueAt(READ, i * 1000 * MS) - i * 1000 * MS);
        return all;
    }
};

} // namespace

TEST_F(LateReplies, AreLateByUpToTheLongestTime)
{
    late(1);
    const std::vector<std::int64_t> all = latenesses(1000);
    EXPECT_GE(*std::min_element(all.begin(), all.end()), 0);
    EXPECT_LE(*std::max_element(all.begin(), all.end()), LONGEST);
    const auto middle = [](std::int64_t lateness) { return lateness < LONGEST / 2; };
    EXPECT_NEAR(500, double(std::count_if(all.begin(), all.end(), middle)), 80);
    EXPECT_EQ(1000, handler().counts().late);
}

TEST_F(LateReplies, AreTheGivenShareOfTheExchanges)
{
    late(0.25);
    const std::vector<std::int64_t> all = latenesses(10000);
    EXPECT_NEAR(7500, double(std::count(all.begin(), all.end(), 0)), 250);
    EXPECT_EQ(10000 - std::count(all.begin(), all.end(), 0), handler().counts().late);
}

TEST_F(LateReplies, RequestIsExecutedAtOnce)
{
    late(1);
    handle(WRITE, 0);
    EXPECT_EQ(1234, marker());
}

TEST_F(LateReplies, OfOneStationKeepOrderAndDoNotAddUp)
{
    late(1);
    std::int64_t last = 0;
    for (int i = 0; i < 100; ++i) {
        const std::int64_t due = dueAt(READ, 0);
        EXPECT_GE(due, last) << i;
        EXPECT_LE(due, LONGEST) << i;
        last = due;
    }
    EXPECT_GT(last, LONGEST / 2);
}

TEST_F(LateReplies, OfOneStationMayBeOvertakenByAnother)
{
    late(1);
    int ahead = 0;
    for (int i = 0; i < 100; ++i) {
        const std::int64_t at = i * 1000 * MS;
        const std::int64_t due = dueAt(READ, at);
        if (dueAt(OTHER, at) < due) ++ahead;
    }
    EXPECT_NEAR(50, ahead, 25);
}

TEST_F(LateReplies, DoNotOverlapOnAPacedLine)
{
    late(0.5);
    m_line.baud = 10000; // a reply of 7 bytes takes 7 ms
    std::vector<std::int64_t> ends;
    for (int i = 0; i < 500; ++i)
        ends.push_back(dueAt(i % 3 == 0 ? READ : OTHER, i * 20 * MS));
    std::sort(ends.begin(), ends.end());
    for (std::size_t i = 1; i < ends.size(); ++i)
        EXPECT_GE(ends[i] - ends[i - 1], 7 * MS) << i;
}

TEST_F(LateReplies, DoNotShiftOtherFaults)
{
    m_faults.rates[FAULT_DROP] = 0.3;
    m_faults.rates[FAULT_CORRUPT] = 0.5;
    RequestHandler prompt(m_stations, LinePacing(m_line), m_faults, 1);
    late(0.5);
    for (int i = 0; i < 1000; ++i) {
        const Request request = {bytesOf(READ), i * 1000 * MS, i * 1000 * MS};
        ASSERT_EQ(bytesIn(prompt.handle(request)), bytesIn(handler().handle(request))) << i;
    }
    EXPECT_GT(handler().counts().late, 0);
}

TEST_F(LateReplies, EndAfterTheFaultExchanges)
{
    late(1);
    m_faults.exchanges = 10;
    latenesses(20);
    EXPECT_EQ(10, handler().counts().late);
}

TEST_F(LateReplies, AreNotCountedWhenDropped)
{
    late(1);
    always(FAULT_DROP);
    handle(READ, 0);
    EXPECT_EQ(0, handler().counts().late);
}
