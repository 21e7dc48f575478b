// Whose turn it is: writes before one-shot reads before cyclic reads, and none starves.

#include "engineSteps.h"
#include "figures.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

enum { WRITES_IN_A_ROW = 10, BEFORE_ONE_SHOT = 3, PENDING = 60, RETRIES = 3, MERGE = 32 };

const char* const WRITTEN = "MW";

/// Frames ahead of the cyclic reads since the last of those.
class PriorityCount
{
public:
    void note(const Exchanged& exchanged)
    {
        if (exchanged.given != 0 && exchanged.again) return;
        if (exchanged.given == 0 || exchanged.kind == FRAME_CYCLIC_READ) {
            m_writes = 0;
            m_frames = 0;
        } else if (exchanged.kind == FRAME_WRITE || exchanged.kind == FRAME_ONE_SHOT_READ) {
            m_writes += exchanged.kind == FRAME_WRITE ? 1 : 0;
            ++m_frames;
        }
    }

    int writes() const
    {
        return m_writes;
    }

    int frames() const
    {
        return m_frames;
    }

private:
    int m_writes = 0;
    int m_frames = 0;
};

/// Steps as drawn, without recipes and changes of plan.
std::vector<EngineStep> stepsOfAPolledPanel()
{
    std::vector<EngineStep> steps = *engineSteps();
    for (EngineStep& step : steps)
        if (step.action == Action::POLL || step.action == Action::RECIPE)
            step.action = Action::EXCHANGE;
    return steps;
}

struct Backlog
{
    int writes;
    int oneShots;
};

/// Calls until a one-shot read behind this backlog has been answered, were none answered wrong: the
/// writes, with a cyclic read or a 0 every ten, once more to let the first one-shot read through,
/// the one-shot reads ahead of it with a cyclic read or a 0 every three, and itself.
int mostTurns(const Backlog& backlog)
{
    return backlog.writes + (backlog.writes + WRITES_IN_A_ROW - 1) / WRITES_IN_A_ROW + 1 +
           backlog.oneShots + backlog.oneShots / BEFORE_ONE_SHOT + 1;
}

/// The sought one-shot read comes behind `oneShots` others.
void queueBacklog(PropertyBench& bench, int writes, int oneShots, int soughtId)
{
    for (int i = 0; i < writes; ++i)
        bench.write({1, WRITTEN, 4000 + i, 1}, {i}, i);
    for (int i = 0; i <= oneShots; ++i)
        bench.readOnce({1, "IW", i, 1}, i == oneShots ? soughtId : 1);
}

/// Writes and exchanges, so that the engine stands anywhere in its count.
void runIn(EngineRun& run, int writes)
{
    for (int i = 0; i < writes; ++i) {
        run.bench.write({1, WRITTEN, 3500 + i, 1}, {i}, i);
        run.exchange(Reply::GOOD, 0);
    }
}

} // namespace

RC_GTEST_PROP(BetweenTwoCyclicReads, AreAtMostTenWritesAndOneShotReads, ())
{
    countCase({"exchanges"});
    const std::vector<EngineStep> steps = stepsOfAPolledPanel();
    EngineRun run(*rc::gen::inRange(0, 4), MERGE);
    run.poll(*rc::gen::inRange(1, 6));
    PriorityCount count;
    for (const EngineStep& step : steps) {
        run.plan(step);
        if (step.action != Action::EXCHANGE) continue;
        count.note(run.exchange(step.reply, static_cast<unsigned>(step.noise)));
        RC_ASSERT(count.writes() <= int(WRITES_IN_A_ROW));
        RC_ASSERT(count.frames() <= int(WRITES_IN_A_ROW));
        tally("exchanges");
        tallyMost("writes in a row", count.writes(), WRITES_IN_A_ROW);
        tallyMost("writes and one-shot reads", count.frames(), WRITES_IN_A_ROW);
    }
}

RC_GTEST_PROP(BetweenTwoCyclicReads, AreExactlyTenWritesWhileManyArePending, ())
{
    countCase({"cyclic reads after ten writes"});
    EngineRun run(*rc::gen::inRange(0, 4), MERGE);
    run.poll(*rc::gen::inRange(1, 6));
    for (int i = 0; i < PENDING; ++i)
        run.bench.write({1, WRITTEN, 4000 + i, 1}, {i}, i);
    const auto replies =
        *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, static_cast<int>(Reply::KINDS)));
    PriorityCount count;
    for (size_t i = 0; i < replies.size() && driver.writeList.size() > 1; ++i) {
        const int before = count.writes();
        const Exchanged done =
            run.exchange(static_cast<Reply>(replies[i]), static_cast<unsigned>(i));
        if (done.kind == FRAME_CYCLIC_READ && !done.again) {
            RC_ASSERT(before == int(WRITES_IN_A_ROW));
            tally("cyclic reads after ten writes");
        }
        count.note(done);
        RC_ASSERT(count.writes() <= int(WRITES_IN_A_ROW));
    }
}

RC_GTEST_PROP(AOneShotRead, GoesOutBeforeACyclicReadUnlessThreeFramesWereAhead, ())
{
    countCase({"cyclic reads before a waiting one", "one-shot reads"});
    const std::vector<EngineStep> steps = stepsOfAPolledPanel();
    EngineRun run(*rc::gen::inRange(0, 4), MERGE);
    run.poll(*rc::gen::inRange(1, 6));
    PriorityCount count;
    for (const EngineStep& step : steps) {
        const bool waiting = !driver.condReadList.isEmpty();
        run.plan(step);
        if (step.action != Action::EXCHANGE) continue;
        const int ahead = count.frames();
        const Exchanged done = run.exchange(step.reply, static_cast<unsigned>(step.noise));
        if (waiting && done.kind == FRAME_CYCLIC_READ && !done.again) {
            RC_ASSERT(ahead >= int(BEFORE_ONE_SHOT));
            tally("cyclic reads before a waiting one");
        }
        if (done.kind == FRAME_ONE_SHOT_READ && !done.again) {
            RC_ASSERT(ahead < int(BEFORE_ONE_SHOT));
            tally("one-shot reads");
        }
        count.note(done);
    }
}

RC_GTEST_PROP(AOneShotRead, IsAnsweredWithinItsBoundWhenNoWritesKeepComing, ())
{
    enum { SOUGHT = 4711 };
    countCase();
    EngineRun run(RETRIES, MERGE);
    run.poll(*rc::gen::inRange(0, 6));
    runIn(run, *rc::gen::inRange(0, 25));
    const int oneShots = *rc::gen::inRange(0, 30);
    queueBacklog(run.bench, *rc::gen::inRange(0, 80), oneShots, SOUGHT);
    const Backlog backlog = {int(driver.writeList.size()), oneShots};
    const int badReplies = *rc::gen::inRange(0, int(RETRIES));
    int turns = 0;
    for (bool served = false; !served; ++turns) {
        RC_ASSERT(turns < mostTurns(backlog));
        for (int bad = 0; bad < badReplies; ++bad)
            run.exchange(Reply::EMPTY, 0);
        const Exchanged done = run.exchange(Reply::GOOD, 0);
        served = done.frame.var.varId == int(SOUGHT) && done.result == REPLY_ACCEPTED;
    }
    tally("one-shot reads served");
    tally("as late as may be", turns == mostTurns(backlog));
    RC_ASSERT(driver.condReadList.isEmpty());
}
