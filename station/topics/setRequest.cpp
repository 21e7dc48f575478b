#include "topics/setRequest.h"

#include "plan/tagValue.h"
#include "values/jsonKeys.h"
#include "values/jsonText.h"
#include "values/writtenValue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

enum { LONGEST_ID = 256 };

/// Beyond it, JSON's readers do not agree on whole numbers (RFC 8259, 6).
const double MOST_EXACT = 0x1p53 - 1;

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString objectProblem(const QByteArray& payload, QJsonObject& object)
{
    if (payload.size() > SetRequest::LONGEST) return text("it is too long");
    if (QString::fromUtf8(payload).toUtf8() != payload) return text("it is not UTF-8");
    const QString keyProblem = jsonKeyProblem(payload);
    if (!keyProblem.isEmpty()) return keyProblem;
    QJsonParseError error = {};
    const QJsonDocument document = QJsonDocument::fromJson(payload, &error);
    if (error.error != QJsonParseError::NoError) return text("it is not JSON");
    if (!document.isObject()) return text("it is no JSON object");
    object = document.object();
    return QString();
}

bool isWhole(double number)
{
    return std::fabs(number) <= MOST_EXACT && std::trunc(number) == number;
}

QString takeId(const QJsonValue& id, SetRequest& request)
{
    if (id.isUndefined() || id.isNull()) return QString();
    const bool isShort = id.isString() && id.toString().size() <= LONGEST_ID;
    if (!isShort && !(id.isDouble() && isWhole(id.toDouble())))
        return text("\"id\" is no whole number and no text of up to 256 characters");
    JsonText json;
    request.id =
        (isShort ? json.text(id.toString()) : json.integer(qint64(id.toDouble()))).document();
    return QString();
}

QString takeExpires(const QJsonValue& expires, SetRequest& request)
{
    if (expires.isUndefined() || expires.isNull()) return QString();
    if (!expires.isDouble() || !isWhole(expires.toDouble()))
        return text("\"expires\" is no time in milliseconds since 1970");
    request.expires = qint64(expires.toDouble());
    return QString();
}

QString takeValue(const QJsonValue& value, SetRequest& request)
{
    if (value.isUndefined()) return text("it has no \"v\"");
    if (!value.isDouble() && !value.isBool()) return text("\"v\" is no number and no boolean");
    request.value = value;
    return QString();
}

} // namespace

/// The id comes first: what else is wrong is told to the one who asked.
SetRequest setRequestOf(const QByteArray& payload)
{
    SetRequest request;
    QJsonObject object;
    request.problem = objectProblem(payload, object);
    if (request.problem.isEmpty())
        request.problem = takeId(object.value(QLatin1String("id")), request);
    if (request.problem.isEmpty())
        request.problem = takeExpires(object.value(QLatin1String("expires")), request);
    if (request.problem.isEmpty())
        request.problem = takeValue(object.value(QLatin1String("v")), request);
    return request;
}

/// The bytes decide, so that no number is rounded on its way to the rule of what fits.
std::variant<MetricValue, UnfitCommand> setValue(const Tag& tag, const QJsonValue& value)
{
    const std::variant<QByteArray, UnfitValue> bytes = writtenBytes(tag, value);
    if (const auto* const unfit = std::get_if<UnfitValue>(&bytes))
        return UnfitCommand{unfit->problem};
    const double number = tagValueNumber(tag, std::get<QByteArray>(bytes)).value_or(0);
    if (tag.isBit()) return MetricValue(number != 0);
    if (tag.type == Tag::FLOAT32) return MetricValue(float(number));
    return MetricValue(qint64(number));
}
