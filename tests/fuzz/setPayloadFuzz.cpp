// What a program sends to the topic of a set. Whatever comes, it is refused in words, or its value
// is one of the tag's type, exactly the number that was written; its id goes back as it came.

#include "plan/tagValue.h"
#include "topics/setRequest.h"
#include "values/strangersJson.h"
#include "values/writtenValue.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

const Tag::Type TYPES[] = {Tag::BOOL,  Tag::INT16,  Tag::UINT16,
                           Tag::INT32, Tag::UINT32, Tag::FLOAT32};

void mustHold(bool holds, const char* rule)
{
    if (holds) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

double numberOf(const MetricValue& value)
{
    if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? 1 : 0;
    if (const auto* const whole = std::get_if<qint64>(&value)) return double(*whole);
    return double(std::get<float>(value));
}

bool isOfKind(Tag::Type type, const MetricValue& value)
{
    if (type == Tag::BOOL) return std::holds_alternative<bool>(value);
    if (type == Tag::FLOAT32) return std::holds_alternative<float>(value);
    return std::holds_alternative<qint64>(value);
}

double askedNumber(const QJsonValue& value)
{
    if (value.isBool()) return value.toBool() ? 1 : 0;
    return value.toDouble();
}

QByteArray bytesOf(const Tag& tag, const QJsonValue& value)
{
    return std::get<QByteArray>(writtenBytes(tag, value));
}

void fit(Tag::Type type, const QJsonValue& asked)
{
    Tag tag;
    tag.type = type;
    const std::variant<MetricValue, UnfitCommand> value = setValue(tag, asked);
    if (const auto* const unfit = std::get_if<UnfitCommand>(&value))
        return mustHold(!unfit->problem.isEmpty(), "a reason for what does not fit");
    const MetricValue& written = std::get<MetricValue>(value);
    mustHold(isOfKind(type, written), "a value of the tag's kind");
    const double number = numberOf(written);
    mustHold(std::isfinite(number), "a value that is a number");
    const bool isExact = number == askedNumber(asked);
    mustHold(type == Tag::FLOAT32 || isExact, "the number that was asked for");
    const QJsonValue again = type == Tag::BOOL ? QJsonValue(number != 0) : QJsonValue(number);
    mustHold(bytesOf(tag, again) == bytesOf(tag, asked), "the bytes that were asked for");
}

void mustBeIdOf(const QByteArray& id, const QByteArray& payload)
{
    const QJsonDocument list = QJsonDocument::fromJson('[' + id + ']');
    mustHold(list.isArray() && list.array().size() == 1, "an id that is JSON");
    const QJsonValue came = strangersObject(payload).object.value(QLatin1String("id"));
    const QJsonValue back = list.array().at(0);
    mustHold(back == came || (back.isNull() && came.isUndefined()), "the id as it came");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray payload(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const SetRequest request = setRequestOf(payload);
    const QJsonDocument id = QJsonDocument::fromJson('[' + request.id + ']');
    mustHold(id.isArray() && id.array().size() == 1, "an id that is JSON");
    if (!request.problem.isEmpty()) return 0;
    mustHold(request.value.isBool() || request.value.isDouble(), "a number or a boolean");
    mustHold(!request.expires || std::abs(*request.expires) < (qint64(1) << 53), "an exact time");
    mustBeIdOf(request.id, payload);
    for (const Tag::Type type : TYPES)
        fit(type, request.value);
    return 0;
}
