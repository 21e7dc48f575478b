#include "api/writeRequest.h"

#include "api/requestBody.h"

WriteRequest writeRequestOf(const QByteArray& body)
{
    const QString what = QLatin1String("the request");
    const QJsonObject object = requestObject(body, {"link", "tag", "value"});
    WriteRequest request;
    request.link = textIn(object, "link", what);
    request.tag = textIn(object, "tag", what);
    request.value = object.value(QLatin1String("value"));
    if (request.value.isUndefined())
        throw ApiError(ApiError::BAD_REQUEST, QLatin1String("the request has no \"value\""));
    return request;
}
