#ifndef REQUEST_HANDLER_H
#define REQUEST_HANDLER_H

#include "backlog.h"
#include "linePacing.h"
#include "modbusServer.h"
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
    std::int64_t duplicateAfterNs = 0; ///< from the first copy's end to the second one's start
    int exceptionCode = 6;
    std::map<int, double> silentStations; ///< each with its share of the exchanges
    double lateShare = 0;                 ///< of the exchanges
    std::int64_t longestLatenessNs = 0;
    StallSettings stall;
};

/// What happened, for the report.
struct ExchangeCounts
{
    std::int64_t requests = 0; ///< good frames, whomever they are for
    std::int64_t replies = 0;  ///< sent, whatever a fault made of them
    std::int64_t broadcasts = 0;
    std::int64_t foreign = 0; ///< requests to stations that are not here
    std::int64_t silent = 0;  ///< requests to stations that were silent
    std::int64_t stalled = 0; ///< replies that a stall, or its backlog, held back
    std::int64_t late = 0;    ///< replies
    std::array<std::int64_t, FAULT_KINDS> faults = {};
};

/// Has requests executed and decides what goes back, and when. Times are nanoseconds.
class RequestHandler
{
public:
    RequestHandler(PlcStations& stations, const LinePacing& pacing, const FaultSettings& faults,
                   unsigned seed);

    /// Executes it, or holds it back. What nextServiceAt() has come for goes ahead.
    /// @return what to send, each piece at its time, and those of one time in the order in which
    ///         they were returned
    std::vector<OutgoingPiece> handle(const Request& request);

    /// When a request that was held back is to be served; nothing when there is none.
    std::optional<std::int64_t> nextServiceAt() const
    {
        return m_backlog.nextServiceAt();
    }

    /// Executes the held requests whose time has come.
    /// @return as handle() does
    std::vector<OutgoingPiece> serveHeld(std::int64_t now);

    /// A frame of ours has its last byte on the wire at `at`.
    void replyEnded(std::int64_t at)
    {
        m_silence.frameEnded(at);
    }

    /// The host is another one, or gone. What it asked is executed all the same.
    void lineReset();

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
    std::mt19937 m_random;
    ExchangeCounts m_counts;
    SilenceMeter m_silence;
    Backlog m_backlog;
    ReplySlots m_slots;
    std::int64_t m_requestEnd = 0; ///< of the request last seen
};

#endif
