#ifndef STATION_STATUS_H
#define STATION_STATUS_H

#include <QString>

#include <stdexcept>

/// Exit statuses of kakb-station.
enum StationStatus { STATION_DONE, STATION_USAGE, STATION_DRIVER, STATION_ADDRESS, STATION_STATE };

/// Meanings of the exit statuses, by number. The help shows them.
constexpr const char* STATION_STATUS_MEANINGS[] = {
    "ended by SIGINT or SIGTERM; --check: there is no mistake",
    "usage, or mistakes in the configuration, a tag file or the token file",
    "the driver or the simulated PLC cannot be started", "the address cannot be listened on",
    "the state folder cannot be used, or another kakb-station uses it"};

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
