#include "requestHandler.h"

#include <algorithm>

namespace {

const std::size_t MOST_REFUSALS = 1000;

/// True when later replies of all stations wait for the faulted reply.
bool holdsEveryone(Fault fault)
{
    return fault == FAULT_DELAY || fault == FAULT_DUPLICATE;
}

} // namespace

RequestHandler::RequestHandler(PlcStations& stations, const LinePacing& pacing,
                               const FaultSettings& faults, unsigned seed)
    : m_stations(stations),
      m_pacing(pacing),
      m_settings(faults),
      m_schedule(faults.rates, seed, faults.exchanges),
      m_random(seed),
      m_backlog(faults.stall)
{
}

std::vector<OutgoingPiece> RequestHandler::handle(const Request& request)
{
    ++m_counts.requests;
    m_silence.requestBegan(request.firstByteAt);
    m_requestEnd = m_pacing.requestEnd(request, m_requestEnd);
    m_silence.frameEnded(m_requestEnd);
    m_backlog.requestSeen(request.lastByteAt);
    m_slots.timeIs(request.lastByteAt);

    const int station = request.bytes[STATION_AT];
    if (station == BROADCAST_STATION) {
        takeBroadcast(request);
        return {};
    }
    if (!m_stations.find(station)) {
        ++m_counts.foreign;
        return {};
    }
    if (isSilentNow(station)) {
        m_schedule.next(); // is drawn all the same, so that later faults do not shift
        ++m_counts.silent;
        return {};
    }
    const Exchange exchange = drawn(request);
    if (exchange.fault == FAULT_DROP_REQUEST) return {};
    if (!m_backlog.holds(station, m_requestEnd)) return serve(exchange, m_requestEnd);
    m_backlog.add(exchange);
    return {};
}

std::vector<OutgoingPiece> RequestHandler::serveHeld(std::int64_t now)
{
    std::vector<OutgoingPiece> all;
    while (const std::optional<std::int64_t> at = m_backlog.nextServiceAt()) {
        if (*at > now) break;
        for (OutgoingPiece& piece : serve(m_backlog.take(), *at))
            all.push_back(std::move(piece));
    }
    return all;
}

void RequestHandler::lineReset()
{
    m_silence.lineReset();
    m_backlog.audienceLeft();
    m_slots.clear();
    m_requestEnd = 0;
}

bool RequestHandler::refuse(const Refusal& refusal)
{
    if (m_settings.refusals.size() >= MOST_REFUSALS) return false;
    m_settings.refusals.push_back(refusal);
    return true;
}

void RequestHandler::setSilent(int station, bool isSilent)
{
    if (isSilent) {
        m_silenced.insert(station);
        return;
    }
    m_silenced.erase(station);
    m_settings.silentStations.erase(station);
}

bool RequestHandler::isSilentNow(int station)
{
    if (m_silenced.count(station) != 0) return true;
    const auto silent = m_settings.silentStations.find(station);
    return silent != m_settings.silentStations.end() && m_schedule.isSilent(silent->second);
}

Exchange RequestHandler::drawn(const Request& request)
{
    Exchange exchange;
    exchange.request = request.bytes;
    exchange.requestEnd = m_requestEnd;
    exchange.lateness = m_schedule.lateness(m_settings.lateShare, m_settings.longestLatenessNs);
    exchange.fault = nextFault();
    exchange.draws = drawsFor(exchange.fault, m_random);
    return exchange;
}

std::vector<OutgoingPiece> RequestHandler::serve(const Exchange& exchange, std::int64_t at)
{
    const Bytes reply = replyTo(exchange);
    if (reply.empty() || exchange.audience == AUDIENCE_NONE) return {};
    const Bytes sent = faultedReply(exchange.fault, reply, exchange.draws);
    if (sent.empty()) return {};
    return scheduled(sent, exchange, at);
}

Bytes RequestHandler::replyTo(const Exchange& exchange)
{
    if (exchange.fault == FAULT_EXCEPTION)
        return exceptionReply(exchange.request, m_settings.exceptionCode);
    return execute(exchange.request, exchange.deaf);
}

/// A station that refuses a broadcast does not execute it, and cannot say so.
Bytes RequestHandler::execute(const Bytes& request, std::set<int> deaf)
{
    const int station = request[STATION_AT];
    if (station != BROADCAST_STATION) {
        const std::optional<int> code = refusalOf(m_settings.refusals, request, station);
        if (!code) return m_server.serve(request, m_stations);
        ++m_counts.refused;
        return exceptionReply(request, *code);
    }
    for (const Refusal& refusal : m_settings.refusals) {
        if (refusalOf({refusal}, request, refusal.station)) deaf.insert(refusal.station);
    }
    return m_server.serve(request, m_stations, deaf);
}

/// Stations that stall execute the broadcast after the stall.
void RequestHandler::takeBroadcast(const Request& request)
{
    ++m_counts.broadcasts;
    std::set<int> deafNow = stationsThatAreSilentNow();
    Exchange later;
    later.request = request.bytes;
    later.requestEnd = m_requestEnd;
    later.deaf = deafNow;
    for (const auto& [station, memory] : m_stations.all())
        (m_backlog.holds(station, m_requestEnd) ? deafNow : later.deaf).insert(station);
    execute(request.bytes, deafNow);
    if (later.deaf.size() < m_stations.all().size()) m_backlog.add(later);
}

std::set<int> RequestHandler::stationsThatAreSilentNow()
{
    std::set<int> silent = m_silenced;
    for (const auto& [station, share] : m_settings.silentStations) {
        if (m_schedule.isSilent(share)) silent.insert(station);
    }
    return silent;
}

std::vector<OutgoingPiece> RequestHandler::scheduled(const Bytes& reply, const Exchange& exchange,
                                                     std::int64_t servedAt)
{
    const int station = exchange.request[STATION_AT];
    const std::int64_t ready = readyAt(exchange, servedAt);
    const std::int64_t start = m_backlog.replyStart(station, ready);
    ++m_counts.replies;
    if (exchange.lateness) ++m_counts.late;
    if (start > ready || servedAt > exchange.requestEnd) ++m_counts.stalled;

    std::vector<OutgoingPiece> pieces =
        m_pacing.pieces(m_slots.take(station, start, m_pacing.pacedTime(reply.size())), reply);
    if (exchange.fault == FAULT_DUPLICATE) addSecondCopy(pieces, reply, station);
    // The time that a stall adds delays only the station itself.
    if (holdsEveryone(exchange.fault)) m_slots.holdEveryone(pieces.back().dueAt - (start - ready));
    return pieces;
}

/// A delay counts from the reply's earliest start. A lateness counts from the request, so that the
/// latenesses of successive replies do not add up.
std::int64_t RequestHandler::readyAt(const Exchange& exchange, std::int64_t servedAt) const
{
    const std::int64_t prompt = std::max(m_pacing.replyStart(exchange.requestEnd), servedAt);
    const std::int64_t ready =
        m_slots.earliest(exchange.request[STATION_AT], prompt + exchange.lateness.value_or(0));
    return exchange.fault == FAULT_DELAY ? ready + m_settings.delayNs : ready;
}

void RequestHandler::addSecondCopy(std::vector<OutgoingPiece>& pieces, const Bytes& reply,
                                   int station)
{
    const std::int64_t start = pieces.back().dueAt + m_settings.duplicateAfterNs;
    for (OutgoingPiece& piece :
         m_pacing.pieces(m_slots.take(station, start, m_pacing.pacedTime(reply.size())), reply))
        pieces.push_back(std::move(piece));
}

Fault RequestHandler::nextFault()
{
    const Fault fault = m_schedule.next();
    if (fault != NO_FAULT) ++m_counts.faults[fault];
    return fault;
}
