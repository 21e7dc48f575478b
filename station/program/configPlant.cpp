#include "program/configPlant.h"

#include "plan/durationText.h"
#include "plant/plant.h"
#include "program/configKeys.h"
#include "program/privateFile.h"
#include "sparkplug/edgeNames.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

enum { MS = 1000, SHORTEST_KEEP_ALIVE_S = 5, LONGEST_KEEP_ALIVE_S = 1200 };

QString takeServer(const QString& text, std::vector<BrokerAddress>& servers)
{
    const std::optional<BrokerAddress> server = brokerAddress(text);
    if (!server) return brokerProblem(text);
    servers.push_back(*server);
    return QString();
}

QString takeKeepAlive(const QString& text, int& seconds)
{
    const std::optional<qint64> ms = durationMs(text);
    if (!ms) return durationProblem(text);
    if (*ms % MS != 0 || *ms < SHORTEST_KEEP_ALIVE_S * MS || *ms > LONGEST_KEEP_ALIVE_S * MS)
        return QString(QLatin1String("%1 is no whole number of seconds from 5s to 20m")).arg(text);
    seconds = int(*ms / MS);
    return QString();
}

ConfigKeys::TakeText intoText(QString& to, QString (*problem)(const QString&))
{
    return [&to, problem](const QString& text) {
        to = text;
        return problem(text);
    };
}

/// A file that is read at the start; its path begins at the folder.
ConfigKeys::TakeText intoFile(const QString& folder, QString& path)
{
    return [folder, &path](const QString& text) {
        if (text.isEmpty()) return QString(QLatin1String("a path is wanted"));
        path = QDir::cleanPath(QDir(folder).filePath(text));
        return QFileInfo(path).isReadable()
                   ? QString()
                   : QString(QLatin1String("%1: cannot read it")).arg(path);
    };
}

void takeTls(ConfigKeys& keys, const QString& folder, PlantSettings& settings)
{
    keys.text("ca", intoFile(folder, settings.ca));
    keys.text("certificate", intoFile(folder, settings.certificate));
    keys.text("key", intoFile(folder, settings.key));
}

/// The first problem of the settings as a whole, in words; empty: none.
QString problemOfWhole(const PlantSettings& settings, bool areWritesAllowed)
{
    const bool isEncrypted =
        std::any_of(settings.servers.begin(), settings.servers.end(),
                    [](const BrokerAddress& server) { return server.isEncrypted; });
    const bool hasTls = !settings.ca.isEmpty() || !settings.certificate.isEmpty();
    if (settings.takesCommands && !areWritesAllowed)
        return QLatin1String("commands need that writes are allowed: allow_writes or "
                             "--allow-writes");
    if (!settings.passwordFile.isEmpty() && settings.user.isEmpty())
        return QLatin1String("password_file needs the key user");
    if (settings.certificate.isEmpty() != settings.key.isEmpty())
        return QLatin1String("certificate and key are wanted together");
    if (hasTls && !isEncrypted)
        return QLatin1String("ca and certificate have no meaning without a server mqtts://");
    if (!settings.primaryHost.isEmpty() && !settings.speaksSparkplug)
        return QLatin1String("primary_host has no meaning without the dialect sparkplug");
    return QString();
}

/// The password is the one line of its file, with its blanks.
/// @return the problem in words; empty: none
QString takePassword(PlantSettings& settings)
{
    if (settings.passwordFile.isEmpty()) return QString();
    const PrivateText file = privateText(settings.passwordFile, QLatin1String("password file"));
    if (!file.problem.isEmpty()) return file.problem;
    QByteArray line = file.bytes;
    for (const char end : {'\n', '\r'})
        if (line.endsWith(end)) line.chop(1);
    if (line.isEmpty() || line.contains('\n') || line.contains('\0'))
        return QString(QLatin1String("%1: the password file has to hold one line, the password"))
            .arg(settings.passwordFile);
    settings.password = line;
    return QString();
}

} // namespace

QString plantIdProblem(const QString& id)
{
    const bool hasControl = std::any_of(id.begin(), id.end(), [](QChar character) {
        return character.category() == QChar::Other_Control;
    });
    const bool hasReserved = id.contains(QLatin1Char('+')) || id.contains(QLatin1Char('/')) ||
                             id.contains(QLatin1Char('#'));
    if (!id.isEmpty() && !hasControl && !hasReserved) return QString();
    return QString(QLatin1String("\"%1\" is no id: some text without + / # and control characters"))
        .arg(id);
}

QString takeDialects(const QStringList& names, PlantSettings& settings)
{
    settings.speaksSparkplug = names.contains(QLatin1String("sparkplug"));
    settings.speaksJson = names.contains(QLatin1String("json"));
    for (const QString& name : names)
        if (name != QLatin1String("sparkplug") && name != QLatin1String("json"))
            return QString(
                       QLatin1String("\"%1\" is no dialect; the dialects are sparkplug and json"))
                .arg(name);
    if (names.isEmpty()) return QLatin1String("there is no dialect: sparkplug, json or both");
    return QString();
}

PlantSettings configuredPlant(const ConfigNode& table, const QString& folder,
                              ConfigMistakes& mistakes)
{
    PlantSettings settings;
    ConfigKeys keys(table, QLatin1String("[mqtt]"), mistakes);
    keys.texts("servers", [&](const QString& text) { return takeServer(text, settings.servers); });
    keys.text("client_id", intoText(settings.clientId, nameProblem));
    keys.text("group", intoText(settings.group, plantIdProblem));
    keys.text("node", intoText(settings.node, plantIdProblem));
    QStringList dialects;
    keys.texts("dialects",
               [&](const QString& text) { return takeDialects(dialects << text, settings); });
    keys.text("primary_host", intoText(settings.primaryHost, plantIdProblem));
    keys.truth("commands", settings.takesCommands);
    keys.text("user", intoText(settings.user, nameProblem));
    keys.text("password_file", intoFile(folder, settings.passwordFile));
    takeTls(keys, folder, settings);
    keys.text("keep_alive",
              [&](const QString& text) { return takeKeepAlive(text, settings.keepAliveS); });
    if (keys.has("dialects") && dialects.isEmpty())
        mistakes.add(keys.line("dialects"),
                     QLatin1String("dialects: ") + takeDialects(dialects, settings));
    return settings;
}

void replacePlantKeys(PlantSettings& settings, const StationOptions& options)
{
    if (!options.mqttServers.empty()) settings.servers = options.mqttServers;
    if (!options.mqttGroup.isEmpty()) settings.group = options.mqttGroup;
    if (!options.mqttNode.isEmpty()) settings.node = options.mqttNode;
    if (!options.mqttDialects.isEmpty()) takeDialects(options.mqttDialects, settings);
    if (!options.mqttPrimaryHost.isEmpty()) settings.primaryHost = options.mqttPrimaryHost;
    if (options.takesMqttCommands) settings.takesCommands = true;
}

void checkPlant(StationConfig& config, ConfigMistakes& mistakes)
{
    PlantSettings& settings = config.plant;
    const auto note = [&](const QString& problem) {
        if (config.hasPlant)
            mistakes.add(config.plantLine, QLatin1String("[mqtt]: ") + problem);
        else
            mistakes.addLines(QLatin1String("--mqtt: ") + problem);
    };
    if (settings.servers.empty()) {
        if (!(settings == PlantSettings()) || config.hasPlant)
            note(QLatin1String("no server is named: key servers, or --mqtt"));
        return;
    }
    if (settings.node.isEmpty()) settings.node = config.name;
    const QString nodeProblem = plantIdProblem(settings.node);
    if (!nodeProblem.isEmpty()) note(QLatin1String("node: ") + nodeProblem);
    const QString problem = problemOfWhole(settings, config.allowWrites);
    if (!problem.isEmpty()) note(problem);
    if (settings.speaksSparkplug) {
        for (const QString& name : metricNameProblems(plantDevices(config.links)))
            note(name);
    }
    const QString passwordProblem = takePassword(settings);
    if (!passwordProblem.isEmpty()) note(passwordProblem);
}
