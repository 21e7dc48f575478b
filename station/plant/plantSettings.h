#ifndef PLANT_SETTINGS_H
#define PLANT_SETTINGS_H

#include "broker/brokerAddress.h"

#include <QByteArray>

#include <vector>

/// The table [mqtt] of the configuration, and the options --mqtt….
struct PlantSettings
{
    std::vector<BrokerAddress> servers; ///< empty: no MQTT
    QString clientId; ///< empty: made of group and node; the JSON dialect's has "-json" behind it
    QString user;
    QString passwordFile;         ///< empty: none
    QByteArray password;          ///< of the file
    QString ca, certificate, key; ///< PEM files; for mqtts
    int keepAliveS = 30;
    QString group = QLatin1String("kakb");
    QString node; ///< empty: the station's name
    bool speaksSparkplug = true;
    bool speaksJson = false;
    QString primaryHost; ///< empty: none
    bool takesCommands = false;
};

/// The names of the dialects' clients at a broker, which keeps one client of a name: of two
/// stations with the same group and node, each one throws the other out.
///
///     kakb-GROUP-NODE               kakb-GROUP-NODE-json
///     kakb-GROUP-NODE-LENGTH        kakb-GROUP-NODE-LENGTH-json
///
/// Where a hyphen in one of the two leaves open which hyphen parts them, the length of the group
/// follows. So other groups and nodes never have these names: those without a length have two
/// hyphens, or three and "json" at their end; those with one have more.
QString sparkplugClientId(const PlantSettings& settings);
QString jsonClientId(const PlantSettings& settings);

bool operator==(const PlantSettings& a, const PlantSettings& b);

#endif
