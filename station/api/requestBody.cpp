#include "api/requestBody.h"

#include "plan/tagText.h"
#include "values/jsonKeys.h"

#include <QJsonDocument>

#include <algorithm>

namespace {

[[noreturn]] void refuse(const QString& sentence)
{
    throw ApiError(ApiError::BAD_REQUEST, sentence);
}

} // namespace

QJsonObject requestObject(const QByteArray& body, KnownKeys keys)
{
    const QString keyProblem = jsonKeyProblem(body);
    if (!keyProblem.isEmpty()) refuse(QLatin1String("the body cannot be taken: ") + keyProblem);
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        refuse(QString(QLatin1String("the body is not JSON: %1 at byte %2"))
                   .arg(error.errorString())
                   .arg(error.offset));
    if (!document.isObject()) refuse(QLatin1String("the body is no JSON object"));
    mustHaveOnly(document.object(), keys, QLatin1String("the request"));
    return document.object();
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
