#ifndef LISTEN_ADDRESS_H
#define LISTEN_ADDRESS_H

#include <QHostAddress>
#include <QString>

#include <optional>

enum { DEFAULT_LISTEN_PORT = 8480 };

/// Where the station's HTTP server listens.
struct ListenAddress
{
    QHostAddress address = QHostAddress(QHostAddress::LocalHost);
    quint16 port = DEFAULT_LISTEN_PORT; ///< 0: any free port

    /// Whether only programs of this machine reach it.
    bool isLoopback() const
    {
        return address.isLoopback();
    }
};

inline bool operator==(const ListenAddress& a, const ListenAddress& b)
{
    return a.address == b.address && a.port == b.port;
}

/// Reads "127.0.0.1:8480" or "[::1]:8480": an IP address, not a name, and a port of 0 to 65535.
/// Empty: the text is none.
std::optional<ListenAddress> listenAddress(const QString& text);

/// Why a text is no such address, in words; empty: it is one.
QString listenProblem(const QString& text);

/// The page's address: "http://127.0.0.1:8480/", "http://[::1]:8480/".
QString pageUrl(const QHostAddress& address, quint16 port);

#endif
