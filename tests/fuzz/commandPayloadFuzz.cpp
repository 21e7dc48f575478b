// What a host sends to the station as a command. Whatever comes, it is no payload, or each of its
// values is refused in words or is one that the metric's type can hold, and goes out as it came in.

#include "sparkplug/payload.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace {

const MetricType TYPES[] = {MetricType::INT16,   MetricType::INT32,  MetricType::INT64,
                            MetricType::UINT16,  MetricType::UINT32, MetricType::FLOAT,
                            MetricType::BOOLEAN, MetricType::STRING};

void mustHold(bool holds, const char* rule)
{
    if (holds) return;
    std::fprintf(stderr, "rule broken: %s\n", rule);
    std::abort();
}

template <class T> bool isOf(qint64 number)
{
    return number >= qint64(std::numeric_limits<T>::min()) &&
           number <= qint64(std::numeric_limits<T>::max());
}

bool isOf(MetricType type, const MetricValue& value)
{
    switch (type) {
    case MetricType::INT16:
        return isOf<qint16>(std::get<qint64>(value));
    case MetricType::INT32:
        return isOf<qint32>(std::get<qint64>(value));
    case MetricType::UINT16:
        return isOf<quint16>(std::get<qint64>(value));
    case MetricType::UINT32:
        return isOf<quint32>(std::get<qint64>(value));
    case MetricType::INT64:
        return std::holds_alternative<qint64>(value);
    case MetricType::FLOAT:
        return std::holds_alternative<float>(value);
    case MetricType::BOOLEAN:
        return std::holds_alternative<bool>(value);
    case MetricType::STRING:
        return std::holds_alternative<QString>(value);
    }
    return false;
}

bool isSame(const MetricValue& a, const MetricValue& b)
{
    const auto* const number = std::get_if<float>(&a);
    return a == b || (number && std::isnan(*number) && std::isnan(std::get<float>(b)));
}

/// The value as the station would publish it, read as a command again.
std::variant<MetricValue, UnfitCommand> sentBack(MetricType type, const MetricValue& value)
{
    Payload payload;
    payload.metrics.resize(1);
    payload.metrics[0].type = type;
    payload.metrics[0].encodedAs = type;
    payload.metrics[0].value = value;
    const std::optional<Command> command = decodedCommand(encodedPayload(payload));
    mustHold(command && command->metrics.size() == 1, "a payload of ours that can be read");
    return commandValue(command->metrics[0], type);
}

void read(const CommandMetric& metric, MetricType type)
{
    const std::variant<MetricValue, UnfitCommand> value = commandValue(metric, type);
    if (const auto* const unfit = std::get_if<UnfitCommand>(&value))
        return mustHold(!unfit->problem.isEmpty(), "a reason for what does not fit");
    const MetricValue& fit = std::get<MetricValue>(value);
    mustHold(isOf(type, fit), "a value of the metric's type");
    const std::variant<MetricValue, UnfitCommand> back = sentBack(type, fit);
    mustHold(std::holds_alternative<MetricValue>(back), "a value that fits again");
    mustHold(isSame(fit, std::get<MetricValue>(back)), "the same value again");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::optional<Command> command =
        decodedCommand(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    if (!command) return 0;
    mustHold(!command->time || *command->time >= 0, "no time before 1970");
    for (const CommandMetric& metric : command->metrics) {
        for (const MetricType type : TYPES)
            read(metric, type);
    }
    return 0;
}
