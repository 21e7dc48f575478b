#include "modelLine.h"

#include <algorithm>

void ModelLine::send(const QByteArray& request, qint64 now)
{
    const int station = static_cast<unsigned char>(request.at(0));
    const qint64 end = now + m_timing.frame(int(request.size()));
    const bool isLost = losesRequest && losesRequest();
    Coming coming = {TURNAROUND, isLost ? QByteArray() : m_plc.answer(request)};
    if (disturb) disturb(request, coming);
    if (echoes) m_coming.emplace(end, request);
    if (coming.bytes.isEmpty()) return;
    answer(station, end + coming.delay, coming.bytes);
    const qint64 again = comesAgain ? comesAgain() : qint64(ONCE);
    if (again != ONCE) answer(station, m_busyUntil[station] + again, coming.bytes);
}

void ModelLine::answer(int station, qint64 begins, const QByteArray& bytes)
{
    qint64& busyUntil = m_busyUntil[station];
    busyUntil =
        behindStall(station, std::max(begins, busyUntil)) + m_timing.frame(int(bytes.size()));
    m_coming.emplace(busyUntil, bytes);
}

qint64 ModelLine::behindStall(int station, qint64 begins) const
{
    const bool isMeant = stall.station == ALL_STATIONS || stall.station == station;
    return isMeant && begins >= stall.from ? std::max(begins, stall.until) : begins;
}

QByteArray ModelLine::takeNext()
{
    const QByteArray bytes = m_coming.begin()->second;
    m_coming.erase(m_coming.begin());
    return bytes;
}
