#ifndef STATION_OPTIONS_H
#define STATION_OPTIONS_H

#include "broker/brokerAddress.h"
#include "program/listenAddress.h"
#include "program/stationStatus.h"

#include <QStringList>

#include <optional>
#include <vector>

/// The options of the command line. What is empty was not given.
struct StationOptions
{
    QString driver; ///< file of the driver; empty: companionDriver()
    QString config;
    bool isCheck = false;

    // The one link of a station without a configuration file.
    QString tags;
    QString link;
    std::optional<qint64> paceMs;
    int timeoutMs = 500;
    int attempts = 3;
    int pauseMs = 500;

    // They replace keys of the configuration file.
    std::optional<ListenAddress> listen;
    QString state;
    bool hasNoHistory = false;
    QString tokenFile;
    bool allowsWrites = false;
    QStringList hostNames;
    std::vector<BrokerAddress> mqttServers;
    QString mqttGroup, mqttNode, mqttPrimaryHost;
    QStringList mqttDialects;
    bool takesMqttCommands = false;
};

/// Reads the command line into the options.
/// @return an exit status when the station is not to start: after --help, after --version, or after
///         a usage error, which has been printed
std::optional<StationStatus> parseStationOptions(int argc, char** argv, StationOptions& options);

#endif
