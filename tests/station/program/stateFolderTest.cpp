#include "program/stateFolder.h"

#include "program/stationStatus.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>

namespace {

/// Sets a variable of the environment for the time of a test.
class Variable
{
public:
    Variable(const char* name, const char* value) : m_name(name), m_before(qgetenv(name))
    {
        set(QByteArray(value));
    }
    ~Variable()
    {
        set(m_before);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void set(const QByteArray& value) const
    {
        if (value.isEmpty())
            unsetenv(m_name);
        else
            setenv(m_name, value.constData(), 1);
    }

    const char* const m_name;
    const QByteArray m_before;
};

std::string chosen(const char* given, const char* service, const char* state, const char* home)
{
    const Variable first("STATE_DIRECTORY", service);
    const Variable second("XDG_STATE_HOME", state);
    const Variable third("HOME", home);
    try {
        return stateFolderOf(QLatin1String(given)).toStdString();
    } catch (const StationFailure& failure) {
        EXPECT_EQ(STATION_STATE, failure.status);
        return "none";
    }
}

std::string failureOf(const QString& path)
{
    try {
        const StateFolder folder(path);
    } catch (const StationFailure& failure) {
        EXPECT_EQ(STATION_STATE, failure.status);
        return failure.what();
    }
    return "none";
}

} // namespace

TEST(StateFolder, TheGivenOneGoesBeforeThoseOfTheEnvironment)
{
    EXPECT_EQ("given", chosen("given", "/service", "/state", "/home/a"));
    EXPECT_EQ("/service", chosen("", "/service", "/state", "/home/a"));
    EXPECT_EQ("/service", chosen("", "/service:/other", "/state", "/home/a"));
    EXPECT_EQ("/state/kakb-station", chosen("", "", "/state", "/home/a"));
    EXPECT_EQ("/home/a/.local/state/kakb-station", chosen("", "", "", "/home/a"));
    EXPECT_EQ("none", chosen("", "", "", ""));
}

TEST(StateFolder, ARelativePathOfTheEnvironmentIsNone)
{
    EXPECT_EQ("/home/a/.local/state/kakb-station", chosen("", "", "state", "/home/a"));
}

TEST(StateFolder, IsMadeForTheOwnerAlone)
{
    const QTemporaryDir root;
    const QString path = root.filePath(QLatin1String("new/folder"));
    const StateFolder folder(path);
    struct stat found = {};
    ASSERT_EQ(0, stat(QFile::encodeName(path).constData(), &found));
    EXPECT_EQ(mode_t(0700), found.st_mode & 07777U);
    EXPECT_EQ(path + QLatin1String("/history.sqlite"), folder.file("history.sqlite"));
}

TEST(StateFolder, HasOneHolderAtATime)
{
    const QTemporaryDir root;
    {
        const StateFolder holder(root.path());
        EXPECT_EQ("the state folder " + root.path().toStdString() +
                      ": another kakb-station uses it; give each a folder of its own with --state",
                  failureOf(root.path()));
    }
    EXPECT_EQ("none", failureOf(root.path()));
}

TEST(StateFolder, AFileIsNoFolder)
{
    const QTemporaryDir root;
    const QString path = root.filePath(QLatin1String("file"));
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    EXPECT_EQ("the state folder " + path.toStdString() + ": cannot write there: Not a directory",
              failureOf(path));
    EXPECT_NE("none", failureOf(path + QLatin1String("/folder")));
}
