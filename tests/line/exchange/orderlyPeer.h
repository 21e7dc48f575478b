#ifndef ORDERLY_PEER_H
#define ORDERLY_PEER_H

#include "modbusFrames.h"

#include <QByteArray>

#include <map>
#include <random>
#include <set>

/// What a peer does to its answers. Shares are 0 to 1, times are microseconds.
struct Habits
{
    qint64 service = 2000;     ///< from a request, or the answer ahead of it, to the answer's begin
    double late = 0;           ///< share of answers that are later than that
    double lateness = 0;       ///< by up to so many of the host's time-outs
    qint64 timeOut = 0;        ///< that lateness counts in; 0: the one that the host has just then
    bool isAlwaysLate = false; ///< by all of the lateness, each time
    double lost = 0;           ///< share of requests that are never heard
    double mute = 0;           ///< share of answers that are lost
    double doubled = 0;        ///< share of answers that come twice
    qint64 doubledAfter = 0;   ///< the second copy comes up to so long behind the first
    double corrupt = 0;        ///< share of answers with one to three flipped bits
    double stray = 0;          ///< share of answers with up to three stray bytes ahead or behind
    double busy = 0;           ///< share of requests that are refused
    int firstRefused = 65536;  ///< registers from here on are refused
    qint64 stallEvery = 0;     ///< begin to begin; 0: it never stalls
    qint64 stallFor = 0;       ///< then all that was asked is answered, in order
    int stalledStation = 0;    ///< 0: all of them
    bool echoes = false;       ///< returns what is sent ahead of all else
};

/// A link with stations that answer in order, each its own requests. It shares no code with the
/// host. What a station answers names the request: register r of station s holds what valueOf()
/// says until it is written.
class OrderlyPeer
{
public:
    OrderlyPeer(const Habits& given, unsigned seed) : habits(given), m_random(seed) {}
    virtual ~OrderlyPeer() = default;

    /// A request that has ended on the line at `at`.
    /// @param timeOut  how long the host waits for the answer
    virtual void hear(const QByteArray& request, qint64 at, qint64 timeOut);

    /// When the next bytes come, or -1.
    qint64 nextAt() const;
    QByteArray takeNext();

    /// What is on its way gets lost.
    void cutLine()
    {
        m_coming.clear();
    }

    static int valueOf(int station, int reg)
    {
        return (reg * 31 + station * 1009) & 0xFFFF;
    }

    /// What a register or coil was written with last; -1: never.
    int written(int station, int function, int place) const;

    std::map<int, bool> isSilent; ///< by station
    Habits habits;
    int doublings = 0;
    int stalls = 0;

protected:
    double drawn();
    QByteArray answerTo(const QByteArray& request);

    /// Bytes come at a time; those of the same time in the order of the calls.
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
