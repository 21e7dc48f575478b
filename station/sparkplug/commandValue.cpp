#include "sparkplug/payload.h"

#include <limits>

// A number has two types: the one that its sender declared, which says how the bits are meant, and
// the metric's own, whose range it has to fit. A sender that declares none means the metric's.
//
//     declared Int16,  int_value 65535  ->     -1    fits INT16, not UINT16
//     declared UInt16, int_value 65535  ->  65535    fits UINT16, not INT16

namespace {

/// The public numbers of the datatypes that a sender may declare.
enum DeclaredType : quint32 {
    INT8 = 1,
    INT16 = 2,
    INT32 = 3,
    INT64 = 4,
    UINT8 = 5,
    UINT16 = 6,
    UINT32 = 7,
    UINT64 = 8,
    FLOAT = 9,
    BOOLEAN = 11,
    STRING = 12,
    TEXT = 14,
    UUID = 15
};

struct Range
{
    qint64 low, high;

    bool holds(qint64 number) const
    {
        return low <= number && number <= high;
    }
};

template <class T> Range rangeOf()
{
    return {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
}

QString words(const char* text)
{
    return QLatin1String(text);
}

/// Of an integer with int_value; empty: there is no such type.
std::optional<Range> rangeOf(quint32 type)
{
    switch (type) {
    case INT8:
        return rangeOf<qint8>();
    case INT16:
        return rangeOf<qint16>();
    case INT32:
        return rangeOf<qint32>();
    case UINT8:
        return rangeOf<quint8>();
    case UINT16:
        return rangeOf<quint16>();
    case UINT32:
        return rangeOf<quint32>();
    default:
        return std::nullopt;
    }
}

/// What int_value means in a type with this range: the number itself, sign-extended to 32 bits, or
/// in as many bits as the type has.
qint64 meantNumber(quint32 bits, Range range)
{
    const qint64 number = bits;
    if (range.low == 0) return number;
    const qint64 width = range.high - range.low + 1;
    if (number < width) return number > range.high ? number - width : number;
    return static_cast<qint32>(bits);
}

UnfitCommand outOfRange(const QString& number, Range range)
{
    return {words("%1 is not in %2 to %3").arg(number).arg(range.low).arg(range.high)};
}

/// A field that the metric's type does not have, or that the declared type does not have.
QString fieldProblem(const CommandMetric& metric, CommandMetric::Field field, bool isDeclaredFit)
{
    static const char* const names[] = {"no value",     "int_value",    "long_value",
                                        "float_value",  "double_value", "boolean_value",
                                        "string_value", "another field"};
    if (metric.isNull) return words("null is no value that can be written");
    if (metric.field == CommandMetric::NONE) return words("the value is missing");
    if (metric.field != field)
        return words("the value is in %1, not in %2")
            .arg(words(names[metric.field]), words(names[field]));
    if (!isDeclaredFit)
        return words("%1 does not belong to datatype %2")
            .arg(words(names[field]))
            .arg(metric.type.value_or(0));
    return QString();
}

using Result = std::variant<MetricValue, UnfitCommand>;

Result intValue(const CommandMetric& metric, MetricType type)
{
    const Range range = *rangeOf(static_cast<quint32>(type));
    const std::optional<Range> declared = metric.type ? rangeOf(*metric.type) : range;
    const QString problem = fieldProblem(metric, CommandMetric::INT, declared.has_value());
    if (!problem.isEmpty()) return UnfitCommand{problem};
    const qint64 number = meantNumber(metric.intValue, *declared);
    if (!declared->holds(number)) return outOfRange(QString::number(number), *declared);
    if (!range.holds(number)) return outOfRange(QString::number(number), range);
    return MetricValue(number);
}

Result longValue(const CommandMetric& metric)
{
    const bool isUnsigned = metric.type && *metric.type == UINT64;
    const bool isFit = !metric.type || *metric.type == INT64 || isUnsigned;
    const QString problem = fieldProblem(metric, CommandMetric::LONG, isFit);
    if (!problem.isEmpty()) return UnfitCommand{problem};
    const Range range = rangeOf<qint64>();
    if (isUnsigned && metric.longValue > static_cast<quint64>(range.high))
        return outOfRange(QString::number(metric.longValue), range);
    return MetricValue(static_cast<qint64>(metric.longValue));
}

Result floatValue(const CommandMetric& metric)
{
    const bool isFit = !metric.type || *metric.type == FLOAT;
    const QString problem = fieldProblem(metric, CommandMetric::FLOAT, isFit);
    if (!problem.isEmpty()) return UnfitCommand{problem};
    return MetricValue(static_cast<float>(metric.number)); // it came as a float
}

Result booleanValue(const CommandMetric& metric)
{
    const bool isFit = !metric.type || *metric.type == BOOLEAN;
    const QString problem = fieldProblem(metric, CommandMetric::BOOLEAN, isFit);
    if (!problem.isEmpty()) return UnfitCommand{problem};
    return MetricValue(metric.truth);
}

Result stringValue(const CommandMetric& metric)
{
    const bool isFit =
        !metric.type || *metric.type == STRING || *metric.type == TEXT || *metric.type == UUID;
    const QString problem = fieldProblem(metric, CommandMetric::STRING, isFit);
    if (!problem.isEmpty()) return UnfitCommand{problem};
    return MetricValue(metric.text);
}

} // namespace

std::variant<MetricValue, UnfitCommand> commandValue(const CommandMetric& metric, MetricType type)
{
    switch (type) {
    case MetricType::INT64:
        return longValue(metric);
    case MetricType::FLOAT:
        return floatValue(metric);
    case MetricType::BOOLEAN:
        return booleanValue(metric);
    case MetricType::STRING:
        return stringValue(metric);
    case MetricType::INT16:
    case MetricType::INT32:
    case MetricType::UINT16:
    case MetricType::UINT32:
        break;
    }
    return intValue(metric, type);
}
