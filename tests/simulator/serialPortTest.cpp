#include "hexText.h"
#include "openLine.h"
#include "terminalPair.h"

#include <gtest/gtest.h>

#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace {

const char* const REQUEST = "11 03 00 13 0D 0A 76 87"; // with bytes that a terminal would change

std::unique_ptr<LineEnd> portAt(const std::string& device, int baud)
{
    SimulatorOptions options;
    options.serialDevice = device;
    options.line.baud = baud;
    return openLine(options);
}

/// What opening the port says; empty: it was opened.
std::string troubleOf(const std::string& device, int baud)
{
    try {
        portAt(device, baud);
    } catch (const LinkError& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST(SerialPort, IsSetToTheGivenBaudRate)
{
    struct
    {
        int baud;
        speed_t speed;
    } const rows[] = {
        {300, B300},       {600, B600},       {1200, B1200},     {2400, B2400},   {4800, B4800},
        {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600}, {115200, B115200},
        {230400, B230400}, {460800, B460800}, {921600, B921600},
    };
    const TerminalPair terminal;
    for (const auto& row : rows) {
        const std::unique_ptr<LineEnd> port = portAt(terminal.path(), row.baud);
        EXPECT_EQ(terminal.path(), port->address());
        const termios settings = terminal.settings();
        EXPECT_EQ(row.speed, cfgetospeed(&settings)) << row.baud;
        EXPECT_EQ(row.speed, cfgetispeed(&settings)) << row.baud;
    }
}

TEST(SerialPort, HasOneStopBitAndNoFlowControl)
{
    const TerminalPair terminal;
    const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
    const tcflag_t flags = terminal.settings().c_cflag;
    EXPECT_EQ(0u, flags & (CSTOPB | CRTSCTS | PARENB));
    EXPECT_EQ(tcflag_t(CS8 | CLOCAL | CREAD), flags & (CSIZE | CLOCAL | CREAD));
}

TEST(SerialPort, BytesPassUnchangedBothWays)
{
    TerminalPair terminal;
    const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
    terminal.send(bytesOf(REQUEST));
    EXPECT_EQ(REQUEST, hexOf(port->receive()));
    EXPECT_EQ("", hexOf(port->receive())); // nothing has come: no fault
    EXPECT_EQ("", hexOf(terminal.received()));
    port->send(bytesOf(REQUEST));
    EXPECT_EQ(REQUEST, hexOf(terminal.received()));
}

TEST(SerialPort, OpeningDiscardsEarlierBytes)
{
    TerminalPair terminal;
    terminal.send(bytesOf("0A"));
    const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
    terminal.send(bytesOf(REQUEST));
    EXPECT_EQ(REQUEST, hexOf(port->receive()));
}

TEST(SerialPort, UnpluggedAdapterIsALostLink)
{
    TerminalPair terminal;
    const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
    terminal.unplug();
    EXPECT_THROW(port->receive(), LinkError);
    EXPECT_THROW(port->send({1}), LinkError);
}

TEST(SerialPort, OpeningFailureNamesDeviceAndReason)
{
    const TerminalPair terminal;
    EXPECT_EQ(terminal.path() + ": 12345 baud is no rate of serial ports",
              troubleOf(terminal.path(), 12345));
    EXPECT_EQ("/dev/null: not a serial port", troubleOf("/dev/null", 9600));
    EXPECT_EQ("/dev/none: No such file or directory", troubleOf("/dev/none", 9600));
}

TEST(SerialPort, PortInUseIsRefusedAndLeftAsItIs)
{
    const TerminalPair terminal;
    const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
    EXPECT_EQ(terminal.path() + ": in use by another program", troubleOf(terminal.path(), 1200));
    const termios settings = terminal.settings();
    EXPECT_EQ(speed_t(B9600), cfgetospeed(&settings));
}

// kakb-host and terminal programs lock a port in this way.
TEST(SerialPort, PortThatAnotherProgramHasLockedIsInUse)
{
    const TerminalPair terminal;
    UniqueDescriptor other(open(terminal.path().c_str(), O_RDWR | O_NOCTTY));
    ASSERT_EQ(0, flock(other.get(), LOCK_EX | LOCK_NB));
    EXPECT_EQ(terminal.path() + ": in use by another program", troubleOf(terminal.path(), 9600));
    other.reset();
    EXPECT_EQ("", troubleOf(terminal.path(), 9600));
}

TEST(SerialPort, PortIsExclusiveWhileItIsOpen)
{
    const TerminalPair terminal;
    const auto isExclusive = [&terminal] {
        const UniqueDescriptor looking(open(terminal.path().c_str(), O_RDWR | O_NOCTTY));
        int exclusive = 0;
        return looking.get() < 0 ||
               (ioctl(looking.get(), TIOCGEXCL, &exclusive) == 0 && exclusive != 0);
    };
    {
        const std::unique_ptr<LineEnd> port = portAt(terminal.path(), 9600);
        EXPECT_TRUE(isExclusive());
    }
    EXPECT_FALSE(isExclusive());
}
