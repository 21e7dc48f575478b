#include "program/hostProgram.h"

#include "builtDriver.h"
#include "plan/typedAddress.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>

// The frames that come after the verb has last looked for news: they are in the capture, too, and a
// capture without them is not told as done.

namespace {

enum { PATIENCE_MS = 30000, STEP_MS = 5 };

/// Files of this process can grow no further than to `bytes`, as on a full device.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN); // a write fails instead
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = rlim_t(bytes);
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
    }

private:
    rlimit m_before = {};
};

class LastFramesTest : public testing::Test
{
protected:
    LastFramesTest()
    {
        options.simulator = KAKB_SIMULATOR_FILE;
        options.pcap = m_folder.filePath(QStringLiteral("all.pcap")).toStdString();
    }

    qint64 captured() const
    {
        return QFileInfo(QString::fromStdString(options.pcap)).size();
    }

    /// Reads a tag, and looks for no news: its frames are not in the capture yet.
    void readUnseen(HostProgram& host)
    {
        host.connect();
        host.link().read(host.newJob(), host.blocks());
        QElapsedTimer waiting;
        waiting.start();
        while (!host.values().tags()[0].good && waiting.elapsed() < PATIENCE_MS)
            QThread::msleep(STEP_MS);
        ASSERT_TRUE(host.values().tags()[0].good);
    }

    const std::vector<Tag> tags = {tagFromAddress(QStringLiteral("MW100"), driver())};
    LinkOptions options;

private:
    QTemporaryDir m_folder;
};

TEST_F(LastFramesTest, AreWrittenBeforeTheStatusIsDecided)
{
    HostProgram host(driver(), options, tags, LinkRun::ON_REQUEST);
    const qint64 before = captured();
    EXPECT_EQ(EXIT_DONE, host.run([&] {
        readUnseen(host);
        EXPECT_EQ(before, captured());
        return EXIT_DONE;
    }));
    EXPECT_GT(captured(), before);
}

TEST_F(LastFramesTest, ThatCannotBeWrittenAreAFailure)
{
    HostProgram host(driver(), options, tags, LinkRun::ON_REQUEST);
    std::optional<FileSizeLimit> full;
    const auto work = [&] {
        readUnseen(host);
        full.emplace(captured());
        return EXIT_DONE;
    };
    EXPECT_THROW(host.run(work), PcapError);
}

TEST_F(LastFramesTest, ThatCannotBeWrittenKeepTheStatusOfAFailedVerb)
{
    HostProgram host(driver(), options, tags, LinkRun::ON_REQUEST);
    std::optional<FileSizeLimit> full;
    EXPECT_EQ(EXIT_REFUSED, host.run([&]() -> ExitStatus {
        readUnseen(host);
        full.emplace(captured());
        throw VerbFailure(EXIT_REFUSED, QStringLiteral("refused"));
    }));
}

} // namespace
