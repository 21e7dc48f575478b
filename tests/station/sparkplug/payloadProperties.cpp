// Payloads of any content, read field by field; values that go out and come back as commands; and
// commands of any bytes.

#include "sparkplug/payload.h"

#include "wireReader.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

const std::vector<MetricType> TYPES = {MetricType::INT16,   MetricType::INT32,  MetricType::INT64,
                                       MetricType::UINT16,  MetricType::UINT32, MetricType::FLOAT,
                                       MetricType::BOOLEAN, MetricType::STRING};

struct Range
{
    qint64 low, high;
};

/// Of an integer of so many bits.
Range rangeOf(int bits, bool isSigned)
{
    if (bits == 64) return {std::numeric_limits<qint64>::min(), std::numeric_limits<qint64>::max()};
    const qint64 count = qint64(1) << bits;
    return isSigned ? Range{-count / 2, count / 2 - 1} : Range{0, count - 1};
}

std::optional<Range> rangeOf(MetricType type)
{
    switch (type) {
    case MetricType::INT16:
        return rangeOf(16, true);
    case MetricType::INT32:
        return rangeOf(32, true);
    case MetricType::INT64:
        return rangeOf(64, true);
    case MetricType::UINT16:
        return rangeOf(16, false);
    case MetricType::UINT32:
        return rangeOf(32, false);
    default:
        return std::nullopt;
    }
}

/// Ends of the range are as likely as what lies between.
qint64 drawnInteger(Range range)
{
    return *rc::gen::oneOf(rc::gen::element(range.low, range.high, qint64(0)),
                           rc::gen::inRange(range.low, range.high));
}

float floatOf(quint32 bits)
{
    float number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

quint32 bitsOf(float number)
{
    quint32 bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

QString drawnText()
{
    const auto points = *rc::gen::container<std::vector<uint>>(
        rc::gen::element<uint>('a', '/', 0, 0xE4, 0x20AC, 0x1F600));
    return QString::fromUcs4(reinterpret_cast<const char32_t*>(points.data()),
                             static_cast<int>(points.size()));
}

MetricValue drawnValue(MetricType type)
{
    if (const std::optional<Range> range = rangeOf(type)) return drawnInteger(*range);
    if (type == MetricType::FLOAT) return floatOf(*rc::gen::arbitrary<quint32>());
    if (type == MetricType::BOOLEAN) return *rc::gen::arbitrary<bool>();
    return drawnText();
}

Metric drawnMetric()
{
    Metric metric;
    metric.encodedAs = *rc::gen::elementOf(TYPES);
    metric.time = *rc::gen::inRange<qint64>(0, std::numeric_limits<qint64>::max());
    if (*rc::gen::arbitrary<bool>()) metric.name = drawnText();
    if (*rc::gen::arbitrary<bool>()) metric.alias = *rc::gen::arbitrary<quint64>();
    if (*rc::gen::arbitrary<bool>()) metric.type = metric.encodedAs;
    if (*rc::gen::inRange(0, 4) != 0) metric.value = drawnValue(metric.encodedAs);
    if (*rc::gen::arbitrary<bool>())
        metric.quality = *rc::gen::element(QualityCode::BAD, QualityCode::GOOD, QualityCode::STALE);
    metric.isHistorical = *rc::gen::arbitrary<bool>();
    return metric;
}

/// The field with this number; empty: there is none. It must not be there twice.
std::optional<WireField> onlyField(const QByteArray& message, quint64 number)
{
    const std::vector<WireField> found = fieldsOf(message, number);
    RC_ASSERT(found.size() <= 1U);
    if (found.empty()) return std::nullopt;
    return found[0];
}

void mustBeNumber(const std::optional<WireField>& field, std::optional<quint64> number)
{
    RC_ASSERT(field.has_value() == number.has_value());
    if (!field) return;
    RC_ASSERT(field->kind == WireField::VARINT);
    RC_ASSERT(field->value == *number);
}

void mustBeText(const std::optional<WireField>& field, const QString& text)
{
    RC_ASSERT(field.has_value());
    RC_ASSERT(field->kind == WireField::BYTES);
    RC_ASSERT(field->bytes == text.toUtf8());
}

/// The fields 10 to 19, of which one is there, or field 7 says that none is.
void mustBeValue(const QByteArray& message, const Metric& metric)
{
    enum { IS_NULL = 7, INT = 10, LONG, FLOAT, BOOLEAN = 14, STRING, LAST = 19 };
    std::vector<WireField> values;
    for (const WireField& field : WireReader::fields(message)) {
        if (field.number >= INT && field.number <= LAST) values.push_back(field);
    }
    const bool isNull = std::holds_alternative<std::monostate>(metric.value);
    mustBeNumber(onlyField(message, IS_NULL), isNull ? std::optional<quint64>(1) : std::nullopt);
    RC_ASSERT(values.size() == (isNull ? 0U : 1U));
    if (isNull) return;

    const WireField& field = values[0];
    if (const auto* const truth = std::get_if<bool>(&metric.value)) {
        RC_ASSERT(field.number == quint64(BOOLEAN));
        RC_ASSERT(field.value == quint64(*truth ? 1 : 0));
    } else if (const auto* const number = std::get_if<float>(&metric.value)) {
        RC_ASSERT(field.number == quint64(FLOAT));
        RC_ASSERT(field.kind == WireField::FOUR_BYTES);
        RC_ASSERT(field.value == quint64(bitsOf(*number)));
    } else if (const auto* const text = std::get_if<QString>(&metric.value)) {
        RC_ASSERT(field.number == quint64(STRING));
        RC_ASSERT(field.bytes == text->toUtf8());
    } else if (metric.encodedAs == MetricType::INT64) {
        RC_ASSERT(field.number == quint64(LONG));
        RC_ASSERT(static_cast<qint64>(field.value) == std::get<qint64>(metric.value));
    } else {
        const qint64 integer = std::get<qint64>(metric.value);
        RC_ASSERT(field.number == quint64(INT));
        RC_ASSERT(field.value == quint64(integer < 0 ? integer + (qint64(1) << 32) : integer));
    }
}

void mustBeMetric(const QByteArray& message, const Metric& metric)
{
    using Number = std::optional<quint64>;
    if (metric.name.isEmpty())
        RC_ASSERT(!onlyField(message, 1));
    else
        mustBeText(onlyField(message, 1), metric.name);
    mustBeNumber(onlyField(message, 2), metric.alias);
    mustBeNumber(onlyField(message, 3), static_cast<quint64>(metric.time));
    mustBeNumber(onlyField(message, 4), metric.type ? Number(quint64(*metric.type)) : Number());
    mustBeNumber(onlyField(message, 5), metric.isHistorical ? Number(1) : Number());
    RC_ASSERT(!onlyField(message, 6));
    RC_ASSERT(!onlyField(message, 8));
    mustBeValue(message, metric);

    const std::optional<WireField> properties = onlyField(message, 9);
    RC_ASSERT(properties.has_value() == metric.quality.has_value());
    if (!properties) return;
    mustBeText(onlyField(properties->bytes, 1), QLatin1String("Quality"));
    const QByteArray quality = onlyField(properties->bytes, 2)->bytes;
    mustBeNumber(onlyField(quality, 1), Number(3));
    mustBeNumber(onlyField(quality, 3), Number(quint64(*metric.quality)));
}

/// A field holds n of w bits when its 32 bits are those of n, or when its lowest w bits are and the
/// others are 0.
std::optional<qint64> meantNumber(quint32 field, int bits, bool isSigned)
{
    const Range range = rangeOf(bits, isSigned);
    const qint64 asUnsigned = field;
    if (asUnsigned <= range.high) return asUnsigned;
    if (!isSigned) return std::nullopt;
    for (const int width : {bits, 32}) {
        const qint64 number = asUnsigned - (qint64(1) << width);
        if (number >= range.low && number < 0) return number;
    }
    return std::nullopt;
}

/// The command that holds this one metric.
CommandMetric sentMetric(const Metric& metric)
{
    Payload payload;
    payload.metrics.push_back(metric);
    const std::optional<Command> command = decodedCommand(encodedPayload(payload));
    RC_ASSERT(command.has_value());
    RC_ASSERT(command->metrics.size() == 1U);
    return command->metrics[0];
}

/// Whatever a command holds, what is made of it is in the range of each type.
void mustFitOrBeRefused(const CommandMetric& metric)
{
    for (const MetricType type : TYPES) {
        const std::variant<MetricValue, UnfitCommand> value = commandValue(metric, type);
        if (const auto* const unfit = std::get_if<UnfitCommand>(&value)) {
            RC_ASSERT(!unfit->problem.isEmpty());
            continue;
        }
        const MetricValue& fit = std::get<MetricValue>(value);
        if (const std::optional<Range> range = rangeOf(type)) {
            RC_ASSERT(std::get<qint64>(fit) >= range->low);
            RC_ASSERT(std::get<qint64>(fit) <= range->high);
        } else {
            RC_ASSERT(std::holds_alternative<float>(fit) == (type == MetricType::FLOAT));
            RC_ASSERT(std::holds_alternative<bool>(fit) == (type == MetricType::BOOLEAN));
            RC_ASSERT(std::holds_alternative<QString>(fit) == (type == MetricType::STRING));
        }
    }
}

void mustBeTakenSafely(const QByteArray& bytes)
{
    const std::optional<Command> command = decodedCommand(bytes);
    if (!command) return;
    RC_ASSERT(!command->time || *command->time >= 0);
    for (const CommandMetric& metric : command->metrics)
        mustFitOrBeRefused(metric);
}

} // namespace

RC_GTEST_PROP(SparkplugProperties, EachFieldIsOnTheWireOnceAndNoOther, ())
{
    Payload payload;
    payload.time = *rc::gen::inRange<qint64>(0, std::numeric_limits<qint64>::max());
    if (*rc::gen::arbitrary<bool>()) payload.seq = *rc::gen::arbitrary<quint8>();
    for (int count = *rc::gen::inRange(0, 5); count > 0; --count)
        payload.metrics.push_back(drawnMetric());

    const QByteArray bytes = encodedPayload(payload);
    mustBeNumber(onlyField(bytes, 1), static_cast<quint64>(payload.time));
    mustBeNumber(onlyField(bytes, 3),
                 payload.seq ? std::optional<quint64>(*payload.seq) : std::optional<quint64>());
    const std::vector<WireField> metrics = fieldsOf(bytes, 2);
    RC_ASSERT(metrics.size() == payload.metrics.size());
    for (size_t i = 0; i < metrics.size(); ++i)
        mustBeMetric(metrics[i].bytes, payload.metrics[i]);
    const size_t others = 1U + (payload.seq ? 1U : 0U);
    RC_ASSERT(WireReader::fields(bytes).size() == metrics.size() + others);
}

RC_GTEST_PROP(SparkplugProperties, AValueThatIsSentBackAsACommandIsTheSame, ())
{
    Metric metric = drawnMetric();
    metric.value = drawnValue(metric.encodedAs);
    const CommandMetric sent = sentMetric(metric);
    RC_ASSERT(sent.name == metric.name);
    RC_ASSERT(sent.alias == metric.alias);
    const auto value = commandValue(sent, metric.encodedAs);
    RC_ASSERT(std::holds_alternative<MetricValue>(value));
    const MetricValue& back = std::get<MetricValue>(value);
    if (const auto* const number = std::get_if<float>(&metric.value)) {
        const auto bits = bitsOf(std::get<float>(back));
        const bool isQuieted = std::isnan(*number) && std::isnan(std::get<float>(back));
        RC_ASSERT(isQuieted || bits == bitsOf(*number));
    } else {
        RC_ASSERT(back == metric.value);
    }
}

RC_GTEST_PROP(SparkplugProperties, IntegersMeanWhatTheirDeclaredTypeSays, ())
{
    struct Declared
    {
        quint32 type;
        int bits;
        bool isSigned;
    };
    static const std::vector<Declared> all = {{1, 8, true},  {2, 16, true},  {3, 32, true},
                                              {5, 8, false}, {6, 16, false}, {7, 32, false}};
    const Declared& declared = all[*rc::gen::inRange<size_t>(0, all.size())];
    const MetricType type = *rc::gen::element(MetricType::INT16, MetricType::INT32,
                                              MetricType::UINT16, MetricType::UINT32);
    const quint32 near = *rc::gen::element<quint32>(0, 1U << 7, 1U << 8, 1U << 15, 1U << 16,
                                                    1U << 31, 0xFFFF8000U, 0xFFFFFF80U);
    CommandMetric metric;
    metric.field = CommandMetric::INT;
    metric.type = declared.type;
    metric.intValue = near + *rc::gen::inRange<quint32>(0, 5) - 2U;

    const std::optional<qint64> meant =
        meantNumber(metric.intValue, declared.bits, declared.isSigned);
    const Range own = *rangeOf(type);
    const bool isFit = meant && *meant >= own.low && *meant <= own.high;
    const std::variant<MetricValue, UnfitCommand> value = commandValue(metric, type);
    RC_ASSERT(std::holds_alternative<MetricValue>(value) == isFit);
    if (isFit) RC_ASSERT(std::get<qint64>(std::get<MetricValue>(value)) == *meant);
}

RC_GTEST_PROP(SparkplugProperties, AnyBytesAreTakenOrRefused, (const std::vector<char>& bytes))
{
    mustBeTakenSafely(QByteArray(bytes.data(), static_cast<int>(bytes.size())));
}

RC_GTEST_PROP(SparkplugProperties, ASpoiltPayloadIsTakenOrRefused, ())
{
    Payload payload;
    payload.metrics = {drawnMetric(), drawnMetric()};
    QByteArray bytes = encodedPayload(payload);
    bytes[*rc::gen::inRange(0, static_cast<int>(bytes.size()))] = *rc::gen::arbitrary<char>();
    mustBeTakenSafely(bytes);
    mustBeTakenSafely(bytes.left(*rc::gen::inRange(0, static_cast<int>(bytes.size()))));
}
