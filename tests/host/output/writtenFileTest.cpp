#include "output/writtenFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <future>
#include <string>

namespace {

bool never()
{
    return false;
}

bool always()
{
    return true;
}

/// Limits the size of this program's files, as a full disk does.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes) : m_replaced(std::signal(SIGXFSZ, SIG_IGN))
    {
        EXPECT_EQ(0, getrlimit(RLIMIT_FSIZE, &m_before));
        const rlimit limit = {bytes, m_before.rlim_max};
        EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_replaced);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    using Handler = void (*)(int);

    rlimit m_before = {};
    const Handler m_replaced;
};

struct stat attributesOf(const QString& path)
{
    struct stat found = {};
    EXPECT_EQ(0, lstat(QFile::encodeName(path).constData(), &found)) << path.toStdString();
    return found;
}

std::string problemOf(const QString& path, const QByteArray& bytes, bool (*isToEnd)() = never)
{
    try {
        writeFile(path, bytes, isToEnd);
    } catch (const WriteError& error) {
        return error.what();
    }
    return "written";
}

} // namespace

class WrittenFile : public testing::Test
{
protected:
    QString inFolder(const char* name) const
    {
        return m_folder.filePath(QLatin1String(name));
    }

    QString put(const char* name, const QByteArray& bytes) const
    {
        QFile file(inFolder(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(bytes.size(), file.write(bytes));
        return file.fileName();
    }

    static std::string bytesIn(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll().toStdString();
    }

    /// A device. Root could put a file in its place, so root gets a device in the test's folder.
    QString device(const char* path, const char* name) const
    {
        if (geteuid() != 0) return QLatin1String(path);
        struct stat system = {};
        EXPECT_EQ(0, stat(path, &system));
        const QByteArray own = QFile::encodeName(inFolder(name));
        if (!QFile::exists(inFolder(name))) {
            EXPECT_EQ(0, mknod(own.constData(), S_IFCHR | 0600, system.st_rdev))
                << own.toStdString();
        }
        return inFolder(name);
    }

    QStringList names() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
    }

private:
    QTemporaryDir m_folder;
};

TEST_F(WrittenFile, IsMadeWhenThereIsNone)
{
    writeFile(inFolder("new"), "bytes", never);
    EXPECT_EQ("bytes", bytesIn(inFolder("new")));
}

TEST_F(WrittenFile, KeepsTheModeOfTheOldFile)
{
    const QString path = put("file", "old and longer");
    ASSERT_EQ(0, chmod(QFile::encodeName(path).constData(), 0604));
    writeFile(path, "new", never);
    EXPECT_EQ("new", bytesIn(path));
    EXPECT_EQ(0604u, attributesOf(path).st_mode & 07777u);
}

TEST_F(WrittenFile, KeepsTheOwnerOfTheOldFile)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root may give a file away";
    const QString path = put("file", "old");
    ASSERT_EQ(0, chown(QFile::encodeName(path).constData(), 12345, 23456));
    writeFile(path, "new", never);
    EXPECT_EQ("new", bytesIn(path));
    EXPECT_EQ(12345u, attributesOf(path).st_uid);
    EXPECT_EQ(23456u, attributesOf(path).st_gid);
}

TEST_F(WrittenFile, IsTheFileBehindASymbolicLink)
{
    const QString path = put("file", "old");
    ASSERT_TRUE(QFile::link(path, inFolder("link")));
    ASSERT_TRUE(QFile::link(inFolder("made"), inFolder("dangling")));
    writeFile(inFolder("link"), "new", never);
    writeFile(inFolder("dangling"), "made", never);
    EXPECT_TRUE(S_ISLNK(attributesOf(inFolder("link")).st_mode));
    EXPECT_TRUE(S_ISLNK(attributesOf(inFolder("dangling")).st_mode));
    EXPECT_EQ("new", bytesIn(path));
    EXPECT_EQ("made", bytesIn(inFolder("made")));
}

TEST_F(WrittenFile, OldFileStaysWholeOnAFullDisk)
{
    enum { ROOM = 60 };
    const QString path = put("file", "old");
    {
        const FileSizeLimit limit(ROOM);
        EXPECT_EQ("File too large", problemOf(path, QByteArray(ROOM + 1, 'n')));
    }
    EXPECT_EQ("old", bytesIn(path));
    EXPECT_EQ(QStringList(QLatin1String("file")), names());
}

TEST_F(WrittenFile, DeviceIsWrittenInPlace)
{
    EXPECT_EQ("No space left on device", problemOf(device("/dev/full", "full"), "bytes"));
    EXPECT_EQ("written", problemOf(device("/dev/null", "null"), "bytes"));
    EXPECT_TRUE(S_ISCHR(attributesOf(device("/dev/full", "full")).st_mode));
    EXPECT_TRUE(S_ISCHR(attributesOf(device("/dev/null", "null")).st_mode));
}

TEST_F(WrittenFile, NamedPipeWaitsForItsReader)
{
    const QString path = inFolder("pipe");
    ASSERT_EQ(0, mkfifo(QFile::encodeName(path).constData(), 0600));
    EXPECT_EQ("Interrupted system call", problemOf(path, "bytes", always));
    const QByteArray bytes(100000, 'b'); // more than the pipe holds
    std::future<std::string> read =
        std::async(std::launch::async, [path] { return WrittenFile::bytesIn(path); });
    EXPECT_EQ("written", problemOf(path, bytes));
    EXPECT_EQ(bytes.toStdString(), read.get());
    EXPECT_TRUE(S_ISFIFO(attributesOf(path).st_mode));
}

TEST_F(WrittenFile, OpenFileIsWrittenAtItsPresentPlace)
{
    const QString path = put("file", "");
    const int descriptor = open(QFile::encodeName(path).constData(), O_WRONLY);
    EXPECT_LE(0, descriptor);
    EXPECT_EQ(7, write(descriptor, "before ", 7));
    writeFile(path, "bytes", never);
    writeFile(QLatin1String("/dev/fd/") + QString::number(descriptor), ", more", never);
    EXPECT_EQ(6, write(descriptor, " after", 6));
    close(descriptor);
    EXPECT_EQ("before bytes, more after", bytesIn(path));
}

TEST_F(WrittenFile, FolderIsRefused)
{
    EXPECT_EQ("Is a directory", problemOf(inFolder("."), "bytes"));
    EXPECT_EQ("Not a directory", problemOf(put("file", "old") + QLatin1String("/x"), "bytes"));
    EXPECT_EQ("No such file or directory", problemOf(inFolder("none/x"), "bytes"));
}

TEST_F(WrittenFile, OpenedFileIsEmptiedAndGrows)
{
    const QString path = put("file", "old and longer");
    const auto stream = openFile(path, never);
    EXPECT_EQ("", bytesIn(path));
    std::fputs("new", stream.get());
    ASSERT_EQ(0, std::fflush(stream.get()));
    EXPECT_EQ("new", bytesIn(path));
}

TEST_F(WrittenFile, OpenedDeviceTellsThatItIsFull)
{
    const auto stream = openFile(QLatin1String("/dev/full"), never);
    std::fputs("bytes", stream.get());
    EXPECT_EQ(EOF, std::fflush(stream.get()));
    EXPECT_EQ(ENOSPC, errno);
}
