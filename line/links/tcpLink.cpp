#include "links/tcpLink.h"

#include "links/descriptorBytes.h"

#include <QEventLoop>
#include <QNetworkProxy>
#include <QSocketNotifier>
#include <QTimer>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <system_error>

namespace {

enum {
    CONNECT_TIMEOUT_MS = 3000,
    UNACKNOWLEDGED_MS = 5000,
    KEEPALIVE_AFTER_S = 2,
    KEEPALIVE_EVERY_S = 1,
    KEEPALIVE_COUNT = 3
};

void noticeDeadPeers(int socket)
{
    const struct
    {
        int level;
        int option;
        int value;
    } options[] = {{IPPROTO_TCP, TCP_NODELAY, 1},
                   {SOL_SOCKET, SO_KEEPALIVE, 1},
                   {IPPROTO_TCP, TCP_KEEPIDLE, KEEPALIVE_AFTER_S},
                   {IPPROTO_TCP, TCP_KEEPINTVL, KEEPALIVE_EVERY_S},
                   {IPPROTO_TCP, TCP_KEEPCNT, KEEPALIVE_COUNT},
                   {IPPROTO_TCP, TCP_USER_TIMEOUT, UNACKNOWLEDGED_MS}};
    for (const auto& one : options)
        setsockopt(socket, one.level, one.option, &one.value, sizeof one.value);
}

bool isOver(QAbstractSocket::SocketState connecting)
{
    return connecting == QAbstractSocket::ConnectedState ||
           connecting == QAbstractSocket::UnconnectedState;
}

std::atomic<bool> lookupLeftBehind{false};

} // namespace

TcpLink::TcpLink(const QString& host, int port)
    : TcpLink(host, port, *std::make_unique<Cancellation>())
{
}

TcpLink::TcpLink(const QString& host, int port, Cancellation& cancellation)
    : m_name(QString(QLatin1String("%1, port %2")).arg(host, QString::number(port)))
{
    connectTo(host, port, cancellation);
    if (m_socket.state() != QAbstractSocket::ConnectedState) throw error(reasonFor(cancellation));
    noticeDeadPeers(descriptor());
}

bool TcpLink::hasLeftLookupBehind()
{
    return lookupLeftBehind;
}

/// Events are handled only in here; afterwards Qt's notifiers are silent and read nothing ahead.
void TcpLink::connectTo(const QString& host, int port, const Cancellation& cancellation)
{
    QEventLoop loop;
    const auto quitWhenOver = [&loop](QAbstractSocket::SocketState state) {
        if (isOver(state)) loop.quit();
    };
    QObject::connect(&m_socket, &QTcpSocket::stateChanged, &loop, quitWhenOver);
    QTimer limit;
    limit.setSingleShot(true);
    limit.setTimerType(Qt::PreciseTimer);
    QObject::connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    limit.start(CONNECT_TIMEOUT_MS);
    // Qt 5.15 and 6 have no other spelling of this signal in common.
    const QSocketNotifier asked(cancellation.descriptor(), QSocketNotifier::Read);
    QObject::connect(&asked, SIGNAL(activated(int)), &loop, SLOT(quit()));

    m_socket.setProxy(QNetworkProxy::NoProxy); // those of the desktop are for the web
    m_socket.connectToHost(host, static_cast<quint16>(port));
    if (!isOver(m_socket.state())) loop.exec();
    if (m_socket.state() == QAbstractSocket::HostLookupState) lookupLeftBehind = true;
}

/// Why it is not connected.
QString TcpLink::reasonFor(const Cancellation& cancellation) const
{
    if (isOver(m_socket.state())) return m_socket.errorString();
    if (cancellation.isAsked()) return QLatin1String("interrupted");
    if (m_socket.state() == QAbstractSocket::HostLookupState)
        return QLatin1String("the name lookup takes too long");
    return QLatin1String("Connection timed out");
}

LinkError TcpLink::error(const QString& reason) const
{
    return LinkError((m_name + QLatin1String(": ") + reason).toStdString());
}

LinkError TcpLink::systemError(int number) const
{
    if (number == ENODATA) return error(QLatin1String("the peer closed the connection"));
    return error(QString::fromStdString(std::generic_category().message(number)));
}

/// A peer that has hung up is no reason for a signal.
void TcpLink::write(const QByteArray& bytes)
{
    const WriteSome sendSome = [](int socket, const void* some, size_t count) {
        return send(socket, some, count, MSG_NOSIGNAL);
    };
    if (const int failure = writeAll(descriptor(), bytes, sendSome)) throw systemError(failure);
}

QByteArray TcpLink::read()
{
    QByteArray bytes;
    if (const int failure = readAvailable(descriptor(), bytes)) throw systemError(failure);
    return bytes;
}

int TcpLink::descriptor() const
{
    return int(m_socket.socketDescriptor());
}
