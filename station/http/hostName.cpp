#include "http/hostName.h"

#include <algorithm>
#include <arpa/inet.h>

namespace {

enum { LONGEST_NAME = 253, HIGHEST_PORT = 65535, HTTP_PORT = 80, HTTPS_PORT = 443 };

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool isNameCharacter(char character)
{
    return isDigit(character) || (character >= 'a' && character <= 'z') || character == '-' ||
           character == '_' || character == '.';
}

/// -1: the text is no port.
int portNumber(const QByteArray& text)
{
    if (text.isEmpty() || text.size() > 5 || !std::all_of(text.begin(), text.end(), isDigit))
        return -1;
    const int number = text.toInt();
    return number <= HIGHEST_PORT ? number : -1;
}

bool isIpv6(const QByteArray& host)
{
    in6_addr address;
    return host.startsWith('[') && host.endsWith(']') &&
           inet_pton(AF_INET6, host.mid(1, host.size() - 2).constData(), &address) == 1;
}

bool isIpv4(const QByteArray& host)
{
    in_addr address;
    return inet_pton(AF_INET, host.constData(), &address) == 1;
}

bool isName(const QByteArray& host)
{
    return !host.isEmpty() && host.size() <= LONGEST_NAME && !host.startsWith('.') &&
           !host.contains("..") && std::all_of(host.begin(), host.end(), isNameCharacter);
}

QByteArray withoutLastDot(QByteArray host)
{
    if (host.endsWith('.')) host.chop(1);
    return host;
}

} // namespace

std::optional<HostAndPort> hostAndPort(const QByteArray& text)
{
    // The colons within brackets are the address's own.
    const int colon = int(text.indexOf(':', std::max(0, int(text.indexOf(']')))));
    HostAndPort found;
    found.host = withoutLastDot((colon < 0 ? text : text.left(colon)).toLower());
    if (colon >= 0) {
        found.port = portNumber(text.mid(colon + 1));
        if (found.port < 0) return std::nullopt;
    }
    if (!isIpv6(found.host) && !isName(found.host)) return std::nullopt;
    return found;
}

bool namesStation(const QByteArray& host, const QStringList& hostNames)
{
    if (isIpv6(host) || isIpv4(host) || host == "localhost" || host.endsWith(".local")) return true;
    return std::any_of(hostNames.begin(), hostNames.end(), [&host](const QString& name) {
        return withoutLastDot(name.toLower().toUtf8()) == host;
    });
}

bool isOwnOrigin(const QByteArray& origin, const HostAndPort& host)
{
    const bool isSecure = origin.startsWith("https://");
    if (!isSecure && !origin.startsWith("http://")) return false;
    const int standardPort = isSecure ? HTTPS_PORT : HTTP_PORT;
    const auto from = hostAndPort(origin.mid(isSecure ? 8 : 7));
    const auto portOf = [standardPort](const HostAndPort& named) {
        return named.port < 0 ? standardPort : named.port;
    };
    return from && from->host == host.host && portOf(*from) == portOf(host);
}
