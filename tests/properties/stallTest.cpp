// The engine goes on whatever comes back.

#include "engineSteps.h"
#include "figures.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

enum { MERGE = 32, WRITES_IN_A_ROW = 10, BEFORE_ONE_SHOT = 3, TURNS_TO_REST = 5000 };

bool workIsQueued(const EngineRun& run)
{
    return !driver.writeList.isEmpty() || !driver.condReadList.isEmpty() ||
           run.bench.transferUnderWay();
}

bool somethingIsPlanned(const EngineRun& run)
{
    return workIsQueued(run) || !driver.readList.isEmpty();
}

/// A 0 with work queued is let through once, while nothing is polled.
bool givesAFrame()
{
    FRAME_PRO frame;
    if (intf_getSendFrame(&frame) != 0) return true;
    return driver.readList.isEmpty() && intf_getSendFrame(&frame) != 0;
}

/// Of frames that came after a reply.
void tallyByKind(Reply reply)
{
    tally("frames after a reply");
    for (int kind = 0; kind < static_cast<int>(Reply::KINDS); ++kind)
        tally(std::string("after ") + nameOf(static_cast<Reply>(kind)),
              kind == static_cast<int>(reply));
}

/// A frame is given up at exactly the rejected reply that the limit names.
class PatienceCheck
{
public:
    explicit PatienceCheck(int retryLimit) : m_limit(retryLimit) {}

    void note(const Exchanged& exchanged)
    {
        if (exchanged.given == 0) return;
        if (exchanged.result == REPLY_GIVEN_UP) RC_ASSERT(m_rejected + 1 == std::max(m_limit, 1));
        m_rejected = exchanged.result == REPLY_RETRY ? m_rejected + 1 : 0;
        RC_ASSERT(m_rejected < std::max(m_limit, 1));
        RC_ASSERT(exchanged.result != REPLY_NOTHING_PENDING);
        tally("frames given up", exchanged.result == REPLY_GIVEN_UP);
    }

private:
    int m_limit;
    int m_rejected = 0;
};

} // namespace

RC_GTEST_PROP(TheEngine, GivesAFrameAfterAnyReplyWhileAnythingIsPlanned, ())
{
    countCase({"frames after a reply", "frames given up"});
    const std::vector<EngineStep> steps = *engineSteps();
    const int retryLimit = *rc::gen::inRange(-1, 5);
    EngineRun run(retryLimit, MERGE);
    PatienceCheck patience(retryLimit);
    for (const EngineStep& step : steps) {
        run.plan(step);
        if (step.action == Action::EXCHANGE)
            patience.note(run.exchange(step.reply, static_cast<unsigned>(step.noise)));
        if (!somethingIsPlanned(run)) continue;
        RC_ASSERT(givesAFrame());
        if (step.action == Action::EXCHANGE) tallyByKind(step.reply);
    }
}

RC_GTEST_PROP(TheEngine, PausesWithWorkQueuedOnlyInTurnForACyclicReadThatThereIsNot, ())
{
    countCase({"pauses with work queued"});
    const std::vector<EngineStep> steps = *engineSteps();
    EngineRun run(1, MERGE);
    int ahead = 0;
    for (const EngineStep& step : steps) {
        run.plan(step);
        if (step.action != Action::EXCHANGE) continue;
        const bool writes = !driver.writeList.isEmpty();
        const bool work = workIsQueued(run);
        const Exchanged done = run.exchange(step.reply, static_cast<unsigned>(step.noise));
        if (done.given == 0 && work) {
            RC_ASSERT(driver.readList.isEmpty());
            tally("pauses with work queued");
            RC_ASSERT(ahead >= (writes ? int(WRITES_IN_A_ROW) : int(BEFORE_ONE_SHOT)));
        }
        const bool priority = done.kind == FRAME_WRITE || done.kind == FRAME_ONE_SHOT_READ;
        if (done.given == 0 || done.kind == FRAME_CYCLIC_READ) ahead = 0;
        if (done.given != 0 && priority) ++ahead;
    }
}

RC_GTEST_PROP(TheEngine, ComesToRestOnceTheLineIsGood, ())
{
    countCase();
    const std::vector<EngineStep> steps = *engineSteps();
    EngineRun run(*rc::gen::inRange(0, 4), MERGE);
    for (const EngineStep& step : steps) {
        run.plan(step);
        if (step.action == Action::EXCHANGE)
            run.exchange(step.reply, static_cast<unsigned>(step.noise));
    }
    tally("with work queued", workIsQueued(run));
    tally("with a recipe under way", run.bench.transferUnderWay());
    for (int turns = 0; workIsQueued(run); ++turns) {
        RC_ASSERT(turns < int(TURNS_TO_REST));
        tally("exchanges to rest");
        run.exchange(Reply::GOOD, static_cast<unsigned>(turns));
    }
    run.exchange(Reply::GOOD, 0);
    if (driver.readList.isEmpty()) {
        FRAME_PRO frame;
        RC_ASSERT(intf_getSendFrame(&frame) == 0);
    }
}

RC_GTEST_PROP(TheEngine, PollsEveryBlockInTurnAfterAnyReply, ())
{
    countCase({"blocks polled again"});
    EngineRun run(1, MERGE);
    const int blocks = *rc::gen::inRange(1, 7);
    run.poll(blocks);
    RC_ASSERT(int(driver.readList.size()) == blocks);
    const auto replies =
        *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, static_cast<int>(Reply::KINDS)));
    std::vector<std::string> order;
    for (size_t i = 0; i < replies.size(); ++i) {
        const Exchanged done =
            run.exchange(static_cast<Reply>(replies[i]), static_cast<unsigned>(i));
        order.push_back(done.frame.var.regName.toStdString());
        if (i >= static_cast<size_t>(blocks)) {
            RC_ASSERT(order[i] == order[i - blocks]);
            tally("blocks polled again");
        }
        for (size_t j = i - std::min(i, static_cast<size_t>(blocks) - 1); j < i; ++j)
            RC_ASSERT(order[j] != order[i]);
    }
}
