#ifndef CONFIG_FILE_H
#define CONFIG_FILE_H

#include "driver/driverLibrary.h"
#include "program/configMistakes.h"
#include "program/stationConfig.h"

#include <QByteArray>

/// Reads the configuration, and the tag files that it names.
///
///     name = "mixing plant"            # shown on the page
///     listen = "127.0.0.1:8480"
///     allow_writes = false
///     token_file = "token"
///     host_names = ["panel.example"]
///     state = "/var/lib/kakb-station"
///     [history]
///     cap = "256MiB"
///     override = "10m"
///     [mqtt]                           # without it, nothing is published
///     servers = ["mqtt://broker.example:1883", "mqtts://other.example"]
///     client_id = "mixing"
///     group = "kakb"
///     node = "mixing plant"
///     dialects = ["sparkplug", "json"]
///     primary_host = "scada"
///     commands = false
///     user = "mixing"
///     password_file = "password"
///     ca = "ca.pem"
///     certificate = "mixing.pem"
///     key = "mixing.key"
///     keep_alive = "30s"
///     [[link]]                         # one for each link, at least one
///     name = "line 1"
///     link = "tcp:192.168.0.10,502"
///     tags = "line1.csv"
///     pace = "100ms"
///     timeout_ms = 500
///     attempts = 3
///     pause_ms = 500
///
/// Every key may be missing but `name`, `link` and `tags` of a link, and `servers` of [mqtt]. The
/// simulated PLC has tags of its own.
/// @param toml      the configuration's text
/// @param fileName  its name, as the user gave it; paths in it begin at its folder
/// @param mistakes  takes all mistakes; with any, the result is of no use
StationConfig readConfig(const QByteArray& toml, const QString& fileName,
                         const DriverLibrary& driver, ConfigMistakes& mistakes);

#endif
