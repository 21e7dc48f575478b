#include "orderlyPeer.h"

#include <algorithm>

namespace {

enum { READ_HOLDING = 3, READ_INPUT = 4, MOST_WORDS = 125, FIELDS_AT = 2, COUNT_AT = 4 };
enum { ILLEGAL_ADDRESS = 2, BUSY = 6 };

} // namespace

double OrderlyPeer::drawn()
{
    return double(m_random()) / 4294967296.0;
}

qint64 OrderlyPeer::below(qint64 bound)
{
    return bound <= 0 ? 0 : qint64(drawn() * double(bound));
}

qint64 OrderlyPeer::nextAt() const
{
    return m_coming.empty() ? -1 : m_coming.begin()->first;
}

QByteArray OrderlyPeer::takeNext()
{
    const QByteArray bytes = m_coming.begin()->second;
    m_coming.erase(m_coming.begin());
    return bytes;
}

int OrderlyPeer::written(int station, int function, int place) const
{
    const auto found = m_written.find({station, {function, place}});
    return found == m_written.end() ? -1 : found->second;
}

void OrderlyPeer::hear(const QByteArray& request, qint64 at, qint64 timeOut)
{
    const int station = byteOf(request, 0);
    if (habits.echoes) m_coming.emplace(at, request);
    if (isSilent[station] || drawn() < habits.lost) return;
    const qint64 begins = answerBegins(request, at, timeOut);
    QByteArray answer = answerTo(request);
    if (drawn() < habits.mute) return;
    const QByteArray whole = answer;
    disturb(answer);
    send(station, begins, answer);
    if (drawn() >= habits.doubled) return;
    ++doublings;
    QByteArray again = whole;
    if (drawn() < habits.corrupt) disturb(again);
    send(station, m_lastAnswer[station] + 1 + below(habits.doubledAfter), again);
}

void OrderlyPeer::send(int station, qint64 at, const QByteArray& bytes)
{
    qint64& last = m_lastAnswer[station];
    last = std::max(last + 1, at);
    m_coming.emplace(last, bytes);
}

qint64 OrderlyPeer::answerBegins(const QByteArray& request, qint64 at, qint64 timeOut)
{
    const int station = byteOf(request, 0);
    qint64 begins = std::max(at, m_lastAnswer[station]) + habits.service;
    if (drawn() < habits.late) {
        const qint64 unit = habits.timeOut > 0 ? habits.timeOut : timeOut;
        const qint64 most = qint64(habits.lateness * double(unit));
        begins = std::max(begins, at + (habits.isAlwaysLate ? most : below(most)));
    }
    return behindStalls(station, begins);
}

qint64 OrderlyPeer::behindStalls(int station, qint64 at)
{
    if (habits.stallEvery == 0) return at;
    if (habits.stalledStation != 0 && station != habits.stalledStation) return at;
    const qint64 into = at % habits.stallEvery;
    if (at < habits.stallEvery || into >= habits.stallFor) return at;
    ++stalls;
    return at + habits.stallFor - into;
}

QByteArray OrderlyPeer::answerTo(const QByteArray& request)
{
    const int function = byteOf(request, 1);
    const int first = wordOf(request, FIELDS_AT);
    const bool isBusy = drawn() < habits.busy;
    if (isBusy || first >= habits.firstRefused)
        return refusalOf(request, isBusy ? BUSY : ILLEGAL_ADDRESS);
    if (function == READ_HOLDING || function == READ_INPUT) return readReply(request);
    m_written[{byteOf(request, 0), {function, first}}] = wordOf(request, COUNT_AT);
    return frameWith(request.left(6));
}

QByteArray OrderlyPeer::readReply(const QByteArray& request) const
{
    const int station = byteOf(request, 0);
    return readReplyOf(request, [=](int number) { return valueOf(station, number); });
}

void OrderlyPeer::disturb(QByteArray& answer)
{
    if (drawn() < habits.corrupt) {
        const int flips = 1 + int(below(3));
        for (int i = 0; i < flips; ++i) {
            const int at = int(below(answer.size()));
            answer[at] = static_cast<char>(byteOf(answer, at) ^ 1 << below(8));
        }
    }
    if (drawn() >= habits.stray) return;
    QByteArray stray;
    for (qint64 left = 1 + below(3); left > 0; --left)
        stray.append(static_cast<char>(below(256)));
    answer = drawn() < 0.5 ? stray + answer : answer + stray;
}
