#include "broker/drivenSession.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <vector>

// Which of a name's addresses gets the session, and which no longer can.

namespace {

const char* const SILENT = "127.0.0.2";
const char* const PEER = "127.0.0.1"; ///< where the peer of DrivenSession listens

/// Keeps a descriptor.
class Socket
{
public:
    Socket() : number(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)) {}
    ~Socket()
    {
        ::close(number);
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    const int number;
};

/// Port of an address that neither takes nor refuses a connection: those that it can keep waiting
/// are there already.
class SilentPort
{
public:
    explicit SilentPort(quint16 port, const char* ip = SILENT)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        inet_pton(AF_INET, ip, &address.sin_addr);
        const auto* const place = reinterpret_cast<const sockaddr*>(&address);
        EXPECT_EQ(0, bind(m_port.number, place, sizeof address));
        EXPECT_EQ(0, listen(m_port.number, 0));
        for (const Socket& one : m_waiting)
            (void)::connect(one.number, place, sizeof address);
    }

private:
    const Socket m_port;
    const std::array<Socket, 3> m_waiting;
};

HostLookup::Resolve finding(const QStringList& addresses)
{
    return [addresses](const QByteArray&) { return HostLookup::Found{addresses, QString()}; };
}

} // namespace

TEST(SessionAddresses, OneThatDoesNotAnswerIsPassedOverBehindThreeSeconds)
{
    enum { PATIENCE_MS = 3000 };
    DrivenSession driven(DrivenSession::named(),
                         finding({QLatin1String(SILENT), QLatin1String(PEER)}));
    const SilentPort silent(driven.peer.port());
    QElapsedTimer time;
    time.start();
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    EXPECT_GE(time.elapsed(), PATIENCE_MS);
    EXPECT_TRUE(driven.told.isEmpty()) << driven.told.join(' ').data();
}

// The will holds a number that only one CONNECT may hold.
TEST(SessionAddresses, NoOtherOneIsTriedOnceAConnectionIsMade)
{
    DrivenSession driven(DrivenSession::named(),
                         finding({QLatin1String(PEER), QLatin1String(PEER)}));
    driven.session.connect(driven.address("plant"), DrivenSession::will());
    driven.until([&] { return !driven.peer.taken().isEmpty(); });
    driven.peer.hangUp();
    driven.until([&] { return driven.hasTold("ended sent ") || driven.peer.hasClient(); });
    EXPECT_TRUE(driven.hasTold("ended sent "));
    EXPECT_FALSE(driven.peer.hasClient());
}

/// Who tries has a patience of 10 s, and begins anew then.
TEST(SessionAddresses, ThoseThatDidNotAnswerAreTriedBehindTheOthers)
{
    enum { ADDRESSES_OF_A_TRY = 3, PATIENCE_MS = 3000 };
    const QStringList silentOnes{QLatin1String("127.0.0.2"), QLatin1String("127.0.0.3"),
                                 QLatin1String("127.0.0.4"), QLatin1String("127.0.0.5")};
    DrivenSession driven(DrivenSession::named(),
                         finding(silentOnes + QStringList(QLatin1String(PEER))));
    std::vector<std::unique_ptr<SilentPort>> silent;
    for (const QString& ip : silentOnes)
        silent.push_back(
            std::make_unique<SilentPort>(driven.peer.port(), ip.toLatin1().constData()));
    const auto isAsked = [&driven] { return driven.session.awaited().events == POLLOUT; };
    for (int tries = 0; tries < 3 && !driven.peer.hasClient(); ++tries) {
        driven.session.connect(driven.address("plant"), DrivenSession::will());
        driven.until([&] { return isAsked() || driven.peer.hasClient(); });
        for (int i = 0; i < ADDRESSES_OF_A_TRY && !driven.peer.hasClient(); ++i) {
            driven.clock.sleepMs(PATIENCE_MS);
            driven.session.drive(0);
        }
        if (!driven.peer.hasClient()) driven.session.drop();
    }
    EXPECT_TRUE(driven.peer.hasClient());
}
