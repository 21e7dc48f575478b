#ifndef STATION_STATUS_H
#define STATION_STATUS_H

#include <QString>

#include <stdexcept>

/// Exit statuses of kakb-station.
enum StationStatus {
    STATION_DONE,
    STATION_USAGE,
    STATION_DRIVER,
    STATION_CONFIGURATION,
    STATION_ADDRESS,
    STATION_STATE
};

/// Meanings of the exit statuses, by number. The help shows them.
constexpr const char* STATION_STATUS_MEANINGS[] = {
    "stopped by SIGINT or SIGTERM; --check: the configuration is good",
    "usage",
    "the driver cannot be loaded",
    "the configuration or a tag file has mistakes",
    "the address cannot be listened on, or needs a token",
    "the state folder or the token file cannot be used"};

/// The station cannot start. what() has one sentence in UTF-8 for each mistake, each on a line.
struct StationFailure : std::runtime_error
{
    StationFailure(StationStatus failedWith, const QString& sentences)
        : std::runtime_error(sentences.toStdString()), status(failedWith)
    {
    }

    StationStatus status;
};

#endif
