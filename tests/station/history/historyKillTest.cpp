// A kill at any moment loses at most the last second.
#include "historyRoom.h"

#include "history/historySchema.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace {

enum { KILLS = 8, ROWS_A_SECOND = 300, LONGEST_LIFE_US = 150000 };

/// Lives until it is killed: writes a number of rows each second, and tells each second that ended.
[[noreturn]] void liveAsStation(HistoryRoom& room, int pipe)
{
    for (int value = 0;;) {
        for (int i = 0; i < ROWS_A_SECOND; ++i)
            room.answer(0, value++ % 30000);
        room.second();
        const char ended = 's';
        if (write(pipe, &ended, 1) != 1) _exit(1);
    }
}

/// @return how many seconds the killed station told
int secondsUntilKilled(HistoryRoom& room, std::mt19937& random)
{
    int ends[2];
    EXPECT_EQ(0, pipe(ends));
    const pid_t child = fork();
    if (child == 0) liveAsStation(room, ends[1]);
    close(ends[1]);
    usleep(std::uniform_int_distribution<useconds_t>(20000, LONGEST_LIFE_US)(random));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    int seconds = 0;
    for (char byte = 0; read(ends[0], &byte, 1) == 1;)
        ++seconds;
    close(ends[0]);
    return seconds;
}

} // namespace

TEST(HistoryKill, LosesAtMostTheLastSecond)
{
    std::random_device seeds;
    const unsigned seed = seeds();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    int all = 0;
    for (int i = 0; i < KILLS; ++i) {
        HistoryRoom room(historyTags(1));
        const int seconds = secondsUntilKilled(room, random);
        all += seconds;
        const auto file = openHistoryFile(room.fileName());
        SqliteStatement check(*file, "PRAGMA integrity_check");
        ASSERT_TRUE(check.next());
        EXPECT_EQ(QByteArray("ok"), check.blob(0));
        check.reset();
        HistoryReader reader(room.fileName());
        const std::vector<HistoryRow> rows = reader.rows(
            {QLatin1String("plc"), QLatin1String("tag0"), 0, room.begin * 2, 1}, 0, 10000000);
        EXPECT_GE(int(rows.size()), seconds * ROWS_A_SECOND);
        EXPECT_LE(int(rows.size()), (seconds + 1) * ROWS_A_SECOND);
        for (size_t row = 0; row < rows.size(); ++row)
            ASSERT_EQ(int(row % 30000), int(rows[row].value));
    }
    EXPECT_GT(all, 0);
}
