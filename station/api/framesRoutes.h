#ifndef FRAMES_ROUTES_H
#define FRAMES_ROUTES_H

#include "api/stationParts.h"

/// Adds the last frames of a link, 404 for an unknown one:
///
/// - `GET /api/v1/frames?link=`: [{"time","direction":">"|"<","hex","meaning"}], oldest first
/// - `GET /api/v1/frames.pcap?link=`: a capture for Wireshark
void addFramesRoutes(HttpRoutes& routes, const StationParts& parts);

#endif
