#include "program/listenAddress.h"

#include <QRegularExpression>

std::optional<ListenAddress> listenAddress(const QString& text)
{
    static const QRegularExpression format(
        QLatin1String("\\A(?:\\[([0-9A-Fa-f:.]+)\\]|((?:[0-9]+\\.){3}[0-9]+)):([0-9]{1,5})\\z"));
    const QRegularExpressionMatch match = format.match(text);
    const QString version6 = match.captured(1);
    ListenAddress listen;
    const QString address = version6.isEmpty() ? match.captured(2) : version6;
    if (!match.hasMatch() || !listen.address.setAddress(address)) return std::nullopt;
    const auto protocol =
        version6.isEmpty() ? QAbstractSocket::IPv4Protocol : QAbstractSocket::IPv6Protocol;
    bool isNumber = false;
    listen.port = match.captured(3).toUShort(&isNumber);
    return isNumber && listen.address.protocol() == protocol ? std::make_optional(listen)
                                                             : std::nullopt;
}

QString listenProblem(const QString& text)
{
    return listenAddress(text)
               ? QString()
               : text + QLatin1String(" is no address such as 127.0.0.1:8480 or [::1]:8480");
}

QString pageUrl(const QHostAddress& address, quint16 port)
{
    const bool hasColons = address.protocol() == QAbstractSocket::IPv6Protocol;
    return QString(QLatin1String(hasColons ? "http://[%1]:%2/" : "http://%1:%2/"))
        .arg(address.toString())
        .arg(port);
}
