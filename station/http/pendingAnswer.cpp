#include "http/pendingAnswer.h"

namespace {

/// Shared by the copies of an answer function.
class Giver
{
public:
    explicit Giver(std::shared_ptr<PendingAnswer> pending) : m_pending(std::move(pending)) {}
    ~Giver()
    {
        m_pending->give(errorResponse(
            500, QStringLiteral("the station dropped the request without an answer")));
    }
    Giver(const Giver&) = delete;
    Giver& operator=(const Giver&) = delete;

    void give(HttpResponse response) const
    {
        m_pending->give(std::move(response));
    }

private:
    const std::shared_ptr<PendingAnswer> m_pending;
};

} // namespace

void PendingAnswer::give(HttpResponse response)
{
    bool isAwaited;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isAnswered) return;
        m_isAnswered = true;
        m_response = std::move(response);
        isAwaited = m_isAwaited;
    }
    if (isAwaited) m_wakeup->wake();
}

std::optional<HttpResponse> PendingAnswer::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_isAwaited = true;
    return std::exchange(m_response, std::nullopt);
}

bool PendingAnswer::isGiven() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_response.has_value();
}

HttpAnswer answerFunction(const std::shared_ptr<PendingAnswer>& pending)
{
    const auto giver = std::make_shared<const Giver>(pending);
    return [giver](HttpResponse response) { giver->give(std::move(response)); };
}
