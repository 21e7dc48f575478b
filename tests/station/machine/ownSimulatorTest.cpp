#include "machine/ownSimulator.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <functional>

// The simulated PLC is started by a script, which notes its process id and can be changed.

namespace {

class OwnSimulatorTest : public testing::Test
{
protected:
    OwnSimulatorTest() : program(folder.filePath(QLatin1String("plc")))
    {
        write("exec " KAKB_SIMULATOR_FILE " \"$@\"");
    }

    /// What the program does from now on.
    void write(const char* commands)
    {
        QFile file(program);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray("#!/bin/sh\necho $$ >> \"$0.started\"\n") + commands + '\n');
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// The process ids of all that were started.
    std::vector<pid_t> started() const
    {
        QFile file(program + QLatin1String(".started"));
        std::vector<pid_t> all;
        if (!file.open(QIODevice::ReadOnly)) return all;
        while (!file.atEnd())
            all.push_back(file.readLine().trimmed().toInt());
        return all;
    }

    std::unique_ptr<OwnSimulator> simulator()
    {
        return std::make_unique<OwnSimulator>(program, QStringList(), [this] { ++ends; });
    }

    std::string failureOf(OwnSimulator& own) const
    {
        try {
            own.open(LineSettings());
        } catch (const LinkError& error) {
            return error.what();
        }
        return std::string();
    }

    static void onAnotherThread(const std::function<void()>& work)
    {
        const std::unique_ptr<QThread> thread(QThread::create(work));
        thread->start();
        thread->wait();
    }

    static bool isThere(pid_t process)
    {
        return ::kill(process, 0) == 0; // also true of one that nobody has waited for
    }

    QTemporaryDir folder;
    const QString program;
    int ends = 0;
};

} // namespace

TEST_F(OwnSimulatorTest, IsStartedOnceAndOpened)
{
    const auto own = simulator();
    EXPECT_NE(nullptr, own->open(LineSettings()));
    EXPECT_EQ(1u, started().size());
    EXPECT_EQ(0, ends);
}

TEST_F(OwnSimulatorTest, IsStartedAgainByAnotherThreadAndNothingOfTheFirstStays)
{
    const auto own = simulator();
    own->open(LineSettings());
    ::kill(started().at(0), SIGKILL);
    onAnotherThread([&] { EXPECT_NE(nullptr, own->open(LineSettings())); });
    ASSERT_EQ(2u, started().size());
    EXPECT_FALSE(isThere(started()[0]));
    EXPECT_TRUE(isThere(started()[1]));
    EXPECT_EQ(1, ends);
}

TEST_F(OwnSimulatorTest, TellsAnEndOnceHoweverOftenTheNextOneDoesNotStart)
{
    const auto own = simulator();
    own->open(LineSettings());
    ::kill(started().at(0), SIGKILL);
    write("exit 1");
    for (int tries = 0; tries < 3; ++tries)
        EXPECT_EQ(program.toStdString() + ": it does not start, or ended at once", failureOf(*own));
    EXPECT_EQ(1, ends);
    EXPECT_EQ(4u, started().size());
    write("exec " KAKB_SIMULATOR_FILE " \"$@\"");
    EXPECT_EQ("", failureOf(*own));
    EXPECT_EQ(1, ends);
    own->open(LineSettings());
    EXPECT_EQ(2, ends);
}

TEST_F(OwnSimulatorTest, ThatCannotBeOpenedHasNotEnded)
{
    write("echo /dev/null; exec cat");
    const auto own = simulator();
    EXPECT_NE("", failureOf(*own));
    EXPECT_NE("", failureOf(*own));
    EXPECT_EQ(2u, started().size());
    write("exec " KAKB_SIMULATOR_FILE " \"$@\"");
    EXPECT_EQ("", failureOf(*own));
    EXPECT_EQ(0, ends);
}

TEST_F(OwnSimulatorTest, LeavesNoProcessBehind)
{
    auto own = simulator();
    own->open(LineSettings());
    onAnotherThread([&] { own->open(LineSettings()); });
    own.reset();
    ASSERT_EQ(2u, started().size());
    for (const pid_t process : started())
        EXPECT_FALSE(isThere(process));
}

TEST_F(OwnSimulatorTest, ThatDoesNotStartAtFirstIsAnError)
{
    write("exit 1");
    EXPECT_THROW(simulator(), LinkError);
}
