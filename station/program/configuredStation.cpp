#include "program/configuredStation.h"

#include "driver/companionFiles.h"
#include "links/linkText.h"
#include "plan/tagFile.h"

namespace {

const char ONE_LINK[] = "plc";

/// The link of a station without a configuration file.
LinkConfig oneLink(const StationOptions& options, const DriverLibrary& driver)
{
    LinkConfig config;
    config.name = QLatin1String(ONE_LINK);
    config.link = options.link.isEmpty() ? QString(QLatin1String("sim")) : options.link;
    config.paceMs = options.paceMs;
    config.timeoutMs = options.timeoutMs;
    config.attempts = options.attempts;
    config.pauseMs = options.pauseMs;
    QString parameter;
    driver.getDriverParameter(&parameter);
    const LinkAddress address = linkAddress(config.link, linkDefaults(parameter));
    if (options.tags.isEmpty() && address.kind != LinkAddress::SIMULATED)
        throw StationFailure(STATION_USAGE, QLatin1String("--tags is required: only the simulated "
                                                          "PLC has a tag file of its own"));
    config.tags = readTagFile(options.tags.isEmpty() ? companionTagFile() : options.tags, driver);
    return config;
}

} // namespace

StationConfig configuredStation(const StationOptions& options, const DriverLibrary& driver)
{
    StationConfig config;
    try {
        config.links.push_back(oneLink(options, driver));
    } catch (const LinkTextError& error) {
        throw StationFailure(STATION_USAGE, QString::fromUtf8(error.what()));
    } catch (const TagFileError& error) {
        throw StationFailure(STATION_CONFIGURATION, QString::fromUtf8(error.what()));
    }
    if (options.listen) config.listen = *options.listen;
    if (!options.state.isEmpty()) config.stateFolder = options.state;
    if (!options.tokenFile.isEmpty()) config.tokenFile = options.tokenFile;
    if (options.hasNoHistory) config.history.isKept = false;
    if (options.allowsWrites) config.allowWrites = true;
    config.hostNames << options.hostNames;
    return config;
}
