#ifndef ORDERLY_PEER_H
#define ORDERLY_PEER_H

#include "modbusFrames.h"

#include <QByteArray>

#include <map>
#include <random>
#include <set>

/// The faults of a peer. Shares are 0 to 1, times are microseconds.
struct Habits
{
    qint64 service = 2000;     ///< from a request, or the answer before, to the start of the answer
    double late = 0;           ///< share of answers that begin at a random time, or later
    double lateness = 0;       ///< upper limit of that time from the request, in units of timeOut
    qint64 timeOut = 0;        ///< unit of `lateness`; 0: the host's present time-out
    bool isAlwaysLate = false; ///< the random time is always its upper limit
    double lost = 0;           ///< share of requests that no station hears
    double mute = 0;           ///< share of answers that are lost
    double doubled = 0;        ///< share of answers that come twice
    qint64 doubledAfter = 0;   ///< longest time from the first copy to the second copy
    double corrupt = 0;        ///< share of answers with one to three flipped bits
    double stray = 0;          ///< share of answers with up to three stray bytes ahead or behind
    double busy = 0;           ///< share of requests that are refused
    int firstRefused = 65536;  ///< requests for registers from this number on are refused
    qint64 stallEvery = 0;     ///< from the start of a stall to the start of the next; 0: no stalls
    qint64 stallFor = 0;       ///< length of a stall; the waiting requests are answered afterwards
    int stalledStation = 0;    ///< 0: all stations stall
    bool echoes = false;       ///< the link returns each request ahead of all other bytes
};

/// A link with several stations. Each station answers its own requests in order. The class shares
/// no code with the host. The values identify the request: until register r of station s is
/// written, it holds valueOf(s, r).
class OrderlyPeer
{
public:
    OrderlyPeer(const Habits& given, unsigned seed) : habits(given), m_random(seed) {}
    virtual ~OrderlyPeer() = default;

    /// Takes a request.
    /// @param at       time at which the request has ended on the line
    /// @param timeOut  the host's time-out for the answer
    virtual void hear(const QByteArray& request, qint64 at, qint64 timeOut);

    /// Time at which the next bytes come; -1: no bytes are on their way.
    qint64 nextAt() const;
    QByteArray takeNext();

    /// Loses the bytes that are on their way.
    void cutLine()
    {
        m_coming.clear();
    }

    static int valueOf(int station, int reg)
    {
        return (reg * 31 + station * 1009) & 0xFFFF;
    }

    /// The value that was last written to a register or coil; -1: no write came.
    int written(int station, int function, int place) const;

    std::map<int, bool> isSilent; ///< by station
    Habits habits;
    int doublings = 0;
    int stalls = 0;

protected:
    double drawn();
    QByteArray answerTo(const QByteArray& request);

    /// Lets bytes come at a time. Bytes with the same time come in the order of the calls.
    void come(qint64 at, const QByteArray& bytes)
    {
        m_coming.emplace(at, bytes);
    }

private:
    qint64 below(qint64 bound);
    QByteArray readReply(const QByteArray& request) const;
    qint64 answerBegins(const QByteArray& request, qint64 at, qint64 timeOut);
    qint64 behindStalls(int station, qint64 at);
    void disturb(QByteArray& answer);
    void send(int station, qint64 at, const QByteArray& bytes);

    std::mt19937 m_random;
    std::map<int, qint64> m_lastAnswer;
    std::map<std::pair<int, std::pair<int, int>>, int> m_written;
    std::multimap<qint64, QByteArray> m_coming;
};

#endif
