// A file that is stored beside its owner's work.
#include "plant/cursorFile.h"

#include "links/descriptor.h"
#include "machine/unreadStandardError.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

namespace {

class CursorFileTest : public testing::Test
{
protected:
    QString name() const
    {
        return m_folder.filePath(QLatin1String("cursor"));
    }

    /// The next content that is written waits until somebody reads this.
    QByteArray makeDiskHang() const
    {
        const QByteArray work = QFile::encodeName(name()) + ".new";
        EXPECT_EQ(0, ::mkfifo(work.constData(), S_IRUSR | S_IWUSR));
        return work;
    }

private:
    const QTemporaryDir m_folder;
};

} // namespace

TEST_F(CursorFileTest, HoldsTheLastContent)
{
    {
        CursorFile file(name());
        EXPECT_FALSE(file.load());
        EXPECT_FALSE(file.isStoring());
        for (int i = 0; i <= 100; ++i)
            file.store(QByteArray::number(i));
    }
    EXPECT_EQ("100", CursorFile(name()).load()->toStdString());
}

TEST_F(CursorFileTest, KeepsNobodyWaitingForASlowDisk)
{
    const QByteArray work = makeDiskHang();
    CursorFile file(name());
    testing::internal::CaptureStderr();
    file.store("a");
    EXPECT_TRUE(file.isStoring());
    const Descriptor disk(::open(work.constData(), O_RDONLY | O_CLOEXEC));
    file.awaitStored();
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty()) << "what hung was not stored";
    file.store("b");
    file.awaitStored();
    EXPECT_EQ("b", file.load().value_or(QByteArray()).toStdString());
}

/// No mark follows one that is not stored, and no end of the station one that waits.
TEST_F(CursorFileTest, TellsItsTroubleWithoutWaitingForAReader)
{
    enum { PATIENCE_MS = 5000 };
    CursorFile file(QLatin1String("/nowhere/cursor"));
    QElapsedTimer timer;
    timer.start();
    const UnreadStandardError unread;
    file.store("a");
    while (file.isStoring() && timer.elapsed() < PATIENCE_MS)
        ::poll(nullptr, 0, 1);
    EXPECT_FALSE(file.isStoring());
    unread.read();
    file.awaitStored();
}

TEST_F(CursorFileTest, WaitsUntilAllIsOnTheDisk)
{
    CursorFile file(name());
    for (int i = 0; i < 10; ++i) {
        file.store(QByteArray::number(i));
        file.awaitStored();
        EXPECT_FALSE(file.isStoring());
        EXPECT_EQ(i, file.load()->toInt());
    }
}
