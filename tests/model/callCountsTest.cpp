// What the counters count: a queue that was full, a call that was made, a reply that was awaited.

#include "branches.h"
#include "callRunner.h"
#include "driver/driverLibrary.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

enum { TOO_MANY = 520 }; // for a queue of 513

using model::Branch;
using model::Call;

/// How often `branch` is reached by these calls alone.
unsigned long long timesReached(Branch branch, const std::vector<Call>& calls)
{
    static const DriverLibrary library(QStringLiteral(KAKB_DRIVER_FILE));
    std::fill_n(model::branchCounters(), model::BRANCH_COUNT, 0ULL);
    const model::Disagreement disagreement = model::runApart(library, calls);
    EXPECT_FALSE(disagreement.found) << disagreement.text;
    return model::branchCounters()[static_cast<size_t>(branch)];
}

/// With a merge limit of 1, so that each word is a block of its own.
std::vector<Call> started()
{
    return {model::InitCall{true, true, true, true, true, "0#0#0#3#1", 0}};
}

std::vector<Call> withRequestInFlight()
{
    std::vector<Call> calls = started();
    calls.push_back(model::OneShotCall{{1, "MW", 3000, 0, 1, 0}, 0});
    calls.push_back(model::NextFrameCall{false});
    return calls;
}

} // namespace

TEST(QueueCount, OfAFullQueueOfOneShotsIsNotThatOfTheWrites)
{
    std::vector<Call> calls = started();
    calls.push_back(model::OneShotCall{{1, "MW", 3000, 0, TOO_MANY, 0}, 0});
    EXPECT_EQ(timesReached(Branch::ONE_SHOTS_FULL, calls), 1u);
    EXPECT_EQ(timesReached(Branch::WRITES_FULL, calls), 0u);
}

TEST(QueueCount, OfAFullQueueOfWritesIsNotThatOfTheOneShots)
{
    std::vector<Call> calls = started();
    calls.push_back(
        model::SetDataCall{1, "MW", 3000, TOO_MANY, model::Bytes(size_t(2 * TOO_MANY)), 0});
    EXPECT_EQ(timesReached(Branch::WRITES_FULL, calls), 1u);
    EXPECT_EQ(timesReached(Branch::ONE_SHOTS_FULL, calls), 0u);
}

TEST(CallCount, TellsTheFourIdentitiesApart)
{
    const Branch own[] = {Branch::CALLED_PROTOCOL_TYPE, Branch::CALLED_VERSION,
                          Branch::CALLED_PARAMETER, Branch::CALLED_PROPERTY_PAGE};
    for (int called = 0; called < 4; ++called) {
        const std::vector<Call> calls = {
            model::IdentityCall{static_cast<model::Identity>(called), false}};
        for (int counted = 0; counted < 4; ++counted)
            EXPECT_EQ(timesReached(own[counted], calls), counted == called ? 1u : 0u)
                << called << " " << counted;
    }
}

TEST(CallCount, IsThatOfTheCallThatWasMade)
{
    EXPECT_EQ(timesReached(Branch::CALLED_SET_PAGE, {model::SetPageCall{"page", false}}), 1u);
    EXPECT_EQ(timesReached(Branch::CALLED_FILL_BUFFER, {model::FillBufferCall{1}}), 1u);
}

TEST(ReplyCount, IsOneForAnAwaitedReply)
{
    std::vector<Call> calls = withRequestInFlight();
    calls.push_back(model::ReplyCall{model::ReplyKind::EMPTY, 1});
    EXPECT_EQ(timesReached(Branch::HANDED_IN_EMPTY, calls), 1u);
}

TEST(ReplyCount, LeavesOutAReplyThatNothingAwaits)
{
    std::vector<Call> calls = withRequestInFlight();
    calls.push_back(model::ReplyCall{model::ReplyKind::GOOD, 1});
    calls.push_back(model::ReplyCall{model::ReplyKind::EMPTY, 1});
    EXPECT_EQ(timesReached(Branch::HANDED_IN_GOOD, calls), 1u);
    EXPECT_EQ(timesReached(Branch::HANDED_IN_EMPTY, calls), 0u);
}
