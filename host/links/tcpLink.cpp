#include "links/tcpLink.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

enum {
    CONNECT_TIMEOUT_MS = 3000,
    WRITE_TIMEOUT_MS = 5000,
    UNACKNOWLEDGED_MS = 5000,
    KEEPALIVE_AFTER_S = 2,
    KEEPALIVE_EVERY_S = 1,
    KEEPALIVE_COUNT = 3
};

void setTcpOption(int socket, int option, int value)
{
    setsockopt(socket, IPPROTO_TCP, option, &value, sizeof value);
}

} // namespace

TcpLink::TcpLink(const QString& host, int port)
    : m_name(QString(QLatin1String("%1, port %2")).arg(host).arg(port))
{
    m_socket.connectToHost(host, static_cast<quint16>(port));
    if (!m_socket.waitForConnected(CONNECT_TIMEOUT_MS)) throw error();
    noticeDeadPeers();
}

void TcpLink::noticeDeadPeers()
{
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket.setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    setTcpOption(descriptor(), TCP_KEEPIDLE, KEEPALIVE_AFTER_S);
    setTcpOption(descriptor(), TCP_KEEPINTVL, KEEPALIVE_EVERY_S);
    setTcpOption(descriptor(), TCP_KEEPCNT, KEEPALIVE_COUNT);
    setTcpOption(descriptor(), TCP_USER_TIMEOUT, UNACKNOWLEDGED_MS);
}

LinkError TcpLink::error() const
{
    return LinkError((m_name + QLatin1String(": ") + m_socket.errorString()).toStdString());
}

void TcpLink::write(const QByteArray& bytes)
{
    if (m_socket.write(bytes) != bytes.size()) throw error();
    m_socket.flush();
    if (m_socket.bytesToWrite() > 0 && !m_socket.waitForBytesWritten(WRITE_TIMEOUT_MS))
        throw error();
}

QByteArray TcpLink::read()
{
    m_socket.waitForReadyRead(0);
    QByteArray bytes = m_socket.readAll();
    if (bytes.isEmpty() && m_socket.state() != QAbstractSocket::ConnectedState) throw error();
    return bytes;
}

int TcpLink::descriptor() const
{
    return int(m_socket.socketDescriptor());
}
