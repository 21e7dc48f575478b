#ifndef MODEL_LINE_H
#define MODEL_LINE_H

#include "modelPlc.h"
#include "wire/lineTiming.h"

#include <functional>
#include <map>

/// The way to a model PLC and back. Each station answers its requests in their order, one after the
/// other, and begins each answer 2 ms after its request. Times are microseconds.
class ModelLine
{
public:
    enum { TURNAROUND = 2000, ALL_STATIONS = -1, ONCE = -1 };

    /// What comes back for one request.
    struct Coming
    {
        qint64 delay;     ///< from the request's end to the answer's begin
        QByteArray bytes; ///< empty: nothing
    };
    using Disturb = std::function<void(const QByteArray& request, Coming& coming)>;

    /// No answer begins meanwhile; all that was asked is answered afterwards.
    struct Stall
    {
        int station;
        qint64 from;
        qint64 until;
    };

    ModelLine(ModelPlc& plc, const LineTiming& timing) : m_plc(plc), m_timing(timing) {}

    /// A request whose first byte goes out now.
    void send(const QByteArray& request, qint64 now);

    bool isQuiet() const
    {
        return m_coming.empty();
    }

    /// When the next bytes are there. Not of a quiet line.
    qint64 nextAt() const
    {
        return m_coming.begin()->first;
    }
    QByteArray takeNext();

    /// What is on its way gets lost.
    void cut()
    {
        m_coming.clear();
    }

    std::function<bool()> losesRequest; ///< one that the PLC is not to hear of
    Disturb disturb;                    ///< may change what comes
    std::function<qint64()> comesAgain; ///< so long behind itself; ONCE: not at all
    Stall stall = {ALL_STATIONS, -1, -1};
    bool echoes = false; ///< each request comes back ahead of its answer

private:
    void answer(int station, qint64 begins, const QByteArray& bytes);
    qint64 behindStall(int station, qint64 begins) const;

    ModelPlc& m_plc;
    const LineTiming m_timing;
    std::multimap<qint64, QByteArray> m_coming; ///< by the time of the last byte
    std::map<int, qint64> m_busyUntil;          ///< by station
};

#endif
