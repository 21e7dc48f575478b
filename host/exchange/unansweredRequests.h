#ifndef UNANSWERED_REQUESTS_H
#define UNANSWERED_REQUESTS_H

#include <QByteArray>

#include <optional>
#include <vector>

/// One attempt whose answer may still come. Times are microseconds.
struct SENT_ATTEMPT
{
    QByteArray request;
    int replyLength = 0;
    QByteArray signature;
    qint64 wait = 0;      ///< how long the attempt was waited for
    qint64 timeOut = 0;   ///< when that was over
    qint64 since = 0;     ///< its answer was not begun before
    qint64 service = 0;   ///< and comes within so long
    qint64 until = 0;     ///< its answer can come no more
    bool settled = false; ///< its request was granted, or doubtfully refused
    bool seen = false;    ///< an answer that came late was put down to it
    bool queued = false;  ///< an answer came to one ahead of it
};

struct LATE_ANSWER
{
    int length;
    qint64 took; ///< at least
};

/// The attempts of all requests that are not surely answered, in the order in which they were sent.
///
/// What is behind the link answers in that order and one after the other. So an answer comes within
/// two time-outs of its request or of the answer ahead of it; or, once one has come, within what
/// that one took and a time-out more. A late answer shortens no wait: it may have come twice.
class UnansweredRequests
{
public:
    enum { MOST_KEPT = 20 }; ///< the oldest beyond that are forgotten

    /// @param unseen  what the answer may take besides, as long as none has come
    void add(const QByteArray& request, int replyLength, qint64 sent, qint64 wait, qint64 unseen);

    /// An answer was taken for one that is asked just now.
    /// @return how long it took at least
    qint64 answered(const QByteArray& signature, qint64 now);

    /// What that station was asked before needs no more be waited for.
    void forgetBefore(const QByteArray& signature);

    /// Cuts the first answer that came late out of what came.
    /// @param asked  signature of the request that is asked just now, if one is
    std::optional<LATE_ANSWER> takeLate(QByteArray& received, const QByteArray& asked, qint64 now);

    /// It is the only one of its station.
    bool isAlone(const QByteArray& signature) const;

    void settle(const QByteArray& signature);
    void forgetExpired(qint64 now);
    void forgetAll()
    {
        m_attempts.clear();
    }

    /// When the last answer of a signature, or of any, can come no more.
    qint64 until(const QByteArray& signature) const;
    qint64 until() const;

    /// The same as long as no answer was lost: what never answered has nothing queued.
    qint64 probablyUntil() const;

    const std::vector<SENT_ATTEMPT>& attempts() const
    {
        return m_attempts;
    }

private:
    size_t oldestOf(const QByteArray& signature) const;
    qint64 tookAtLeast(const QByteArray& signature, qint64 now) const;
    qint64 answerCame(size_t index, qint64 now);
    void chain();

    std::vector<SENT_ATTEMPT> m_attempts;
};

#endif
