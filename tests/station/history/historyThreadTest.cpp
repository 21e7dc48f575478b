// The history with its thread, the threads of links, and readers, all at once.
#include "history/history.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>

namespace {

enum { VALUES = 20000 };

std::shared_ptr<LinkValues> linkNamed(const QString& name, const StationClock& clock)
{
    Tag tag;
    tag.name = QLatin1String("level");
    const qint64 turn = 100000; // microseconds
    auto link = std::make_shared<LinkValues>(name, std::vector<Tag>{tag}, clock);
    link->setTurns({turn});
    return link;
}

void countUp(LinkValues& link)
{
    for (int value = 1; value <= VALUES; ++value)
        link.tagRead(0, QByteArray(1, char(value & 0xFF)) + QByteArray(1, char(value >> 8)), 0);
}

} // namespace

TEST(HistoryThread, WritesWhatAllLinksTellAndAnswersMeanwhile)
{
    const QTemporaryDir folder;
    const SystemClock clock;
    History::Settings settings;
    settings.file = folder.filePath(QLatin1String("history.sqlite"));
    const qint64 begin = clock.wall();
    {
        History history(settings, clock);
        std::vector<std::shared_ptr<LinkValues>> links;
        for (const char* const name : {"a", "b"}) {
            links.push_back(linkNamed(QLatin1String(name), clock));
            links.back()->addListener(&history);
        }
        history.start([&links] { return HistoryIntake::Links(links.begin(), links.end()); });
        std::vector<std::thread> threads;
        for (const auto& link : links)
            threads.emplace_back([&link] { countUp(*link); });
        std::atomic<bool> isEnding{false};
        threads.emplace_back([&] {
            while (!isEnding) {
                const qint64 now = clock.wall();
                history.buckets({QLatin1String("a"), QLatin1String("level"), begin, now, 10});
                history.rows({QLatin1String("b"), QLatin1String("level"), 0, now, 1}, 0, 10);
                history.standing();
            }
        });
        threads[0].join();
        threads[1].join();
        isEnding = true;
        threads[2].join();
    }
    HistoryReader reader(settings.file);
    for (const char* const name : {"a", "b"}) {
        const std::vector<HistoryRow> rows = reader.rows(
            {QLatin1String(name), QLatin1String("level"), 0, clock.wall() + 1, 1}, 0, 10 * VALUES);
        ASSERT_FALSE(rows.empty());
        EXPECT_EQ(VALUES, int(rows.back().value));
        EXPECT_GE(int(rows.size()), int(VALUES));
    }
}
