#ifndef MODEL_LINE_H
#define MODEL_LINE_H

#include "plcModel.h"
#include "wire/lineTiming.h"

#include <functional>
#include <map>

/// The line between a host and a model PLC. Each station answers its requests in order, one after
/// the other, and begins each answer 2 ms after the request. Times are microseconds.
class ModelLine
{
public:
    enum { TURNAROUND = 2000, ALL_STATIONS = -1, ONCE = -1 };

    /// The answer to a request.
    struct Coming
    {
        qint64 delay;     ///< from the end of the request to the begin of the answer
        QByteArray bytes; ///< empty: no answer
    };
    using Disturb = std::function<void(const QByteArray& request, Coming& coming)>;

    /// A time in which no answer begins. Its requests are answered afterwards.
    struct Stall
    {
        int station;
        qint64 from;
        qint64 until;
    };

    ModelLine(PlcModel& plc, const LineTiming& timing) : m_plc(plc), m_timing(timing) {}

    /// Sends a request; its first byte goes out at `now`.
    void send(const QByteArray& request, qint64 now);

    bool isQuiet() const
    {
        return m_coming.empty();
    }

    /// The time at which the next bytes have come. Not for a quiet line.
    qint64 nextAt() const
    {
        return m_coming.begin()->first;
    }
    QByteArray takeNext();

    /// Loses all bytes on the line.
    void cut()
    {
        m_coming.clear();
    }

    std::function<bool()> losesRequest; ///< true: the request does not reach the PLC
    Disturb disturb;                    ///< may change the answer
    std::function<qint64()> comesAgain; ///< delay of the answer's second copy; ONCE: no copy
    Stall stall = {ALL_STATIONS, -1, -1};
    bool echoes = false; ///< the line returns each request ahead of its answer

private:
    void answer(int station, qint64 begins, const QByteArray& bytes);
    qint64 behindStall(int station, qint64 begins) const;

    PlcModel& m_plc;
    const LineTiming m_timing;
    std::multimap<qint64, QByteArray> m_coming; ///< by the time of the last byte
    std::map<int, qint64> m_busyUntil;          ///< by station
};

#endif
