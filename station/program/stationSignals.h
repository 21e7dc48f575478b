#ifndef STATION_SIGNALS_H
#define STATION_SIGNALS_H

/// What a signal asks the station to do. NO_ORDER: no signal came for a minute.
enum StationOrder { STOP_STATION, RELOAD_STATION, NO_ORDER };

/// Takes SIGINT and SIGTERM as an order to stop, and ignores SIGPIPE.
/// @param canReload  SIGHUP is an order to reload. Otherwise it is one to stop, since a terminal
/// that closes sends it; it stays ignored when it was ignored before, as under nohup.
void takeStationSignals(bool canReload);

/// Waits for the next order, a minute at the longest. Several signals may count as one order. A
/// stop comes first.
StationOrder nextStationOrder();

#endif
