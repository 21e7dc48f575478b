#include "broker/brokerAddress.h"

#include "http/hostName.h"

#include <QStringList>

namespace {

enum { PLAIN_PORT = 1883, TLS_PORT = 8883 };

const QLatin1String PLAIN("mqtt://"), TLS("mqtts://");

/// What stands behind the scheme; empty: there is no scheme, or nothing behind it.
QString behindScheme(const QString& text)
{
    for (const QLatin1String& scheme : {PLAIN, TLS})
        if (text.startsWith(scheme)) return text.mid(scheme.size());
    return QString();
}

QString withoutBrackets(const QByteArray& host)
{
    return QString::fromLatin1(host.startsWith('[') ? host.mid(1, host.size() - 2) : host);
}

} // namespace

QString BrokerAddress::text() const
{
    const bool isIpv6 = host.contains(QLatin1Char(':'));
    return (isEncrypted ? TLS : PLAIN) +
           (isIpv6 ? QLatin1Char('[') + host + QLatin1Char(']') : host) + QLatin1Char(':') +
           QString::number(port);
}

bool operator==(const BrokerAddress& a, const BrokerAddress& b)
{
    return a.host == b.host && a.port == b.port && a.isEncrypted == b.isEncrypted;
}

std::optional<BrokerAddress> brokerAddress(const QString& text)
{
    const auto found = hostAndPort(behindScheme(text).toUtf8());
    if (!found || found->port == 0) return std::nullopt;
    BrokerAddress address;
    address.host = withoutBrackets(found->host);
    address.isEncrypted = text.startsWith(TLS);
    const int standard = address.isEncrypted ? TLS_PORT : PLAIN_PORT;
    address.port = quint16(found->port < 0 ? standard : found->port);
    return address;
}

QString brokerProblem(const QString& text)
{
    if (brokerAddress(text)) return QString();
    const QString rest = behindScheme(text);
    if (rest.isEmpty())
        return QLatin1String("a broker is mqtt://HOST:PORT, or mqtts://HOST:PORT with TLS");
    if (rest.contains(QLatin1Char('@')))
        return QLatin1String("a broker's address takes no user and no password: others see it; "
                             "they have keys of their own");
    if (rest.contains(QLatin1Char('/')) || rest.contains(QLatin1Char('?')))
        return QLatin1String("a broker's address ends with its port");
    return QLatin1String("a broker is a host name or an IP address, an IPv6 address in brackets, "
                         "and a port from 1 to 65535");
}
