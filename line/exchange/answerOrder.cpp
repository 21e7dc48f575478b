#include "exchange/answerOrder.h"

#include "wire/replyFrames.h"

#include <algorithm>

namespace {

bool answers(const QByteArray& signature, const AnswerOrder::Asked& asked)
{
    return signature == answerSignature(asked.sent) || signature == refusalSignature(asked.sent);
}

} // namespace

void AnswerOrder::ask(const QByteArray& sent, qint64 at, quint64 request, bool isCopyDue)
{
    if (!m_asked.empty() && m_asked.back().sent == sent) {
        m_asked.back().at = at;
        ++m_asked.back().times;
        return;
    }
    m_asked.push_back(Asked{sent, at, at, 1, request, isCopyDue});
}

bool AnswerOrder::mayCome(const QByteArray& signature) const
{
    return signature == m_last ||
           std::find(m_unasked.begin(), m_unasked.end(), signature) != m_unasked.end() ||
           std::any_of(m_asked.begin(), m_asked.end(),
                       [&](const Asked& asked) { return answers(signature, asked); });
}

/// The reply counts as the answer to the oldest request that it can answer. No reply to
/// the requests before it comes any more, so they are dropped. The requests behind it stay
/// outstanding. A request that was sent several times stays, too, because its answer may come as
/// often; an answer to a later request ends it.
AnswerOrder::Taken AnswerOrder::take(const QByteArray& reply)
{
    Taken taken = {false, false, false, Asked()};
    const QByteArray signature = signatureOf(reply);
    const auto canAnswer = [&](const Asked& asked) { return answers(signature, asked); };
    const auto oldest = std::find_if(m_asked.begin(), m_asked.end(), canAnswer);
    const bool isRefusal = exceptionCodeOf(reply) >= 0;
    if (oldest == m_asked.end() || (isRefusal && signature == m_last)) {
        noteUnasked(signature);
        return taken;
    }
    taken.isCopy = oldest->isCopyDue && !isRefusal;
    if (taken.isCopy) {
        oldest->isCopyDue = false;
        return taken;
    }
    taken.isAsked = true;
    taken.asked = *oldest;
    taken.isSure = (m_doubt != UNEXPLAINED || oldest->isFence()) &&
                   std::none_of(oldest + 1, m_asked.end(), canAnswer);
    m_last = signature;
    m_lastRequest = oldest->sent;
    m_asked.erase(m_asked.begin(), oldest->times > 1 ? oldest : oldest + 1);
    if (m_asked.empty() && taken.asked.isFence()) {
        m_doubt = IN_STEP;
        m_unasked.clear();
    }
    return taken;
}

void AnswerOrder::noteUnasked(const QByteArray& signature)
{
    doubt(signature == m_last ? CAME_AGAIN : UNEXPLAINED);
    if (signature != m_last && m_unasked.size() < MOST_KEPT) m_unasked.push_back(signature);
}
