#ifndef REQUEST_HANDLER_H
#define REQUEST_HANDLER_H

#include "backlog.h"
#include "linePacing.h"
#include "modbusServer.h"
#include "refusals.h"
#include "replySlots.h"
#include "silenceMeter.h"

#include <array>
#include <map>
#include <set>

struct FaultSettings
{
    FaultRates rates = {};
    std::int64_t exchanges = 0; ///< 0: always
    std::int64_t delayNs = 0;
    std::int64_t duplicateAfterNs = 0; ///< from the first copy's end to the second's start
    int exceptionCode = 6;
    std::map<int, double> silentStations; ///< share of the exchanges by station
    double lateShare = 0;                 ///< of the exchanges
    std::int64_t longestLatenessNs = 0;
    StallSettings stall;
    std::vector<Refusal> refusals;
};

/// Counts for the report.
struct ExchangeCounts
{
    std::int64_t requests = 0; ///< with a good checksum, for any station
    std::int64_t replies = 0;  ///< sent, with or without a fault
    std::int64_t broadcasts = 0;
    std::int64_t foreign = 0; ///< requests to stations that are not served
    std::int64_t silent = 0;  ///< requests that a silent station ignored
    std::int64_t stalled = 0; ///< replies held back by a stall or its backlog
    std::int64_t late = 0;    ///< late replies sent
    std::int64_t refused = 0; ///< requests that a Refusal refused
    std::array<std::int64_t, FAULT_KINDS> faults = {};
};

/// Has requests executed and decides which reply goes back, and when. Times are nanoseconds.
class RequestHandler
{
public:
    RequestHandler(PlcStations& stations, const LinePacing& pacing, const FaultSettings& faults,
                   unsigned seed);

    /// Executes the request or holds it back. Call serveHeld() first when nextServiceAt() has come.
    /// @return the pieces to send, each at its time; pieces of the same time in this order
    std::vector<OutgoingPiece> handle(const Request& request);

    /// When the next held request is to be served; nothing when no request is held.
    std::optional<std::int64_t> nextServiceAt() const
    {
        return m_backlog.nextServiceAt();
    }

    /// Executes the held requests whose time has come.
    /// @return as handle()
    std::vector<OutgoingPiece> serveHeld(std::int64_t now);

    /// The last byte of a reply is on the wire at `at`.
    void replyEnded(std::int64_t at)
    {
        m_silence.frameEnded(at);
    }

    /// The host has changed or is gone. Its held requests are still executed.
    void lineReset();

    /// @name Orders while the line is served
    /// @{
    /// @return false when there are too many refusals: each request looks through all of them
    bool refuse(const Refusal& refusal);
    void refuseNothing()
    {
        m_settings.refusals.clear();
    }
    /// A station that is not silent any more has lost its share of FaultSettings, too.
    void setSilent(int station, bool isSilent);
    /// Stalls from `at` on. A length of 0 ends the stall that was ordered before.
    void stall(std::int64_t at, std::int64_t length)
    {
        m_backlog.stall(at, length);
    }
    /// @}

    const ExchangeCounts& counts() const
    {
        return m_counts;
    }
    const Durations& silences() const
    {
        return m_silence.silences();
    }

private:
    bool isSilentNow(int station);
    Exchange drawn(const Request& request);
    std::vector<OutgoingPiece> serve(const Exchange& exchange, std::int64_t at);
    Bytes replyTo(const Exchange& exchange);
    Bytes execute(const Bytes& request, std::set<int> deaf);
    void takeBroadcast(const Request& request);
    std::set<int> stationsThatAreSilentNow();
    std::vector<OutgoingPiece> scheduled(const Bytes& reply, const Exchange& exchange,
                                         std::int64_t servedAt);
    std::int64_t readyAt(const Exchange& exchange, std::int64_t servedAt) const;
    void addSecondCopy(std::vector<OutgoingPiece>& pieces, const Bytes& reply, int station);
    Fault nextFault();

    PlcStations& m_stations;
    ModbusServer m_server;
    LinePacing m_pacing;
    FaultSettings m_settings;
    FaultSchedule m_schedule;
    std::set<int> m_silenced; // by order, whatever the share
    std::mt19937 m_random;
    ExchangeCounts m_counts;
    SilenceMeter m_silence;
    Backlog m_backlog;
    ReplySlots m_slots;
    std::int64_t m_requestEnd = 0; ///< of the last request
};

#endif
