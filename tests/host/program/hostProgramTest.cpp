#include "program/hostProgram.h"

#include "builtDriver.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

#include <unistd.h>

#include <chrono>
#include <thread>

// The program around a verb, without a PLC: nothing listens on the port.

namespace {

enum { POLL_MS = 10, SECONDS = 60 };

/// Sends standard error to a file as long as it lives.
class ErrorsInAFile
{
public:
    ErrorsInAFile() : m_errors(dup(STDERR_FILENO))
    {
        m_file.open();
        dup2(m_file.handle(), STDERR_FILENO);
    }
    ~ErrorsInAFile()
    {
        dup2(m_errors, STDERR_FILENO);
        close(m_errors);
    }

    QByteArray text() const
    {
        QFile file(m_file.fileName());
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

private:
    const int m_errors;
    QTemporaryFile m_file;
};

// The driver's functions have no argument for the test's data.
const ErrorsInAFile* errors = nullptr;

/// Plans for as long as the program says nothing.
int planUntilTold(QList<KEY_ADDRESS>& keys)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(SECONDS);
    while (errors->text().isEmpty() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(POLL_MS));
    return int(keys.size());
}

} // namespace

TEST(HostProgram, SaysThatItPlansWhenThisTakesLonger)
{
    DriverLibrary slow(QString::fromLatin1(KAKB_DRIVER_FILE));
    slow.addrMerge = planUntilTold;
    LinkOptions options;
    options.link = "tcp:127.0.0.1,1";
    Tag tag;
    tag.area = QLatin1String("MW");
    tag.number = 3000;
    const ErrorsInAFile file;
    errors = &file;
    HostProgram host(slow, options, {tag, tag, tag}, LinkRun::CYCLIC);
    EXPECT_THROW(host.connect(), VerbFailure);
    EXPECT_EQ("kakb-host: planning 3 tags\n", file.text().toStdString());
}
