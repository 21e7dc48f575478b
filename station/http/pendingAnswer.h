#ifndef PENDING_ANSWER_H
#define PENDING_ANSWER_H

#include "http/httpMessages.h"
#include "http/wakeup.h"

#include <mutex>

/// The answer to one request, which any thread may give, at any time.
///
///   the route answers at once:   give()  take()
///   the route answers later:     take() is empty, the connection rests ... give() wakes  take()
///   the connection dies first:   give() into an object that nobody looks at
///
/// The server and the route share it, so neither has to outlive the other.
class PendingAnswer
{
public:
    explicit PendingAnswer(std::shared_ptr<const Wakeup> wakeup) : m_wakeup(std::move(wakeup)) {}

    /// The first answer counts.
    void give(HttpResponse response);

    /// Of the HTTP thread: the answer, once; empty: not given yet. From then on give() wakes the
    /// thread.
    std::optional<HttpResponse> take();

    /// Whether take() would give something.
    bool isGiven() const;

private:
    const std::shared_ptr<const Wakeup> m_wakeup;
    mutable std::mutex m_mutex;             ///< guards all members below
    std::optional<HttpResponse> m_response; ///< until it is taken
    bool m_isAnswered = false;
    bool m_isAwaited = false;
};

/// The function that gives the answer. When its last copy goes without a call, the answer is 500:
/// a client never waits for an answer that cannot come.
HttpAnswer answerFunction(const std::shared_ptr<PendingAnswer>& pending);

#endif
