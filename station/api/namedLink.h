#ifndef NAMED_LINK_H
#define NAMED_LINK_H

#include "api/apiError.h"
#include "api/stationParts.h"

// The links and tags that requests name.

/// The name under a key of the query; empty: the request names none.
QString queriedName(const HttpRequest& request, const QByteArray& key);

/// @throws ApiError NOT_FOUND when the station has no such link
std::shared_ptr<MachineLink> linkNamed(const StationParts& parts, const QString& name);

/// The link that the query names under `link`, or all links when it names none.
/// @throws ApiError NOT_FOUND
std::vector<std::shared_ptr<MachineLink>> queriedLinks(const StationParts& parts,
                                                       const HttpRequest& request);

/// The link that the query names under `link`, which it must.
/// @throws ApiError NOT_FOUND, BAD_REQUEST when it names none
std::shared_ptr<MachineLink> queriedLink(const StationParts& parts, const HttpRequest& request);

/// The index of a tag of the link.
/// @throws ApiError NOT_FOUND when the link has no such tag
int tagNamed(const MachineLink& link, const QString& name);

#endif
