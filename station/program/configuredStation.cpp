#include "program/configuredStation.h"

#include "driver/companionFiles.h"
#include "links/linkText.h"
#include "plan/tagFile.h"
#include "program/configFile.h"
#include "program/configLinks.h"
#include "program/configPlant.h"
#include "program/tokenFile.h"

namespace {

const char ONE_LINK[] = "plc";
const char NEEDS_TOKEN[] = "other machines can reach this address: it needs a token file";

[[noreturn]] void fail(const QString& sentences)
{
    throw StationFailure(STATION_USAGE, sentences);
}

/// The link of a station without a configuration file. Only the simulated PLC's variables are
/// known.
LinkConfig oneLink(const StationOptions& options, const DriverLibrary& driver)
{
    LinkConfig config;
    config.name = QLatin1String(ONE_LINK);
    config.link = options.link.isEmpty() ? QString(QLatin1String("sim")) : options.link;
    config.paceMs = options.paceMs;
    config.timeoutMs = options.timeoutMs;
    config.attempts = options.attempts;
    config.pauseMs = options.pauseMs;
    const LinkAddress address = linkAddress(config.link, driver);
    if (options.tags.isEmpty() && address.kind != LinkAddress::SIMULATED)
        fail(QLatin1String("--tags is required: only the simulated PLC has a tag file of its own"));
    config.tags = tagsOfLink(options.tags.isEmpty() ? companionTagFile() : options.tags, driver);
    return config;
}

StationConfig withoutFile(const StationOptions& options, const DriverLibrary& driver)
{
    StationConfig config;
    try {
        config.links.push_back(oneLink(options, driver));
    } catch (const LinkTextError& error) {
        fail(QString::fromUtf8(error.what()));
    } catch (const TagFileError& error) {
        fail(QString::fromUtf8(error.what()));
    }
    return config;
}

QByteArray configBytes(const QString& fileName)
{
    try {
        return fileBytes(fileName);
    } catch (const TagFileError& error) {
        fail(QString::fromUtf8(error.what()));
    }
}

void replaceKeys(StationConfig& config, const StationOptions& options)
{
    if (options.listen) config.listen = *options.listen;
    if (!options.state.isEmpty()) config.stateFolder = options.state;
    if (!options.tokenFile.isEmpty()) config.tokenFile = options.tokenFile;
    if (options.hasNoHistory) config.history.isKept = false;
    if (options.allowsWrites) config.allowWrites = true;
    config.hostNames << options.hostNames;
    replacePlantKeys(config.plant, options);
}

/// What only the whole shows: the file and the options together.
void checkAccess(const StationConfig& config, const StationOptions& options,
                 ConfigMistakes& mistakes)
{
    if (!config.tokenFile.isEmpty()) {
        const QString problem = tokenFileProblem(config.tokenFile);
        if (!problem.isEmpty()) mistakes.addLines(problem);
    } else if (!config.listen.isLoopback() && options.listen) {
        mistakes.addLines(QLatin1String("--listen: ") + QLatin1String(NEEDS_TOKEN));
    } else if (!config.listen.isLoopback()) {
        mistakes.add(config.listenLine, QLatin1String("listen: ") + QLatin1String(NEEDS_TOKEN));
    }
}

} // namespace

StationConfig configuredStation(const StationOptions& options, const DriverLibrary& driver)
{
    ConfigMistakes mistakes(options.config);
    StationConfig config = options.config.isEmpty() ? withoutFile(options, driver)
                                                    : readConfig(configBytes(options.config),
                                                                 options.config, driver, mistakes);
    replaceKeys(config, options);
    checkAccess(config, options, mistakes);
    checkPlant(config, mistakes);
    if (!mistakes.isEmpty()) fail(mistakes.text());
    return config;
}
