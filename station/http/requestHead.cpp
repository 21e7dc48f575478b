#include "http/requestHead.h"

#include "http/requestFraming.h"
#include "http/requestTarget.h"

JudgedHead judgedHead(const RequestHead& head, const QString& peer, RequestHandler& handler)
{
    JudgedHead judged;
    judged.refusal = framingRefusal(head);
    if (judged.refusal) {
        judged.sequel = JudgedHead::CONNECTION_ENDS;
        return judged;
    }
    const auto target = requestTarget(head.target);
    if (!target) {
        judged.refusal = errorResponse(400, QStringLiteral("the path is not well formed"));
        return judged;
    }
    judged.request.method = head.method;
    judged.request.path = target->path;
    judged.request.query = target->query;
    judged.request.headers = head.headers;
    judged.request.peer = peer;
    judged.refusal = handler.refusal(judged.request);
    return judged;
}
