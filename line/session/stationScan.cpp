#include "session/stationScan.h"

#include "exchange/fenceChoice.h"
#include "wire/frameShape.h"
#include "wire/replyFrames.h"

#include <algorithm>
#include <utility>

namespace {

enum { BYTES_PER_REGISTER = 2, LATE = -1 };

/// Exceptions of a gateway on behalf of a station that it does not reach
/// (MODBUS Application Protocol V1.1b3, 7).
enum { GATEWAY_PATH_UNAVAILABLE = 10, GATEWAY_TARGET_DID_NOT_RESPOND = 11 };

bool isOfGateway(const EndedExchange& ended)
{
    if (ended.end != END_REFUSED) return false;
    const int code = exceptionCodeOf(ended.reply);
    return code == GATEWAY_PATH_UNAVAILABLE || code == GATEWAY_TARGET_DID_NOT_RESPOND;
}

} // namespace

StationScan::StationScan(const LineTiming& timing, const Settings& settings)
    : m_timing(timing), m_settings(settings), m_machine(timing, settings.exchange)
{
    for (const int station : settings.stations)
        m_signs[station] = NO_SIGN;
}

ExchangeMachine::Step StationScan::advance(qint64 now)
{
    if (m_asked == 0)
        m_machine.linkOpened(now); // keeps the silent interval ahead of the first frame
    while (true) {
        if (m_machine.isFree()) askNext(now);
        const ExchangeMachine::Step step = m_machine.advance(now);
        if (!step.send.isEmpty()) m_requestEndAt = now + m_timing.frame(int(step.send.size()));
        takeEnded(now);
        if (isOver() || !m_machine.isFree()) return step;
    }
}

void StationScan::received(const QByteArray& bytes, qint64 now)
{
    m_machine.received(bytes, now);
    takeEnded(now);
}

/// Goes on to the next station that was not found. The scan is over behind the last station of the
/// last round.
void StationScan::askNext(qint64 now)
{
    for (; !isOver(); ++m_round, m_next = 0) {
        while (m_next < m_settings.stations.size()) {
            const int station = m_settings.stations[m_next++];
            if (m_signs[station] == FOUND) continue;
            ++m_asked;
            m_askedStation = station;
            return m_machine.startFence(station, m_settings.exchange.answer, now);
        }
    }
}

void StationScan::takeEnded(qint64 now)
{
    for (const EndedExchange& ended : m_machine.takeEnded())
        take(ended, now);
}

/// An answer of a station that is not asked now is the late answer to an earlier question.
void StationScan::take(const EndedExchange& ended, qint64 now)
{
    if (ended.end == END_SILENT || isOfGateway(ended)) return;
    Sign& sign = m_signs[ended.station];
    if (sign == FOUND) return;
    if (ended.end == END_UNUSABLE) {
        sign = UNCLEAR;
        return;
    }
    sign = FOUND;
    const bool isLate = ended.station != m_askedStation || ended.end == END_LATE;
    // A simulated line may be faster than the line settings say.
    const qint64 replyTime = std::max<qint64>(now - m_requestEndAt, 0);
    m_found.push_back({ended.station, isLate ? qint64(LATE) : replyTime});
}

std::vector<StationScan::Found> StationScan::takeFound()
{
    return std::exchange(m_found, {});
}

std::vector<int> StationScan::unclear() const
{
    std::vector<int> stations;
    for (const auto& [station, sign] : m_signs) {
        if (sign == UNCLEAR) stations.push_back(station);
    }
    return stations;
}

qint64 StationScan::longestTime(const LineTiming& timing, const Settings& settings)
{
    const int longestReply = READ_OVERHEAD + BYTES_PER_REGISTER * FenceChoice::MOST_REGISTERS;
    const qint64 question = timing.silentInterval() + timing.frame(FIXED_REQUEST_BYTES) +
                            settings.exchange.answer + timing.frame(longestReply);
    return qint64(settings.stations.size()) * settings.attempts * question;
}
