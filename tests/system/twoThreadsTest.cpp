// Two threads of the user beside the link's thread: one hands in writes, the other takes the news.

#include "pollingHost.h"
#include "simulatorProcess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

enum {
    WRITES = 5000,
    MOST_OPEN = 12, // few enough that newer writes replace only some of the waiting writes
    MANY_READS = 300,
    PATIENCE_MS = 1000, // long, so that a stall of the machine does not fail the test
    BIT_EVERY = 7
};

const std::vector<std::string> TAGS = {"MW100", "MW102",  "2:MW100",  "QW40", "2:QW42",
                                       "QX4.1", "MX20.0", "2:MX20.1", "IW0"};

const size_t WRITABLE = 8;

ElementWrite nthWrite(const std::vector<Tag>& tags, int n)
{
    const Tag& tag = tags[size_t(n) % WRITABLE];
    return elementOf(tag, tag.isBit() ? n / BIT_EVERY & 1 : n);
}

/// The last value handed in for each writable tag.
std::vector<QByteArray> lastValues(const std::vector<Tag>& tags)
{
    std::vector<QByteArray> last(WRITABLE);
    for (int n = 1; n <= WRITES; ++n)
        last[size_t(n) % WRITABLE] = nthWrite(tags, n).bytes;
    return last;
}

LinkThread::Settings patientSettings(const SimulatorProcess& plc)
{
    LinkThread::Settings settings = PollingHost::settings(plc.opener(), PATIENCE_MS);
    settings.timing = LineTiming::network();
    return settings;
}

/// Hands in all writes, with at most MOST_OPEN of them open. The other thread tells the number of
/// ended writes.
class WritingThread
{
public:
    WritingThread(LinkThread& communication, const std::vector<Tag>& tags)
        : m_thread([this, &communication, tags] { write(communication, tags); })
    {
    }
    ~WritingThread()
    {
        m_ended = WRITES;
        m_thread.join();
    }

    void jobsEnded(int count)
    {
        m_ended = count;
    }
    int handedIn() const
    {
        return m_handedIn;
    }

private:
    void write(LinkThread& communication, const std::vector<Tag>& tags)
    {
        for (int n = 1; n <= WRITES; ++n) {
            while (n - m_ended > MOST_OPEN)
                std::this_thread::yield();
            communication.write(n, {nthWrite(tags, n)});
            m_handedIn = n;
        }
    }

    std::atomic<int> m_ended{0};
    std::atomic<int> m_handedIn{0};
    std::thread m_thread;
};

} // namespace

TEST(TwoThreads, WriteEachElementsLastValueAndEndEachJobOnce)
{
    SimulatorProcess plc({"--station", "1,2", "--signal", "1:IW:0:counter:5"});
    const std::vector<Tag> tags = tagsFrom(TAGS);
    std::vector<TagState> states;
    {
        PollingHost host(patientSettings(plc), tags);
        for (int n = 1; n <= WRITES; ++n)
            host.ledger.handedIn(n, {nthWrite(tags, n)});
        WritingThread writer(host.link(), tags);
        ASSERT_TRUE(host.await([&] {
            writer.jobsEnded(WRITES - host.ledger.open());
            return host.ledger.open() == 0;
        }));
        EXPECT_EQ(WRITES, writer.handedIn());
        EXPECT_EQ(0, host.ledger.surplusEnds());
        EXPECT_EQ(0, host.ledger.count(JobEnd::TIMED_OUT));
        EXPECT_EQ(0, host.ledger.count(JobEnd::REFUSED));
        // A newer write replaces one that waits; how many wait is the system's choice of threads.
        EXPECT_GE(host.ledger.count(JobEnd::DONE), int(WRITABLE));
        const qint64 written = host.now();
        ASSERT_TRUE(host.await([&] { return host.allReadSince(written); })) << host.badTags();
        states = host.states();
    }
    plc.end();
    const std::vector<QByteArray> last = lastValues(tags);
    for (size_t tag = 0; tag < WRITABLE; ++tag) {
        EXPECT_EQ(last[tag], plc.bytesOf(tags[tag])) << TAGS[tag];
        EXPECT_EQ(last[tag], states[tag].bytes) << TAGS[tag];
    }
}

TEST(TwoThreads, CanEndTheHostWithUnfinishedReads)
{
    SimulatorProcess plc({"--station", "1,2"});
    const std::vector<Tag> tags = tagsFrom(TAGS);
    std::atomic<int> handedIn{0};
    std::atomic<bool> stop{false};
    auto host = std::make_unique<PollingHost>(patientSettings(plc), tags);
    ASSERT_TRUE(host->await([&] { return host->allReadSince(0); }));
    {
        ReadBlock block;
        block.station = 1;
        block.area = QLatin1String("MW");
        block.number = tags[0].number;
        block.count = 1;
        block.tags = {0};
        const std::vector<ReadBlock> blocks = {block};
        PollingHost& shared = *host;
        std::thread reader([&] {
            while (!stop) {
                shared.link().read(++handedIn, blocks);
                std::this_thread::yield();
            }
        });
        EXPECT_TRUE(host->await([&] { return handedIn > MANY_READS; }));
        stop = true;
        reader.join();
    }
    host.reset();
    auto next = std::make_unique<PollingHost>(patientSettings(plc), tags);
    EXPECT_TRUE(next->await([&] { return next->allReadSince(0); })) << next->badTags();
}
