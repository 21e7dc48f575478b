#include "verbs/infoVerb.h"

#include "links/driverParameter.h"
#include "program/printing.h"
#include "verbs/addressVerdict.h"

#include <QJsonArray>
#include <QJsonObject>

#include <initializer_list>

namespace {

struct CodeMeaning
{
    const char* code;
    const char* meaning;
};

QString meaningOf(const QString& code, std::initializer_list<CodeMeaning> meanings)
{
    for (const CodeMeaning& known : meanings) {
        if (code == text(known.code)) return text(known.meaning);
    }
    return text("code ") + code;
}

QString widthWords(const QString& code)
{
    return meaningOf(code, {{"0", "1 bit"}, {"1", "16 bits"}, {"2", "32 bits"}});
}

QString accessWords(const QString& code)
{
    return meaningOf(code, {{"0", "read"}, {"1", "read and write"}, {"2", "write"}});
}

QString kindWords(const AreaDescription& area)
{
    return text(area.bits ? "bits" : "words");
}

struct Identity
{
    int type = 0;
    QString version; ///< of the driver's interface; not the project's
    QString page;
    QStringList parameters;
};

Identity identityOf(const DriverLibrary& driver)
{
    Identity identity;
    QString parameter;
    driver.getProtocolType(&identity.type);
    driver.getVersion(&identity.version);
    driver.getDriverPropertyPage(&identity.page);
    driver.getDriverParameter(&parameter);
    identity.parameters = parameter.split(QLatin1Char(','));
    return identity;
}

void printInfoObject(std::FILE* out, const Identity& identity,
                     const std::vector<AreaDescription>& areas)
{
    const QStringList& parts = identity.parameters;
    QJsonArray list;
    for (const AreaDescription& area : areas) {
        list.append(QJsonObject{{text("name"), area.name},
                                {text("kind"), kindWords(area)},
                                {text("format"), area.format},
                                {text("lowest"), area.lowest},
                                {text("highest"), area.highest},
                                {text("width"), widthWords(area.widthCode)},
                                {text("access"), accessWords(area.accessCode)}});
    }
    printObject(out, {{text("protocol"), parts.value(PROTOCOL_PART)},
                      {text("type"), identity.type},
                      {text("interfaceVersion"), identity.version},
                      {text("propertyPage"), identity.page},
                      {text("baud"), parts.value(BAUD_PART).toInt()},
                      {text("dataBits"), parts.value(DATA_BITS_PART).toInt()},
                      {text("parity"), parts.value(PARITY_PART)},
                      {text("stopBits"), parts.value(STOP_BITS_PART).toInt()},
                      {text("networkAddress"), parts.value(NETWORK_ADDRESS_PART)},
                      {text("port"), parts.value(PORT_PART).toInt()},
                      {text("areas"), list}});
}

void printInfoText(std::FILE* out, const Identity& identity,
                   const std::vector<AreaDescription>& areas)
{
    const QStringList& parts = identity.parameters;
    printLine(out, text("protocol       %1, type %2")
                       .arg(parts.value(PROTOCOL_PART), QString::number(identity.type)));
    printLine(out, text("interface      version ") + identity.version);
    printLine(out, text("property page  ") + identity.page);
    printLine(out, text("serial line    %1 baud, %2 data bits, parity %3, stop bits %4")
                       .arg(parts.value(BAUD_PART), parts.value(DATA_BITS_PART),
                            parts.value(PARITY_PART), parts.value(STOP_BITS_PART)));
    printLine(out, text("network        %1, port %2")
                       .arg(parts.value(NETWORK_ADDRESS_PART), parts.value(PORT_PART)));
    std::fprintf(out, "%-5s %-6s %-7s %-7s %-8s %-8s %s\n", "area", "kind", "format", "lowest",
                 "highest", "width", "access");
    for (const AreaDescription& area : areas) {
        std::fprintf(out, "%-5s %-6s %-7s %-7s %-8s %-8s %s\n", qUtf8Printable(area.name),
                     qUtf8Printable(kindWords(area)), qUtf8Printable(area.format),
                     qUtf8Printable(area.lowest), qUtf8Printable(area.highest),
                     qUtf8Printable(widthWords(area.widthCode)),
                     qUtf8Printable(accessWords(area.accessCode)));
    }
}

} // namespace

void printInfo(std::FILE* out, const DriverLibrary& driver, bool json)
{
    const Identity identity = identityOf(driver);
    const std::vector<AreaDescription> areas = describeAreas(driver);
    if (json)
        printInfoObject(out, identity, areas);
    else
        printInfoText(out, identity, areas);
}
