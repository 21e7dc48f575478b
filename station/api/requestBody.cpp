#include "api/requestBody.h"

#include "plan/tagText.h"
#include "values/strangersJson.h"

#include <algorithm>

namespace {

[[noreturn]] void refuse(const QString& sentence)
{
    throw ApiError(ApiError::BAD_REQUEST, sentence);
}

} // namespace

QJsonObject requestObject(const QByteArray& body, KnownKeys keys)
{
    const StrangersJson read = strangersObject(body);
    if (!read.problem.isEmpty()) refuse(QLatin1String("the body ") + read.problem);
    mustHaveOnly(read.object, keys, QLatin1String("the request"));
    return read.object;
}

void mustHaveOnly(const QJsonObject& object, KnownKeys keys, const QString& what)
{
    for (const QString& key : object.keys()) {
        const bool isKnown = std::any_of(keys.begin(), keys.end(), [&key](const char* known) {
            return key == QLatin1String(known);
        });
        if (!isKnown) refuse(what + QLatin1String(" has the unknown key ") + quoted(key));
    }
}

QString textIn(const QJsonObject& object, const char* key, const QString& what)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isString())
        refuse(QString(QLatin1String("%1 has no text %2")).arg(what, quoted(QLatin1String(key))));
    return value.toString();
}
