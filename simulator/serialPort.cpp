#include "serialPort.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>

namespace {

struct SpeedRow
{
    int baud;
    speed_t speed;
};

const SpeedRow SPEEDS[] = {
    {300, B300},       {600, B600},       {1200, B1200},     {2400, B2400},   {4800, B4800},
    {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600}, {115200, B115200},
    {230400, B230400}, {460800, B460800}, {921600, B921600},
};

} // namespace

SerialPort::SerialPort(const std::string& device, int baud) : m_device(device)
{
    m_descriptor.reset(open(device.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (m_descriptor.get() < 0) failOpening(device);
    if (!isatty(m_descriptor.get())) throw LinkError(device + ": not a serial port");
    lock();
    configure(baud);
    // Last: a terminal that another program keeps open would stay locked after a failure.
    ioctl(m_descriptor.get(), TIOCEXCL);
}

SerialPort::~SerialPort()
{
    ioctl(m_descriptor.get(), TIOCNXCL);
}

/// Ahead of any change of the port: another program may be using it. flock keeps out the programs
/// that look for it, TIOCEXCL every program but the administrator's.
void SerialPort::lock()
{
    if (flock(m_descriptor.get(), LOCK_EX | LOCK_NB) != 0) failOpening(m_device);
}

void SerialPort::configure(int baud)
{
    termios settings = {};
    if (tcgetattr(m_descriptor.get(), &settings) != 0) failLink(m_device);
    cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    settings.c_cflag &= ~tcflag_t(CSTOPB | CRTSCTS);
    // With VMIN 0 a read without a byte would return 0, which means here that the device is gone.
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    for (const SpeedRow& row : SPEEDS) {
        if (row.baud != baud) continue;
        cfsetspeed(&settings, row.speed);
        if (tcsetattr(m_descriptor.get(), TCSANOW, &settings) != 0) failLink(m_device);
        tcflush(m_descriptor.get(), TCIOFLUSH);
        return;
    }
    throw LinkError(m_device + ": " + std::to_string(baud) + " baud is no rate of serial ports");
}
