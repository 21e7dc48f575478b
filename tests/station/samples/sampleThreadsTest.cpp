// Threads of links that note rows and standings, and one that takes them, all at once.
#include "samples/sampleQueue.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <thread>

namespace {

enum { THREADS = 4, ROWS = 20000, MOST = 500 };

/// Numbers rows as the intake does: one thread at a time.
class Numbers
{
public:
    explicit Numbers(SampleQueue& queue) : m_queue(queue) {}

    void note(const QString& tag, int value)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Sample sample;
        sample.tag = tag;
        sample.value = value;
        sample.number = ++m_last;
        m_queue.rowNoted(sample);
    }

private:
    SampleQueue& m_queue;
    std::mutex m_mutex;
    quint64 m_last = 0; ///< guarded by m_mutex
};

/// What was woken, and not taken yet.
class Bell
{
public:
    void ring()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_hasRung = true;
        m_rung.notify_one();
    }

    void await()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_rung.wait(lock, [this] { return m_hasRung; });
        m_hasRung = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_rung;
    bool m_hasRung = false; ///< guarded by m_mutex
};

void noteRows(Numbers& numbers, SampleQueue& queue, const QString& name, const StationClock& clock)
{
    std::vector<Tag> tags(1);
    LinkValues link(name, tags, clock);
    link.addListener(&queue);
    for (int value = 1; value <= ROWS; ++value) {
        numbers.note(name, value);
        if (value % 100 == 0) link.stationChanged(tags[0].station, value % 200 != 0, QString(), 0);
    }
}

} // namespace

TEST(SampleThreads, TakeEachRowOnceOrItsGapAndTheLastValues)
{
    const SystemClock clock;
    Bell bell;
    SampleQueue queue([&bell] { bell.ring(); }, MOST);
    Numbers numbers(queue);
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i)
        threads.emplace_back([&, i] { noteRows(numbers, queue, QString::number(i), clock); });
    quint64 last = 0;
    QHash<QString, double> values;
    QHash<QString, bool> answers;
    while (last < quint64(THREADS) * ROWS) {
        bell.await();
        for (const Sample& sample : queue.take()) {
            if (sample.kind == Sample::STANDING) {
                answers[sample.link] = sample.answers;
                continue;
            }
            if (sample.kind == Sample::READING) {
                ASSERT_EQ(last + 1, sample.number);
                ASSERT_LT(values[sample.tag], sample.value);
                values[sample.tag] = sample.value;
            }
            ASSERT_LT(last, sample.number);
            last = sample.number;
        }
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const Sample& sample : queue.take())
        answers[sample.link] = sample.answers;
    EXPECT_EQ(quint64(THREADS) * ROWS, last);
    for (int i = 0; i < THREADS; ++i) {
        EXPECT_EQ(double(ROWS), values[QString::number(i)]);
        EXPECT_FALSE(answers.value(QString::number(i), true));
    }
}
