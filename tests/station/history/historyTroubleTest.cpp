// Trouble with the history's file: told once, never lasting longer than its reason.
#include "historyRoom.h"

#include "history/sqliteFile.h"
#include "machine/unreadStandardError.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <sys/mount.h>
#include <sys/resource.h>

namespace {

void writeFile(const QString& name, const QByteArray& bytes)
{
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(bytes.size(), file.write(bytes));
}

QByteArray fileBytes(const QString& name)
{
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

QStringList asideFiles(const HistoryRoom& room)
{
    return QDir(room.folder.path()).entryList({QLatin1String("history.sqlite.broken-*")});
}

/// Seconds with a value that counts up, and what standard error says meanwhile.
std::string toldIn(HistoryRoom& room, int seconds, int& value)
{
    testing::internal::CaptureStderr();
    for (int i = 0; i < seconds; ++i) {
        room.answer(0, value++);
        room.second();
    }
    return testing::internal::GetCapturedStderr();
}

size_t count(const std::string& text, const std::string& part)
{
    size_t found = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

std::string numbers(int from, int until)
{
    std::string text;
    for (int i = from; i < until; ++i)
        text += (i > from ? " " : "") + std::to_string(i);
    return text;
}

/// Makes writes beyond a size fail, as a full disk does.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before = {};
    void (*m_handler)(int);
};

} // namespace

TEST(HistoryTrouble, OfAFolderThatCannotBeMadeIsToldOnceAndMended)
{
    HistoryRoom room(historyTags(1));
    const QString folder = room.folder.path();
    room.folder.remove();
    writeFile(folder, "in the way");
    int value = 0;
    EXPECT_EQ(1u, count(toldIn(room, 35, value), "the history is not written: "));
    EXPECT_FALSE(room.writer->standing().trouble.isEmpty());
    QFile::remove(folder);
    EXPECT_EQ(1u, count(toldIn(room, 11, value), "the history is written again"));
    EXPECT_TRUE(room.writer->standing().trouble.isEmpty());
    EXPECT_EQ(numbers(0, 46), room.lasts(0, 46000, 46));
    EXPECT_EQ(0, room.writer->standing().dropped);
}

/// Else no row would be written any more, of whatever the file's trouble was.
TEST(HistoryTrouble, IsToldWithoutWaitingForAReader)
{
    HistoryRoom room(historyTags(1));
    const QString folder = room.folder.path();
    room.folder.remove();
    writeFile(folder, "in the way");
    const UnreadStandardError unread;
    std::future<void> turn = std::async(std::launch::async, [&room] { room.turn(); });
    EXPECT_EQ(std::future_status::ready, turn.wait_for(std::chrono::seconds(5)));
    unread.read();
    turn.get();
    EXPECT_FALSE(room.writer->standing().trouble.isEmpty());
    QFile::remove(folder);
}

TEST(HistoryTrouble, IsNotTriedAgainBeforeTenSeconds)
{
    HistoryRoom room(historyTags(1));
    const QString folder = room.folder.path();
    room.folder.remove();
    writeFile(folder, "in the way");
    room.second();
    QFile::remove(folder);
    room.seconds(9);
    EXPECT_FALSE(room.writer->standing().trouble.isEmpty());
    room.second();
    EXPECT_TRUE(room.writer->standing().trouble.isEmpty());
}

TEST(HistoryTrouble, OfABrokenFileMovesItAside)
{
    HistoryRoom room(historyTags(1));
    const QByteArray broken(20000, 'x');
    writeFile(room.fileName(), broken);
    int value = 0;
    const std::string told = toldIn(room, 3, value);
    EXPECT_EQ(1u, count(told, "the history was broken")) << told;
    ASSERT_EQ(QStringList{QLatin1String("history.sqlite.broken-20231114T221321Z")},
              asideFiles(room));
    EXPECT_EQ(broken, fileBytes(room.folder.filePath(asideFiles(room).at(0))));
    EXPECT_TRUE(room.writer->standing().trouble.isEmpty());
    EXPECT_EQ("0 1 2", room.lasts(0, 3000, 3));
}

TEST(HistoryTrouble, ThatAReaderFindsMovesTheFileAsideToo)
{
    HistoryRoom room(historyTags(2));
    int value = 0;
    room.answer(1, 77);
    toldIn(room, 3, value);
    {
        SqliteFile file(room.fileName(), SqliteFile::READING);
        file.execute("PRAGMA query_only = 0; INSERT INTO packs VALUES (1, 1, 0, 1, x'80');"
                     "INSERT INTO spans SELECT id, 4, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0 FROM series;"
                     "INSERT INTO spans SELECT id, 3, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0 FROM series;"
                     "INSERT INTO spans SELECT id, 2, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0 FROM series;"
                     "INSERT INTO spans SELECT id, 1, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0 FROM series;"
                     "INSERT INTO spans SELECT id, 0, 0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0 FROM series");
    }
    const HistoryQuery query{QLatin1String("plc"), QLatin1String("tag0"), room.begin,
                             room.begin + 3000, 3};
    EXPECT_FALSE(room.reader->buckets(query).at(0).isGood);
    EXPECT_EQ(1u, count(toldIn(room, 3, value), "the history was broken"));
    EXPECT_EQ(1, asideFiles(room).size());
    EXPECT_EQ("- - - 3 4 5", room.lasts(0, 6000, 6));
    EXPECT_TRUE(room.reader
                    ->buckets({QLatin1String("plc"), QLatin1String("tag0"), room.begin + 5000,
                               room.begin + 6000, 1})
                    .at(0)
                    .isGood);
}

TEST(HistoryTrouble, OfAFileOfANewerStationLeavesItAlone)
{
    HistoryRoom room(historyTags(1));
    room.second();
    room.kill();
    SqliteFile(room.fileName(), SqliteFile::CREATE)
        .execute("PRAGMA user_version = 3; PRAGMA journal_mode = DELETE");
    const QByteArray before = fileBytes(room.fileName());
    room.startStation();
    int value = 0;
    const std::string told = toldIn(room, 25, value);
    EXPECT_EQ(1u, count(told, "newer kakb-station")) << told;
    EXPECT_EQ(before, fileBytes(room.fileName()));
    EXPECT_TRUE(asideFiles(room).isEmpty());
}

TEST(HistoryTrouble, OfAnotherProgramsDatabaseLeavesItAlone)
{
    HistoryRoom room(historyTags(1));
    SqliteFile(room.fileName(), SqliteFile::CREATE).execute("CREATE TABLE theirs (a)");
    const QByteArray before = fileBytes(room.fileName());
    int value = 0;
    EXPECT_EQ(1u, count(toldIn(room, 25, value), "another program"));
    EXPECT_EQ(before, fileBytes(room.fileName()));
    EXPECT_TRUE(asideFiles(room).isEmpty());
}

TEST(HistoryTrouble, OfADiskThatIsFullLosesNoRowAndIsMended)
{
    HistoryRoom room(historyTags(1));
    int value = 0;
    toldIn(room, 5, value);
    {
        const FileSizeLimit full(4096);
        EXPECT_EQ(1u, count(toldIn(room, 25, value), "the history is not written: "));
    }
    EXPECT_EQ(1u, count(toldIn(room, 11, value), "the history is written again"));
    EXPECT_EQ(numbers(0, 41), room.lasts(0, 41000, 41));
    EXPECT_TRUE(asideFiles(room).isEmpty());
}

TEST(HistoryTrouble, OfARealDiskThatIsFullIsMended)
{
    HistoryRoom room(historyTags(1));
    if (mount("none", qPrintable(room.folder.path()), "tmpfs", 0, "size=1m") != 0)
        GTEST_SKIP() << "needs the right to mount a file system";
    int value = 0;
    toldIn(room, 2, value);
    QFile filler(room.folder.filePath(QLatin1String("filler")));
    EXPECT_TRUE(filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (filler.write(QByteArray(4096, 'x')) == 4096)
        ;
    filler.close();
    EXPECT_EQ(1u, count(toldIn(room, 60, value), "the history is not written: "));
    filler.remove();
    EXPECT_EQ(1u, count(toldIn(room, 11, value), "the history is written again"));
    EXPECT_EQ(numbers(0, 73), room.lasts(0, 73000, 73));
    room.kill();
    umount2(qPrintable(room.folder.path()), MNT_DETACH);
}

TEST(HistoryTrouble, ThatLastsLongCountsTheRowsThatFoundNoRoom)
{
    HistoryRoom room(historyTags(1));
    room.cap.waitingRows = 10;
    room.kill();
    room.startStation();
    int value = 0;
    toldIn(room, 5, value);
    {
        const FileSizeLimit full(4096);
        toldIn(room, 30, value);
    }
    toldIn(room, 15, value);
    const int dropped = int(room.writer->standing().dropped);
    EXPECT_GT(dropped, 10);
    EXPECT_LT(dropped, 30);
    const std::string lasts = room.lasts(0, 50000, 50);
    EXPECT_EQ(0u, lasts.find(numbers(0, 15))) << lasts;
    EXPECT_NE(std::string::npos, lasts.find("- - - - - - - - - - -")) << lasts;
    EXPECT_NE(std::string::npos, lasts.find(numbers(45, 50))) << lasts;
}

TEST(HistoryTrouble, OfAFileThatSomebodyDeletedMakesAnother)
{
    HistoryRoom room(historyTags(2));
    int value = 0;
    const auto secondsWithBoth = [&](int seconds) {
        for (int i = 0; i < seconds; ++i) {
            room.answer(1, 77);
            toldIn(room, 1, value);
        }
    };
    secondsWithBoth(3);
    room.buckets(0, 3000, 3);
    QFile::remove(room.fileName());
    secondsWithBoth(4);
    EXPECT_EQ("- - - 3 4 5 6", room.lasts(0, 7000, 7));
    // This value never changes: it is in the new file because all values are written again.
    EXPECT_EQ("77 77 77", room.lasts(4000, 7000, 3, 1));
}
