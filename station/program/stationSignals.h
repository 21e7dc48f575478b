#ifndef STATION_SIGNALS_H
#define STATION_SIGNALS_H

/// What a signal asks the station to do.
enum StationOrder { STOP_STATION, RELOAD_STATION };

/// Takes the signals SIGINT, SIGTERM (stop) and SIGHUP (reload), and ignores SIGPIPE.
void takeStationSignals();

/// Waits for the next signal. Several signals of one kind may count as one; a stop comes first.
StationOrder nextStationOrder();

#endif
