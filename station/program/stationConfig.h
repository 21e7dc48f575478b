#ifndef STATION_CONFIG_H
#define STATION_CONFIG_H

#include "machine/linkConfig.h"
#include "plant/plantSettings.h"
#include "program/listenAddress.h"

#include <QStringList>

/// What the station does, from the configuration file and the options.
struct StationConfig
{
    struct History
    {
        bool isKept = true;
        qint64 capBytes = qint64(256) * 1024 * 1024;
        qint64 overrideMs = 600000;
    };

    QString name = QLatin1String("kakb-station");
    ListenAddress listen;
    int listenLine = 1; ///< of the configuration file
    bool allowWrites = false;
    QString tokenFile;     ///< empty: no token is asked for
    QStringList hostNames; ///< further names that the station is called by
    QString stateFolder;   ///< empty: see stateFolderOf()
    History history;
    PlantSettings plant;   ///< without a server: no MQTT
    bool hasPlant = false; ///< the file has a table [mqtt]
    int plantLine = 1;     ///< its line
    std::vector<LinkConfig> links;
};

#endif
