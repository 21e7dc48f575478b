#ifndef BROKER_ADDRESS_H
#define BROKER_ADDRESS_H

#include <QString>

#include <optional>

/// Where a broker listens.
struct BrokerAddress
{
    QString host;
    quint16 port = 1883;
    bool isEncrypted = false; ///< mqtts: TLS, port 8883 unless given

    /// "mqtt://HOST:PORT" or "mqtts://HOST:PORT".
    QString text() const;
};

bool operator==(const BrokerAddress& a, const BrokerAddress& b);

/// Empty: the text is no mqtt://HOST[:PORT] or mqtts://HOST[:PORT]; brokerProblem() says why. An
/// IPv6 address stands in brackets. No user, path or query: a password in an address is shown by
/// whatever lists the processes.
std::optional<BrokerAddress> brokerAddress(const QString& text);
QString brokerProblem(const QString& text);

#endif
