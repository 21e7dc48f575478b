#include "values/writtenValue.h"

#include "plan/tagText.h"
#include "plan/tagValue.h"
#include "values/jsonNumbers.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <cmath>
#include <limits>
#include <optional>

namespace {

const double LARGEST_FLOAT = double(std::numeric_limits<float>::max());

/// The largest float and half its distance to the next power of two. From here on the nearest
/// float is infinite (IEEE 754-2008, 4.3.1).
const double LEAST_INFINITE = LARGEST_FLOAT + 0x1p103;

/// Never -0: not all readers of JSON tell it from 0, so it would depend on the way that it took.
std::optional<float> nearestFloat(double number)
{
    if (!(std::fabs(number) < LEAST_INFINITE)) return std::nullopt;
    if (std::fabs(number) > LARGEST_FLOAT) // the conversion would be undefined
        return float(std::copysign(LARGEST_FLOAT, number));
    return float(number) + 0.0F;
}

/// The text of a whole number; empty: it is none, or fits no type.
QString wholeText(const QJsonValue& value)
{
    const std::optional<qint64> number = wholeNumber(value);
    return number ? QString::number(*number) : QString();
}

std::optional<QByteArray> bytesOf(const Tag& tag, const QJsonValue& value)
{
    if (tag.isBit() && value.isBool()) return QByteArray(1, value.toBool() ? 1 : 0);
    if (!value.isDouble()) return std::nullopt;
    if (tag.type != Tag::FLOAT32) return tagValueBytes(tag, wholeText(value));
    const std::optional<float> number = nearestFloat(value.toDouble());
    if (!number) return std::nullopt;
    return tagFloatBytes(tag, *number);
}

/// The value as the client wrote it, or what it is.
QString nameOf(const QJsonValue& value)
{
    if (value.isObject()) return QLatin1String("an object");
    if (value.isArray()) return QLatin1String("an array");
    if (value.isString()) return QLatin1String("a text");
    if (value.isDouble() && !std::isfinite(value.toDouble())) // JSON has no text for it
        return QString::number(value.toDouble());
    // It stands for a number that the client wrote with other digits.
    if (value.isDouble() && std::fabs(value.toDouble()) >= BEYOND_DOUBLE)
        return QLatin1String("a number of this size");
    const QByteArray text = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(text.mid(1, text.size() - 2));
}

} // namespace

std::variant<QByteArray, UnfitValue> writtenBytes(const Tag& tag, const QJsonValue& value)
{
    const std::optional<QByteArray> bytes = bytesOf(tag, value);
    if (bytes) return *bytes;
    return UnfitValue{QString(QLatin1String("%1 does not fit %2: %3"))
                          .arg(nameOf(value), tagTypeText(tag), tagValuesText(tag))};
}
