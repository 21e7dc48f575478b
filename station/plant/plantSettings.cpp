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

QString sparkplugClientId(const PlantSettings& settings)
{
    if (!settings.clientId.isEmpty()) return settings.clientId;
    const QLatin1Char hyphen('-');
    const QString id = QLatin1String("kakb-") + settings.group + hyphen + settings.node;
    const bool isClear = !settings.group.contains(hyphen) && !settings.node.contains(hyphen);
    return isClear ? id : id + hyphen + QString::number(settings.group.size());
}

QString jsonClientId(const PlantSettings& settings)
{
    return sparkplugClientId(settings) + QLatin1String("-json");
}

bool operator==(const PlantSettings& a, const PlantSettings& b)
{
    return members(a) == members(b);
}
