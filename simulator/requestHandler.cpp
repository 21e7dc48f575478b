#include "requestHandler.h"

#include "faultedReply.h"

#include <algorithm>

RequestHandler::RequestHandler(PlcStations& stations, const LinePacing& pacing,
                               const FaultSettings& faults, unsigned seed)
    : m_stations(stations),
      m_pacing(pacing),
      m_settings(faults),
      m_schedule(faults.rates, seed, faults.exchanges),
      m_random(seed)
{
}

std::vector<OutgoingPiece> RequestHandler::handle(const Request& request)
{
    ++m_counts.requests;
    m_silence.requestBegan(request.firstByteAt);
    m_requestEnd = m_pacing.requestEnd(request, m_requestEnd);
    m_silence.frameEnded(m_requestEnd);

    const int station = request.bytes[STATION_AT];
    if (station == BROADCAST_STATION) {
        executeBroadcast(request);
        return {};
    }
    if (!m_stations.find(station)) {
        ++m_counts.foreign;
        return {};
    }
    const auto silent = m_settings.silentStations.find(station);
    if (silent != m_settings.silentStations.end() && m_schedule.isSilent(silent->second)) {
        m_schedule.next(); // an exchange like any other, of the fault exchanges that there are
        ++m_counts.silent;
        return {};
    }
    return exchange(request);
}

void RequestHandler::lineReset()
{
    m_silence.lineReset();
    m_requestEnd = 0;
    m_repliesEnd = 0;
}

std::vector<OutgoingPiece> RequestHandler::exchange(const Request& request)
{
    const Fault fault = nextFault();
    if (fault == FAULT_DROP_REQUEST) return {};
    const Bytes reply = replyTo(request, fault);
    if (reply.empty() || fault == FAULT_DROP) return {};
    return scheduled(faultedReply(fault, reply, m_random), fault);
}

Bytes RequestHandler::replyTo(const Request& request, Fault fault)
{
    if (fault == FAULT_EXCEPTION) return exceptionReply(request.bytes, m_settings.exceptionCode);
    return m_server.serve(request.bytes, m_stations);
}

void RequestHandler::executeBroadcast(const Request& request)
{
    ++m_counts.broadcasts;
    m_server.serve(request.bytes, m_stations, stationsThatAreSilentNow());
}

std::set<int> RequestHandler::stationsThatAreSilentNow()
{
    std::set<int> silent;
    for (const auto& [station, share] : m_settings.silentStations) {
        if (m_schedule.isSilent(share)) silent.insert(station);
    }
    return silent;
}

std::vector<OutgoingPiece> RequestHandler::scheduled(const Bytes& reply, Fault fault)
{
    std::int64_t start = std::max(m_pacing.replyStart(m_requestEnd), m_repliesEnd);
    if (fault == FAULT_DELAY) start += m_settings.delayNs;
    m_repliesEnd = start + m_pacing.pacedTime(reply.size());
    ++m_counts.replies;
    return m_pacing.pieces(start, reply);
}

Fault RequestHandler::nextFault()
{
    const Fault fault = m_schedule.next();
    if (fault != NO_FAULT) ++m_counts.faults[fault];
    return fault;
}
