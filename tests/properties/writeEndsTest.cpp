// What becomes of writes: each is confirmed, withdrawn, or replaced by a newer one of its element.

#include "engineSteps.h"
#include "figures.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

enum { MERGE = 32, MOST_BURST = 400, ELEMENTS = 700, TURNS_TO_REST = 20000, LAST_PLACE = 512 };

/// One call of the host: a run of elements to write, or exchanges with the same kind of reply.
struct WriteStep
{
    bool exchanges;
    int first;
    int count;
    bool bits;
    Reply reply;
};

std::ostream& operator<<(std::ostream& out, const WriteStep& step)
{
    if (step.exchanges) return out << step.count << " exchanges, " << step.reply << " replies";
    return out << "write " << step.count << (step.bits ? " QX" : " QW/MW words") << " from "
               << step.first << " on";
}

rc::Gen<std::vector<WriteStep>> writeSteps()
{
    const auto reply = rc::gen::weightedElement<Reply>(
        {{4, Reply::GOOD}, {1, Reply::EMPTY}, {1, Reply::DAMAGED}, {1, Reply::RANDOM}});
    const auto count =
        rc::gen::oneOf(rc::gen::inRange(1, 12), rc::gen::inRange(1, int(MOST_BURST)));
    return rc::gen::container<std::vector<WriteStep>>(rc::gen::build<WriteStep>(
        rc::gen::set(&WriteStep::exchanges, rc::gen::arbitrary<bool>()),
        rc::gen::set(&WriteStep::first, rc::gen::inRange(0, int(ELEMENTS))),
        rc::gen::set(&WriteStep::count, count),
        rc::gen::set(&WriteStep::bits, rc::gen::arbitrary<bool>()),
        rc::gen::set(&WriteStep::reply, reply)));
}

struct QueuedWrite
{
    int id; ///< of the call
    bool bits;
    int number;
    int value;
};

/// The queue as the host header describes it: a newer write takes the place of a queued one of its
/// element unless that is the oldest, and the 513th place when the queue is full.
class ExpectedQueue
{
public:
    void add(const QueuedWrite& write)
    {
        for (size_t at = m_writes.size(); at > 1; --at) {
            QueuedWrite& queued = m_writes[at - 1];
            if (queued.bits != write.bits || queued.number != write.number) continue;
            queued = write;
            tally("replaced");
            return;
        }
        const bool full = m_writes.size() > LAST_PLACE;
        tally("past the 513th", full);
        if (full)
            m_writes[LAST_PLACE] = write;
        else
            m_writes.push_back(write);
    }

    /// The one whose turn it is, which thereby ends.
    QueuedWrite takeOldest()
    {
        RC_ASSERT(!m_writes.empty());
        const QueuedWrite oldest = m_writes.front();
        m_writes.erase(m_writes.begin());
        return oldest;
    }

    bool isEmpty() const
    {
        return m_writes.empty();
    }

private:
    std::vector<QueuedWrite> m_writes;
};

class WritingHost
{
public:
    explicit WritingHost(int retryLimit) : m_run(retryLimit, MERGE)
    {
        if (*rc::gen::arbitrary<bool>()) pollAllWords();
    }

    void perform(const WriteStep& step)
    {
        if (!step.exchanges) return write(step);
        for (int i = 0; i < step.count; ++i)
            exchange(step.reply);
    }

    void exchange(Reply reply)
    {
        m_run.bench.told.clear();
        const Exchanged done = m_run.exchange(reply, static_cast<unsigned>(++m_exchanges));
        RC_ASSERT(int(driver.writeList.size()) <= int(PropertyBench::MOST_QUEUED));
        if (done.given == 0 || done.kind != FRAME_WRITE || done.result == REPLY_RETRY) return;
        const QueuedWrite ended = m_queue.takeOldest();
        RC_ASSERT(done.frame.var.varId == ended.id);
        RC_ASSERT(done.frame.var.addr == numberOnWire(ended));
        RC_ASSERT(done.frame.sendBuf[4] * 256 + done.frame.sendBuf[5] == valueOnWire(ended));
        RC_ASSERT(done.result == REPLY_ACCEPTED || done.result == REPLY_GIVEN_UP);
        tally("confirmed", done.result == REPLY_ACCEPTED);
        tally("withdrawn", done.result == REPLY_GIVEN_UP);
        if (done.result == REPLY_GIVEN_UP && (ended.bits || m_monitored)) RC_ASSERT(wasTold(ended));
        if (done.result == REPLY_ACCEPTED && ended.bits) RC_ASSERT(!wasTold(ended));
    }

    bool isDone() const
    {
        return m_queue.isEmpty();
    }

private:
    static const char* areaOf(const QueuedWrite& write)
    {
        return write.bits ? "QX" : "MW";
    }

    static int numberOnWire(const QueuedWrite& write)
    {
        return write.bits ? write.number : 3000 + write.number;
    }

    void pollAllWords()
    {
        m_monitored = true;
        std::vector<Units> all;
        for (int first = 0; first < ELEMENTS + MOST_BURST; first += 100)
            all.push_back({1, "MW", 3000 + first, 100});
        m_run.bench.poll(all);
    }

    void write(const WriteStep& step)
    {
        QueuedWrite made = {++m_lastId, step.bits, step.first, m_lastId};
        m_run.bench.writeRun({1, areaOf(made), numberOnWire(made), step.count}, made.value,
                             made.id);
        for (int i = 0; i < step.count; ++i, ++made.number, ++made.value)
            m_queue.add(made);
        RC_ASSERT(int(driver.writeList.size()) <= int(PropertyBench::MOST_QUEUED));
    }

    /// The value field of functions 5 and 6, MODBUS Application Protocol V1.1b3, 6.5 and 6.6.
    static int valueOnWire(const QueuedWrite& write)
    {
        if (!write.bits) return write.value & 0xFFFF;
        return (write.value & 1) != 0 ? 0xFF00 : 0;
    }

    bool wasTold(const QueuedWrite& write) const
    {
        const auto& told = m_run.bench.told;
        const Told due = {BenchHost::CONTEXT, 1, areaOf(write), numberOnWire(write)};
        return std::find(told.begin(), told.end(), due) != told.end();
    }

    EngineRun m_run;
    ExpectedQueue m_queue;
    bool m_monitored = false;
    int m_lastId = 0;
    int m_exchanges = 0;
};

} // namespace

RC_GTEST_PROP(EveryWrite, EndsConfirmedOrWithdrawnAndToldInTheOrderOfTheQueue, ())
{
    countCase({"confirmed", "withdrawn", "replaced", "past the 513th"});
    const std::vector<WriteStep> steps = *writeSteps();
    WritingHost host(*rc::gen::inRange(0, 4));
    for (const WriteStep& step : steps)
        host.perform(step);
    for (int turns = 0; !driver.writeList.isEmpty(); ++turns) {
        RC_ASSERT(turns < int(TURNS_TO_REST));
        host.exchange(Reply::GOOD);
    }
    RC_ASSERT(host.isDone());
}

RC_GTEST_PROP(TheQueues, NeverHoldMoreThan513, ())
{
    countCase();
    const std::vector<EngineStep> steps = *engineSteps();
    EngineRun run(2, MERGE);
    const int backlog = *rc::gen::resize(
        rc::kNominalSize, rc::gen::oneOf(rc::gen::inRange(0, 600), rc::gen::inRange(500, 600)));
    tally("with more than 513 writes", backlog > int(PropertyBench::MOST_QUEUED));
    for (int i = 0; i < backlog; ++i) {
        run.bench.write({1, "MW", 4000 + i, 1}, {i}, i);
        run.bench.readOnce({2, "MW", 5000 + i, 1}, i);
    }
    tallyMost("writes queued", int(driver.writeList.size()), PropertyBench::MOST_QUEUED);
    tallyMost("one-shot reads queued", int(driver.condReadList.size()), PropertyBench::MOST_QUEUED);
    for (const EngineStep& step : steps) {
        run.plan(step);
        if (step.action == Action::EXCHANGE)
            run.exchange(step.reply, static_cast<unsigned>(step.noise));
        RC_ASSERT(int(driver.writeList.size()) <= int(PropertyBench::MOST_QUEUED));
        RC_ASSERT(int(driver.condReadList.size()) <= int(PropertyBench::MOST_QUEUED));
    }
}
