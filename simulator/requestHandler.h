#ifndef REQUEST_HANDLER_H
#define REQUEST_HANDLER_H

#include "faultSchedule.h"
#include "linePacing.h"
#include "modbusServer.h"
#include "silenceMeter.h"

#include <array>
#include <map>
#include <set>

struct FaultSettings
{
    FaultRates rates = {};
    std::int64_t exchanges = 0; ///< 0: always
    std::int64_t delayNs = 0;
    int exceptionCode = 6;
    std::map<int, double> silentStations; ///< each with its share of the exchanges
};

/// What happened, for the report.
struct ExchangeCounts
{
    std::int64_t requests = 0; ///< good frames, whomever they are for
    std::int64_t replies = 0;  ///< sent, whatever a fault made of them
    std::int64_t broadcasts = 0;
    std::int64_t foreign = 0; ///< requests to stations that are not here
    std::int64_t silent = 0;  ///< requests to stations that were silent
    std::array<std::int64_t, FAULT_KINDS> faults = {};
};

/// Has requests executed and decides what goes back, and when. Times are nanoseconds.
class RequestHandler
{
public:
    RequestHandler(PlcStations& stations, const LinePacing& pacing, const FaultSettings& faults,
                   unsigned seed);

    /// @return what to send, in the order of its times, behind what was returned before
    std::vector<OutgoingPiece> handle(const Request& request);

    /// A frame of ours has its last byte on the wire at `at`.
    void replyEnded(std::int64_t at)
    {
        m_silence.frameEnded(at);
    }

    /// The host is another one, or gone.
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
    std::vector<OutgoingPiece> exchange(const Request& request);
    Bytes replyTo(const Request& request, Fault fault);
    void executeBroadcast(const Request& request);
    std::set<int> stationsThatAreSilentNow();
    std::vector<OutgoingPiece> scheduled(const Bytes& reply, Fault fault);
    Fault nextFault();

    PlcStations& m_stations;
    ModbusServer m_server;
    LinePacing m_pacing;
    FaultSettings m_settings;
    FaultSchedule m_schedule;
    std::mt19937 m_random;
    ExchangeCounts m_counts;
    SilenceMeter m_silence;
    std::int64_t m_requestEnd = 0; ///< of the request last seen
    std::int64_t m_repliesEnd = 0; ///< of the reply last scheduled
};

#endif
