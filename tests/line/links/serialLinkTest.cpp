#include "links/serialLink.h"

#include "links/descriptor.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>

#include <cstdlib>
#include <ostream>
#include <string>

// A serial port that is opened, looked at on a pseudo-terminal.

// A pseudo-terminal keeps neither the number of data bits nor whether there is a parity bit. So the
// program's two calls are looked at: the settings that it asked for are those that it reads back,
// as of a port that keeps them all.

namespace {

enum { AT_MOST_MS = 20000 };

termios asked = {};
int askedDescriptor = -1;

template <typename Function> Function systemFunction(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" int tcsetattr(int descriptor, int when, const termios* settings) noexcept
{
    static const auto set = systemFunction<int (*)(int, int, const termios*)>("tcsetattr");
    asked = *settings;
    askedDescriptor = descriptor;
    return set(descriptor, when, settings);
}

extern "C" int tcgetattr(int descriptor, termios* settings) noexcept
{
    static const auto get = systemFunction<int (*)(int, termios*)>("tcgetattr");
    const int result = get(descriptor, settings);
    if (result == 0 && descriptor == askedDescriptor) *settings = asked;
    return result;
}

namespace {

/// A pseudo-terminal that hands bytes on as they are. The slave is a port, the master what is at
/// the other end of its line.
class SerialLinkTest : public testing::Test
{
protected:
    SerialLinkTest() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        EXPECT_EQ(0, grantpt(m_master.number()));
        EXPECT_EQ(0, unlockpt(m_master.number()));
        char name[100] = {};
        EXPECT_EQ(0, ptsname_r(m_master.number(), name, sizeof name));
        m_path = name;
        askedDescriptor = -1;
        // Held open, so that the line keeps what comes while no link is open.
        m_slave = Descriptor(open(name, O_RDWR | O_NOCTTY | O_CLOEXEC));
        termios raw = {};
        cfmakeraw(&raw);
        EXPECT_EQ(0, tcsetattr(m_slave.number(), TCSANOW, &raw));
    }

    QString device() const
    {
        return QString::fromStdString(m_path);
    }

    /// The bytes are there to be read when this returns.
    void comes(const char* bytes)
    {
        const std::string text = bytes;
        ASSERT_EQ(ssize_t(text.size()), write(m_master.number(), text.data(), text.size()));
        ASSERT_TRUE(isReadable(m_slave.number(), AT_MOST_MS));
    }

    static bool isReadable(int descriptor, int ms)
    {
        pollfd awaited = {descriptor, POLLIN, 0};
        return poll(&awaited, 1, ms) == 1;
    }

private:
    Descriptor m_master;
    Descriptor m_slave;
    std::string m_path;
};

struct AskedLine
{
    const char* name;
    int baud;
    int dataBits;
    LineSettings::Parity parity;
    int stopBits;
    speed_t speed;
    tcflag_t characters; ///< the flags of size, parity and stop bits
};

std::ostream& operator<<(std::ostream& out, const AskedLine& line)
{
    return out << line.name;
}

class SerialLinkSettings : public SerialLinkTest, public testing::WithParamInterface<AskedLine>
{
};

} // namespace

TEST_P(SerialLinkSettings, AreAskedOfThePort)
{
    LineSettings settings;
    settings.baud = GetParam().baud;
    settings.dataBits = GetParam().dataBits;
    settings.parity = GetParam().parity;
    settings.stopBits = GetParam().stopBits;
    const SerialLink link(device(), settings);
    EXPECT_EQ(GetParam().characters, asked.c_cflag & (CSIZE | PARENB | PARODD | CSTOPB));
    EXPECT_EQ(GetParam().speed, cfgetispeed(&asked));
    EXPECT_EQ(GetParam().speed, cfgetospeed(&asked));
}

INSTANTIATE_TEST_SUITE_P(
    , SerialLinkSettings,
    testing::Values(AskedLine{"8N1", 38400, 8, LineSettings::NO_PARITY, 1, B38400, CS8},
                    AskedLine{"8E1", 19200, 8, LineSettings::EVEN_PARITY, 1, B19200, CS8 | PARENB},
                    AskedLine{"8O1", 9600, 8, LineSettings::ODD_PARITY, 1, B9600,
                              CS8 | PARENB | PARODD},
                    AskedLine{"8N2", 38400, 8, LineSettings::NO_PARITY, 2, B38400, CS8 | CSTOPB},
                    AskedLine{"7E1", 38400, 7, LineSettings::EVEN_PARITY, 1, B38400, CS7 | PARENB},
                    AskedLine{"7O2", 1200, 7, LineSettings::ODD_PARITY, 2, B1200,
                              CS7 | PARENB | PARODD | CSTOPB},
                    AskedLine{"6N1", 38400, 6, LineSettings::NO_PARITY, 1, B38400, CS6}));

TEST_F(SerialLinkTest, BytesForAnEarlierHostAreDropped)
{
    comes("late");
    SerialLink link(device(), LineSettings());
    EXPECT_FALSE(isReadable(link.descriptor(), 0));
    comes("new");
    EXPECT_EQ("new", link.read().toStdString());
}
