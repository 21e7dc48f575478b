#include "http/requestHead.h"

#include "http/requestTarget.h"

JudgedHead judgedHead(const RequestHead& head, const QString& peer)
{
    JudgedHead judged;
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
    return judged;
}
