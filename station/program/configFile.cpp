#include "program/configFile.h"

#include "history/historyCap.h"
#include "plan/durationText.h"
#include "program/configKeys.h"
#include "program/configLinks.h"
#include "program/configPlant.h"
#include "program/tomlText.h"

#include <QDir>
#include <QFileInfo>

namespace {

enum { SHORTEST_OVERRIDE_MS = 1000, LONGEST_OVERRIDE_MS = 24 * 3600 * 1000 };

QString takeListen(const QString& text, ListenAddress& listen)
{
    const std::optional<ListenAddress> found = listenAddress(text);
    if (!found) return listenProblem(text);
    listen = *found;
    return QString();
}

QString takeCap(const QString& text, qint64& bytes)
{
    const std::optional<qint64> found = sizeBytes(text);
    if (!found)
        return QString(QLatin1String("\"%1\" is no size such as 256MiB, from 4MiB to 1024GiB"))
            .arg(text);
    if (*found < HistoryCap::LEAST_BYTES)
        return QString(QLatin1String("%1 is too small: the smallest is 4MiB")).arg(text);
    bytes = *found;
    return QString();
}

QString takeOverride(const QString& text, qint64& ms)
{
    const std::optional<qint64> found = durationMs(text);
    if (!found) return durationProblem(text);
    if (*found < SHORTEST_OVERRIDE_MS || *found > LONGEST_OVERRIDE_MS)
        return QString(QLatin1String("%1 is not from 1s to 1440m")).arg(text);
    ms = *found;
    return QString();
}

void takeHistory(const ConfigNode& table, StationConfig::History& history, ConfigMistakes& mistakes)
{
    ConfigKeys keys(table, QLatin1String("[history]"), mistakes);
    keys.text("cap", [&](const QString& text) { return takeCap(text, history.capBytes); });
    keys.text("override",
              [&](const QString& text) { return takeOverride(text, history.overrideMs); });
}

/// Takes a path, which begins at the folder.
ConfigKeys::TakeText intoPath(const QString& folder, QString& path)
{
    return [folder, &path](const QString& text) {
        path = QDir::cleanPath(QDir(folder).filePath(text));
        return text.isEmpty() ? QString(QLatin1String("a path is wanted")) : QString();
    };
}

} // namespace

StationConfig readConfig(const QByteArray& toml, const QString& fileName,
                         const DriverLibrary& driver, ConfigMistakes& mistakes)
{
    const ConfigNode whole = readToml(toml, mistakes);
    const bool isWhole = mistakes.isEmpty();
    const QString folder = QFileInfo(fileName).path();
    StationConfig config;
    ConfigKeys keys(whole, QString(), mistakes);
    keys.text("name", [&](const QString& text) {
        config.name = text;
        return nameProblem(text);
    });
    keys.text("listen", [&](const QString& text) { return takeListen(text, config.listen); });
    keys.truth("allow_writes", config.allowWrites);
    keys.text("token_file", intoPath(folder, config.tokenFile));
    keys.texts("host_names", [&](const QString& text) {
        config.hostNames << text;
        return hostNameProblem(text);
    });
    keys.text("state", intoPath(folder, config.stateFolder));
    if (const ConfigNode* const history = keys.table("history"))
        takeHistory(*history, config.history, mistakes);
    if (const ConfigNode* const mqtt = keys.table("mqtt")) {
        config.plant = configuredPlant(*mqtt, folder, mistakes);
        config.hasPlant = true;
        config.plantLine = keys.line("mqtt");
    }

    ConfigLinks links(folder, driver, mistakes);
    const ConfigNode* const tables = keys.tables("link");
    if (tables != nullptr) {
        for (const ConfigNode& table : tables->items)
            links.add(table, isWhole);
    }
    config.links = links.links();
    if (isWhole && config.links.empty() && !keys.has("link"))
        mistakes.add(1, QLatin1String("there is no link: add a table [[link]]"));
    config.listenLine = keys.line("listen");
    return config;
}
