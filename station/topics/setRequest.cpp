#include "topics/setRequest.h"

#include "plan/tagValue.h"
#include "values/jsonNumbers.h"
#include "values/jsonText.h"
#include "values/strangersJson.h"
#include "values/writtenValue.h"

namespace {

enum { LONGEST_ID = 256 };

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QString objectProblem(const QByteArray& payload, QJsonObject& object)
{
    if (payload.size() > SetRequest::LONGEST) return text("it is too long");
    const StrangersJson read = strangersObject(payload);
    if (!read.problem.isEmpty()) return text("it ") + read.problem;
    object = read.object;
    return QString();
}

QString takeId(const QJsonValue& id, SetRequest& request)
{
    if (id.isUndefined() || id.isNull()) return QString();
    const bool isShort = id.isString() && id.toString().size() <= LONGEST_ID;
    const std::optional<qint64> number = wholeNumber(id);
    if (!isShort && !number)
        return text("\"id\" is no whole number and no text of up to 256 characters");
    JsonText json;
    request.id = (isShort ? json.text(id.toString()) : json.integer(*number)).document();
    return QString();
}

QString takeExpires(const QJsonValue& expires, SetRequest& request)
{
    if (expires.isUndefined() || expires.isNull()) return QString();
    request.expires = wholeNumber(expires);
    if (!request.expires) return text("\"expires\" is no time in milliseconds since 1970");
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
