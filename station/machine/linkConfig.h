#ifndef LINK_CONFIG_H
#define LINK_CONFIG_H

#include "values/sharedTags.h"

#include <optional>
#include <vector>

/// A link as the configuration describes it.
struct LinkConfig
{
    QString name; ///< unique in the station
    QString link; ///< "sim", "serial:...", "tcp:...", see linkAddress()
    SharedTags tags;
    std::optional<qint64> paceMs; ///< empty: defaultPaceMs()
    int timeoutMs = 500;
    int attempts = 3;
    int pauseMs = 500;
};

/// Whether a link with the one configuration can go on under the other.
bool operator==(const LinkConfig& a, const LinkConfig& b);

#endif
