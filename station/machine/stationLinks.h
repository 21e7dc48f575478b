#ifndef STATION_LINKS_H
#define STATION_LINKS_H

#include "machine/machineLink.h"

/// The links of the station. A new configuration replaces only the links that changed.
///
/// The main thread constructs it, destroys it, and calls apply() and stop(). Any thread calls the
/// other functions.
class StationLinks
{
public:
    explicit StationLinks(LinkSurroundings surroundings);
    ~StationLinks();

    /// Makes the links those of the configuration, in its order. A link whose configuration did not
    /// change goes on without a missed poll. A link that the system could not serve is tried anew.
    /// A link that changed has ended before the new one opens, since many devices take only one
    /// connection.
    /// @throws LinkTextError; then nothing has changed
    void apply(const std::vector<LinkConfig>& configs);

    /// Ends all links for good, in the time of one. They stay to be read.
    void stop(const QString& why);

    std::vector<std::shared_ptr<MachineLink>> all() const;

    /// Null: there is no such link.
    std::shared_ptr<MachineLink> find(const QString& name) const;

    /// The account of all writes and recipes, for those that never come to a link.
    JobAudit& audit()
    {
        return m_audit;
    }

    /// The writes since the start, of all links, that had this outcome.
    quint64 writes(WriteEnd::Outcome outcome) const
    {
        return m_audit.writes(outcome);
    }

private:
    using Links = std::vector<std::shared_ptr<MachineLink>>;

    static void stop(const Links& links, const QString& why);

    const LinkSurroundings m_surroundings;
    DriverCopies m_copies; ///< guards itself
    JobAudit m_audit;      ///< guards itself
    mutable std::mutex m_mutex;
    Links m_links; ///< guarded by m_mutex
};

#endif
