#include "program/serviceManager.h"

#include <QByteArray>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <ctime>

namespace {

enum { LONGEST_MESSAGE = 200 };

qint64 monotonicMicroseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

/// A service manager that listens at a place: a path, or an abstract name with @.
class Manager
{
public:
    explicit Manager(const QByteArray& place)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, place.constData(), size_t(place.size()));
        if (place.startsWith('@')) address.sun_path[0] = '\0';
        const size_t length = offsetof(sockaddr_un, sun_path) + size_t(place.size());
        m_isBound = ::bind(m_socket, reinterpret_cast<sockaddr*>(&address), socklen_t(length)) == 0;
        qputenv("NOTIFY_SOCKET", place);
    }

    ~Manager()
    {
        qunsetenv("NOTIFY_SOCKET");
        ::close(m_socket);
    }

    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    bool isBound() const
    {
        return m_isBound;
    }

    /// The next message. Empty: none has come.
    QByteArray message() const
    {
        char bytes[LONGEST_MESSAGE];
        const ssize_t size = ::recv(m_socket, bytes, sizeof bytes, MSG_DONTWAIT);
        return size < 0 ? QByteArray() : QByteArray(bytes, int(size));
    }

private:
    const int m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    bool m_isBound = false;
};

QByteArray abstractName()
{
    return "@kakb-manager-of-" + QByteArray::number(qint64(::getpid()));
}

} // namespace

TEST(ServiceManager, HearsAtAPathThatTheStationIsReadyAndStops)
{
    const QTemporaryDir folder;
    const Manager manager(folder.filePath(QLatin1String("notify")).toLocal8Bit());
    ASSERT_TRUE(manager.isBound());
    tellReady();
    tellStopping();
    EXPECT_EQ(manager.message(), "READY=1");
    EXPECT_EQ(manager.message(), "STOPPING=1");
    EXPECT_EQ(manager.message(), "");
}

TEST(ServiceManager, HearsAtAnAbstractName)
{
    const Manager manager(abstractName());
    ASSERT_TRUE(manager.isBound());
    tellReady();
    EXPECT_EQ(manager.message(), "READY=1");
}

TEST(ServiceManager, HearsWhenTheConfigurationIsReadAgain)
{
    const Manager manager(abstractName());
    ASSERT_TRUE(manager.isBound());
    const qint64 before = monotonicMicroseconds();
    tellReloading();
    const QByteArray message = manager.message();
    const QByteArray start("RELOADING=1\nMONOTONIC_USEC=");
    ASSERT_TRUE(message.startsWith(start)) << message.constData();
    const qint64 time = message.mid(start.size()).toLongLong();
    EXPECT_GE(time, before);
    EXPECT_LE(time, monotonicMicroseconds());
}

TEST(ServiceManager, IsNotNeeded)
{
    const Manager manager(abstractName());
    for (const QByteArray& place :
         {QByteArray(), QByteArray("notify"), QByteArray("vsock:2:1"),
          QByteArray("/").append(QByteArray(200, 'a')), QByteArray("/nobody/listens/here")}) {
        qputenv("NOTIFY_SOCKET", place);
        tellReady();
    }
    EXPECT_EQ(manager.message(), "");
}
