#include "plant/plantSettings.h"

#include <tuple>

namespace {

auto members(const PlantSettings& settings)
{
    return std::tie(settings.servers, settings.clientId, settings.user, settings.passwordFile,
                    settings.password, settings.ca, settings.certificate, settings.key,
                    settings.keepAliveS, settings.group, settings.node, settings.speaksSparkplug,
                    settings.speaksJson, settings.primaryHost, settings.takesCommands);
}

} // namespace

QString clientIdOf(const PlantSettings& settings)
{
    if (!settings.clientId.isEmpty()) return settings.clientId;
    return QLatin1String("kakb-") + settings.group + QLatin1Char('-') + settings.node;
}

bool operator==(const PlantSettings& a, const PlantSettings& b)
{
    return members(a) == members(b);
}
