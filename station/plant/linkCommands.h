#ifndef LINK_COMMANDS_H
#define LINK_COMMANDS_H

#include "machine/stationLinks.h"
#include "plant/plantCommands.h"

#include <atomic>
#include <memory>

/// Writes from a broker to the links of the station.
///
///     thread of MQTT   write() --- refused here ---------+      turn() --> ended
///                         |                              v        ^
///                         v                            (ends) ----+
///     links' threads   MachineLink::write() --- ended ---^  wakes the thread of MQTT
///
/// Invariants:
/// - Each write() puts one end among the ends: here when it is refused, else by the link, which
///   ends all writes at the latest with its own end.
/// - `ended` is called by turn() alone.
/// - The audit has one line for each write and for each refusal.
///
/// The thread of MQTT calls all functions.
class LinkCommands : public PlantCommands
{
public:
    /// @param wake  makes that thread call turn(); any thread calls it, with a lock held: it must
    /// note it and return
    LinkCommands(StationLinks& links, const std::atomic<bool>& areWritesAllowed,
                 std::function<void()> wake);

    /// Behind it no end is told and nobody is woken; the links go on with their writes.
    ~LinkCommands() override;

    void write(const QString& link, const QString& tag, const MetricValue& value,
               const QString& from, Ended ended) override;
    void refused(const QString& what, const QString& reason, const QString& from) override;

    /// Tells the ends that have come.
    void turn();

private:
    class Ends;
    struct Asked;

    void refuse(const Asked& asked, const QString& reason, const TagReading& held);

    StationLinks& m_links;
    const std::atomic<bool>& m_areWritesAllowed;
    const std::shared_ptr<Ends> m_ends; ///< guards itself; links hold it, too
};

#endif
