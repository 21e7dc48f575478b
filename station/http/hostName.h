#ifndef HOST_NAME_H
#define HOST_NAME_H

#include <QByteArray>
#include <QStringList>

#include <optional>

/// The host and the port of a `Host` header or of an origin.
struct HostAndPort
{
    QByteArray host; ///< in lower case, an IPv6 address in its brackets, no dot at its end
    int port = -1;   ///< -1: none is named
};

/// Reads "panel.local", "192.168.0.7:8480", "[::1]:8480". Empty: the text is none of that kind.
std::optional<HostAndPort> hostAndPort(const QByteArray& text);

/// Whether a host of hostAndPort() may name the station: an IP address, localhost, a name that ends
/// in .local, or one of the names given. Any other name may be somebody else's, which leads a
/// browser here in order to read the answers as its own.
bool namesStation(const QByteArray& host, const QStringList& hostNames);

/// Whether an `Origin` is the page of this `Host`. A port that is not named is that of the origin's
/// scheme.
bool isOwnOrigin(const QByteArray& origin, const HostAndPort& host);

#endif
