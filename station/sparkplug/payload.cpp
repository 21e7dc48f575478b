#include "sparkplug/payload.h"

#include <google/protobuf/arena.h>
#include <sparkplug.pb.h>

#include <limits>

namespace messages = kakb::sparkplug;

namespace {

/// The public number of a property's type Int32.
enum { PROPERTY_INT32 = 3 };

/// A command is foreign input: what is larger is refused unread, so that its memory is bounded.
enum { MOST_COMMAND_BYTES = 256 * 1024, MOST_COMMAND_METRICS = 10000 };

std::string utf8(const QString& text)
{
    return text.toUtf8().toStdString();
}

QString fromUtf8(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

/// Two's complement, sign-extended to 32 bits: -1 is 4294967295 for each type of up to 32 bits.
/// @return false: the value is of a kind that the type's field cannot hold
bool setValue(messages::Metric& metric, const MetricValue& value, MetricType encodedAs)
{
    switch (encodedAs) {
    case MetricType::INT16:
    case MetricType::INT32:
    case MetricType::UINT16:
    case MetricType::UINT32:
        if (const auto* const number = std::get_if<qint64>(&value))
            metric.set_int_value(static_cast<quint32>(*number));
        break;
    case MetricType::INT64:
        if (const auto* const number = std::get_if<qint64>(&value))
            metric.set_long_value(static_cast<quint64>(*number));
        break;
    case MetricType::FLOAT:
        if (const auto* const number = std::get_if<float>(&value)) metric.set_float_value(*number);
        break;
    case MetricType::BOOLEAN:
        if (const auto* const truth = std::get_if<bool>(&value)) metric.set_boolean_value(*truth);
        break;
    case MetricType::STRING:
        if (const auto* const text = std::get_if<QString>(&value))
            metric.set_string_value(utf8(*text));
        break;
    }
    return metric.value_case() != messages::Metric::VALUE_NOT_SET;
}

void setQuality(messages::PropertySet& properties, QualityCode quality)
{
    properties.add_keys("Quality");
    messages::PropertyValue* const value = properties.add_values();
    value->set_type(PROPERTY_INT32);
    value->set_int_value(static_cast<quint32>(quality));
}

void fill(messages::Metric& message, const Metric& metric)
{
    if (!metric.name.isEmpty()) message.set_name(utf8(metric.name));
    if (metric.alias) message.set_alias(*metric.alias);
    message.set_timestamp(static_cast<quint64>(metric.time));
    if (metric.type) message.set_datatype(static_cast<quint32>(*metric.type));
    if (metric.isHistorical) message.set_is_historical(true);
    if (metric.quality) setQuality(*message.mutable_properties(), *metric.quality);
    if (!setValue(message, metric.value, metric.encodedAs)) message.set_is_null(true);
}

void takeValue(CommandMetric& metric, const messages::Metric& message)
{
    switch (message.value_case()) {
    case messages::Metric::kIntValue:
        metric.field = CommandMetric::INT;
        metric.intValue = message.int_value();
        break;
    case messages::Metric::kLongValue:
        metric.field = CommandMetric::LONG;
        metric.longValue = message.long_value();
        break;
    case messages::Metric::kFloatValue:
        metric.field = CommandMetric::FLOAT;
        metric.number = static_cast<double>(message.float_value());
        break;
    case messages::Metric::kDoubleValue:
        metric.field = CommandMetric::DOUBLE;
        metric.number = message.double_value();
        break;
    case messages::Metric::kBooleanValue:
        metric.field = CommandMetric::BOOLEAN;
        metric.truth = message.boolean_value();
        break;
    case messages::Metric::kStringValue:
        metric.field = CommandMetric::STRING;
        metric.text = fromUtf8(message.string_value());
        break;
    case messages::Metric::kBytesValue:
        metric.field = CommandMetric::OTHER;
        break;
    case messages::Metric::VALUE_NOT_SET:
        break;
    }
}

CommandMetric commandMetric(const messages::Metric& message)
{
    CommandMetric metric;
    metric.name = fromUtf8(message.name());
    if (message.has_alias()) metric.alias = message.alias();
    if (message.has_datatype()) metric.type = message.datatype();
    metric.isNull = message.is_null();
    takeValue(metric, message);
    return metric;
}

/// A time beyond all times is the last one, not one before 1970.
qint64 commandTime(quint64 time)
{
    const qint64 last = std::numeric_limits<qint64>::max();
    return time > static_cast<quint64>(last) ? last : static_cast<qint64>(time);
}

} // namespace

QByteArray encodedPayload(const Payload& payload)
{
    google::protobuf::Arena arena;
    auto& message = *google::protobuf::Arena::CreateMessage<messages::Payload>(&arena);
    message.set_timestamp(static_cast<quint64>(payload.time));
    if (payload.seq) message.set_seq(*payload.seq);
    message.mutable_metrics()->Reserve(static_cast<int>(payload.metrics.size()));
    for (const Metric& metric : payload.metrics)
        fill(*message.add_metrics(), metric);

    QByteArray bytes(static_cast<int>(message.ByteSizeLong()), Qt::Uninitialized);
    message.SerializeWithCachedSizesToArray(reinterpret_cast<quint8*>(bytes.data()));
    return bytes;
}

std::optional<Command> decodedCommand(const QByteArray& bytes)
{
    if (bytes.size() > MOST_COMMAND_BYTES) return std::nullopt;
    google::protobuf::Arena arena;
    auto& message = *google::protobuf::Arena::CreateMessage<messages::Payload>(&arena);
    if (!message.ParseFromArray(bytes.constData(), static_cast<int>(bytes.size())))
        return std::nullopt;
    if (message.metrics_size() > MOST_COMMAND_METRICS) return std::nullopt;

    Command command;
    if (message.has_timestamp()) command.time = commandTime(message.timestamp());
    command.metrics.reserve(static_cast<size_t>(message.metrics_size()));
    for (const messages::Metric& metric : message.metrics())
        command.metrics.push_back(commandMetric(metric));
    return command;
}
