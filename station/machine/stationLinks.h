#ifndef STATION_LINKS_H
#define STATION_LINKS_H

#include "machine/machineLink.h"

/// The links of the station. A new configuration replaces only the links that changed.
///
/// The main thread calls apply() and stop(). Any thread calls the other functions.
class StationLinks
{
public:
    explicit StationLinks(LinkSurroundings surroundings);
    ~StationLinks();

    /// Makes the links those of the configuration, in its order. A link whose configuration did not
    /// change goes on without a missed poll.
    /// @throws DriverError, LinkTextError, LinkError; then nothing has changed
    void apply(const std::vector<LinkConfig>& configs);

    /// Ends all links.
    void stop(const QString& why);

    /// The links of this moment, in the order of the configuration.
    std::vector<std::shared_ptr<MachineLink>> all() const;

    /// The link of a name; null: there is none.
    std::shared_ptr<MachineLink> find(const QString& name) const;

private:
    const LinkSurroundings m_surroundings;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<MachineLink>> m_links; ///< guarded by m_mutex
};

#endif
