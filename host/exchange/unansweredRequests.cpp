#include "exchange/unansweredRequests.h"

#include "exchange/replyRecogniser.h"

#include <algorithm>
#include <limits>

namespace {

const qint64 LONG_AGO = std::numeric_limits<qint64>::min() / 2;

bool areOfOneStation(const SENT_ATTEMPT& one, const SENT_ATTEMPT& other)
{
    return one.request.at(0) == other.request.at(0);
}

template <typename Condition>
void removeIf(std::vector<SENT_ATTEMPT>& attempts, Condition condition)
{
    attempts.erase(std::remove_if(attempts.begin(), attempts.end(), condition), attempts.end());
}

} // namespace

void UnansweredRequests::add(const QByteArray& request, int replyLength, qint64 sent, qint64 wait,
                             qint64 unseen)
{
    SENT_ATTEMPT attempt;
    attempt.request = request;
    attempt.replyLength = replyLength;
    attempt.signature = replySignature(request, replyLength);
    attempt.wait = wait;
    attempt.timeOut = sent + wait;
    attempt.since = sent;
    attempt.service = 2 * wait + unseen;
    if (m_attempts.size() >= MOST_KEPT) m_attempts.erase(m_attempts.begin());
    m_attempts.push_back(attempt);
    chain();
}

/// Each answer is begun when the one before it has come.
void UnansweredRequests::chain()
{
    qint64 before = LONG_AGO;
    for (SENT_ATTEMPT& attempt : m_attempts) {
        attempt.until = std::max(attempt.until, std::max(before, attempt.since) + attempt.service);
        before = attempt.until;
    }
}

size_t UnansweredRequests::oldestOf(const QByteArray& signature) const
{
    const auto found =
        std::find_if(m_attempts.begin(), m_attempts.end(),
                     [&](const SENT_ATTEMPT& attempt) { return attempt.signature == signature; });
    return size_t(found - m_attempts.begin());
}

/// As if the last attempt was answered.
qint64 UnansweredRequests::tookAtLeast(const QByteArray& signature, qint64 now) const
{
    qint64 latest = LONG_AGO;
    for (const SENT_ATTEMPT& attempt : m_attempts) {
        if (attempt.signature == signature) latest = std::max(latest, attempt.since);
    }
    return now - latest;
}

/// Whichever attempt it was the answer to, none of those behind this one was begun before.
/// @return how long it took at most
qint64 UnansweredRequests::answerCame(size_t index, qint64 now)
{
    const qint64 took = now - m_attempts[index].since;
    for (size_t i = index + 1; i < m_attempts.size(); ++i) {
        SENT_ATTEMPT& behind = m_attempts[i];
        if (!areOfOneStation(behind, m_attempts[index])) continue;
        behind.queued = true;
        behind.since = std::max(behind.since, now);
        behind.service = std::max(behind.service, took + behind.wait);
    }
    return took;
}

/// A station answers in order, so what came answers the oldest attempt or one behind it. How long
/// the others may take is known now.
qint64 UnansweredRequests::answered(const QByteArray& signature, qint64 now)
{
    const size_t oldest = oldestOf(signature);
    if (oldest == m_attempts.size()) return 0;
    const qint64 atLeast = tookAtLeast(signature, now);
    const qint64 took = answerCame(oldest, now);
    m_attempts.erase(m_attempts.begin() + std::ptrdiff_t(oldest));
    for (SENT_ATTEMPT& attempt : m_attempts) {
        if (attempt.signature != signature) continue;
        attempt.service = std::max(2 * attempt.wait, took + attempt.wait);
        attempt.until = attempt.since;
    }
    chain();
    return atLeast;
}

void UnansweredRequests::forgetBefore(const QByteArray& signature)
{
    const size_t first = oldestOf(signature);
    if (first == m_attempts.size()) return;
    const SENT_ATTEMPT reached = m_attempts[first];
    bool isBefore = true;
    removeIf(m_attempts, [&](const SENT_ATTEMPT& attempt) {
        if (attempt.signature == reached.signature) isBefore = false;
        return isBefore && areOfOneStation(attempt, reached);
    });
}

std::optional<LATE_ANSWER> UnansweredRequests::takeLate(QByteArray& received,
                                                        const QByteArray& asked, qint64 now)
{
    for (size_t i = 0; i < m_attempts.size(); ++i) {
        SENT_ATTEMPT& attempt = m_attempts[i];
        if (attempt.seen || attempt.signature == asked) continue;
        const int at = replyPosition(received, attempt.signature, attempt.replyLength);
        if (at < 0) continue;
        received.remove(at, attempt.replyLength);
        attempt.seen = true;
        const qint64 took = tookAtLeast(attempt.signature, now);
        answerCame(i, now);
        chain();
        return LATE_ANSWER{attempt.replyLength, took};
    }
    return std::nullopt;
}

bool UnansweredRequests::isAlone(const QByteArray& signature) const
{
    const auto ofStation = [&](const SENT_ATTEMPT& attempt) {
        return attempt.signature.at(0) == signature.at(0);
    };
    return std::count_if(m_attempts.begin(), m_attempts.end(), ofStation) == 1;
}

void UnansweredRequests::settle(const QByteArray& signature)
{
    for (SENT_ATTEMPT& attempt : m_attempts) {
        if (attempt.signature == signature) attempt.settled = true;
    }
}

/// What was waited for in vain must not be left to be taken for answered instead of a new request,
/// which then would hold back the next one, and so on for ever.
void UnansweredRequests::forgetExpired(qint64 now)
{
    removeIf(m_attempts, [now](const SENT_ATTEMPT& attempt) { return attempt.until <= now; });
}

qint64 UnansweredRequests::until(const QByteArray& signature) const
{
    qint64 latest = LONG_AGO;
    for (const SENT_ATTEMPT& attempt : m_attempts) {
        if (attempt.signature == signature) latest = std::max(latest, attempt.until);
    }
    return latest;
}

qint64 UnansweredRequests::probablyUntil() const
{
    qint64 latest = LONG_AGO;
    for (const SENT_ATTEMPT& attempt : m_attempts)
        latest = std::max(latest, attempt.queued ? attempt.until : attempt.since + attempt.service);
    return latest;
}

qint64 UnansweredRequests::until() const
{
    qint64 latest = LONG_AGO;
    for (const SENT_ATTEMPT& attempt : m_attempts)
        latest = std::max(latest, attempt.until);
    return latest;
}
