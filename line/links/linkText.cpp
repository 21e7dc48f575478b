#include "links/linkText.h"

#include "links/driverParameter.h"

namespace {

enum {
    LOWEST_BAUD = 300,
    HIGHEST_BAUD = 4000000,
    FEWEST_DATA_BITS = 5,
    MOST_DATA_BITS = 8,
    MOST_STOP_BITS = 2,
    HIGHEST_PORT = 65535,
    LINE_PARTS = STOP_BITS_PART - BAUD_PART + 1,
    SERIAL_PARTS = 1 + LINE_PARTS,
    NETWORK_PARTS = 2
};

[[noreturn]] void fail(const QString& sentence)
{
    throw LinkTextError(sentence.toStdString());
}

struct NumberPart
{
    const char* name;
    int lowest;
    int highest;
};

const NumberPart BAUD_RATE = {"baud rate", LOWEST_BAUD, HIGHEST_BAUD};
const NumberPart DATA_BITS = {"number of data bits", FEWEST_DATA_BITS, MOST_DATA_BITS};
const NumberPart STOP_BITS = {"number of stop bits", 1, MOST_STOP_BITS};
const NumberPart PORT = {"port", 1, HIGHEST_PORT};

void take(int& number, const QString& text, const NumberPart& part)
{
    if (text.isEmpty()) return;
    bool ok = false;
    number = text.toInt(&ok);
    if (ok && number >= part.lowest && number <= part.highest) return;
    fail(QString::fromLatin1("the %1 \"%2\" is not a number from %3 to %4")
             .arg(QLatin1String(part.name), text, QString::number(part.lowest),
                  QString::number(part.highest)));
}

void take(LineSettings::Parity& parity, const QString& text)
{
    if (text.isEmpty()) return;
    if (LineSettings::takeParity(text, parity)) return;
    fail(QString::fromLatin1("the parity \"%1\" is not NONE, EVEN or ODD").arg(text));
}

/// A host with a single colon is refused: it is no IPv6 address, but a host with ":PORT" behind it.
QString withoutBrackets(const QString& host)
{
    if (host.count(QLatin1Char(':')) == 1 || host.contains(QLatin1String("]:"))) {
        fail(QString::fromLatin1("the port of \"%1\" must follow a comma, not a colon").arg(host));
    }
    const bool bracketed = host.startsWith(QLatin1Char('[')) && host.endsWith(QLatin1Char(']'));
    return bracketed ? host.mid(1, host.size() - 2) : host;
}

void checkCount(const QStringList& parts, int most, const char* form)
{
    if (parts.size() <= most) return;
    fail(QString::fromLatin1("the link has more parts than %1").arg(QLatin1String(form)));
}

void takeSimulated(const QStringList& parts)
{
    if (parts != QStringList(QString())) {
        fail(QString::fromLatin1("a simulated link is plain \"sim\", without anything behind it"));
    }
}

void takeSerial(LinkAddress& address, const QStringList& parts)
{
    checkCount(parts, SERIAL_PARTS, "serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS");
    address.device = parts.at(0);
    if (address.device.isEmpty()) {
        fail(QString::fromLatin1("a serial link needs a device, such as serial:/dev/ttyUSB0"));
    }
    take(address.line.baud, parts.value(1), BAUD_RATE);
    take(address.line.dataBits, parts.value(2), DATA_BITS);
    take(address.line.parity, parts.value(3));
    take(address.line.stopBits, parts.value(4), STOP_BITS);
}

void takeNetwork(LinkAddress& address, const QStringList& parts)
{
    checkCount(parts, NETWORK_PARTS, "tcp:HOST,PORT");
    if (!parts.at(0).isEmpty()) address.host = withoutBrackets(parts.at(0));
    take(address.port, parts.value(1), PORT);
}

} // namespace

LinkDefaults linkDefaults(const QString& parameter)
{
    const QStringList texts = parameter.split(QLatin1Char(','));
    LinkDefaults defaults;
    defaults.line = LineSettings::fromTexts(texts.mid(BAUD_PART, LINE_PARTS));
    defaults.host = texts.value(NETWORK_ADDRESS_PART);
    defaults.port = texts.value(PORT_PART).toInt();
    return defaults;
}

LinkAddress linkAddress(const QString& text, const LinkDefaults& defaults)
{
    const QString kind = text.section(QLatin1Char(':'), 0, 0);
    QStringList parts = text.section(QLatin1Char(':'), 1).split(QLatin1Char(','));
    for (QString& part : parts)
        part = part.trimmed();

    LinkAddress address;
    address.line = defaults.line;
    address.host = defaults.host;
    address.port = defaults.port;
    if (kind == QLatin1String("sim")) {
        takeSimulated(parts);
    } else if (kind == QLatin1String("serial")) {
        address.kind = LinkAddress::SERIAL;
        takeSerial(address, parts);
    } else if (kind == QLatin1String("tcp")) {
        address.kind = LinkAddress::NETWORK;
        takeNetwork(address, parts);
    } else {
        fail(QString::fromLatin1("the link \"%1\" is not sim, serial:DEVICE or tcp:HOST,PORT")
                 .arg(text));
    }
    return address;
}

LinkAddress linkAddress(const QString& text, const DriverLibrary& driver)
{
    QString parameter;
    driver.getDriverParameter(&parameter);
    return linkAddress(text, linkDefaults(parameter));
}

LineTiming timingOf(const LinkAddress& address)
{
    return address.kind == LinkAddress::NETWORK ? LineTiming::network() : LineTiming(address.line);
}
