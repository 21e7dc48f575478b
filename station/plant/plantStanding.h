#ifndef PLANT_STANDING_H
#define PLANT_STANDING_H

#include <QString>

#include <optional>

/// How MQTT stands, for the page, the API and /metrics. One for each dialect that is spoken.
struct PlantStanding
{
    enum State {
        PAUSING,    ///< waits before the next try
        CONNECTING, ///< waits for the broker, its grants, or the primary host
        BORN        ///< the births are out, values flow
    };

    QString dialect; ///< "sparkplug" or "json"
    State state = PAUSING;
    QString server;                ///< "mqtt://HOST:PORT" of the present or last session
    QString trouble;               ///< why there is no session; else empty
    qint64 since = 0;              ///< of `state`, ms since 1970
    std::optional<qint64> behind;  ///< rows that the broker does not surely have
    std::optional<qint64> dropped; ///< rows that it will never have; both empty: JSON keeps states
    quint64 sessions = 0, sent = 0, historical = 0, commands = 0, refusedCommands = 0;
};

/// "pausing", "connecting" or "connected".
const char* plantStateText(PlantStanding::State state);

#endif
