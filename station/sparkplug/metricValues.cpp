// The rules that turn what the station knows of a tag into what a metric says.
#include "sparkplug/edgeMetrics.h"

#include <cmath>
#include <limits>

namespace {

template <typename Integer> std::optional<MetricValue> whole(double number)
{
    const bool isInRange = number >= double(std::numeric_limits<Integer>::min()) &&
                           number <= double(std::numeric_limits<Integer>::max());
    if (!isInRange || std::floor(number) < number) return std::nullopt;
    return MetricValue(qint64(number));
}

std::optional<MetricValue> floating(double number)
{
    const bool isTooLarge =
        std::isfinite(number) && std::abs(number) > double(std::numeric_limits<float>::max());
    if (isTooLarge) return std::nullopt;
    return MetricValue(float(number));
}

} // namespace

MetricType metricType(const Tag& tag)
{
    switch (tag.type) {
    case Tag::BOOL:
        return MetricType::BOOLEAN;
    case Tag::INT16:
        return MetricType::INT16;
    case Tag::UINT16:
        return MetricType::UINT16;
    case Tag::INT32:
        return MetricType::INT32;
    case Tag::UINT32:
        return MetricType::UINT32;
    case Tag::FLOAT32:
        return MetricType::FLOAT;
    }
    return MetricType::UINT16;
}

QualityCode qualityCode(Quality quality)
{
    switch (quality) {
    case GOOD:
        return QualityCode::GOOD;
    case STALE:
        return QualityCode::STALE;
    case BAD:
        return QualityCode::BAD;
    }
    return QualityCode::BAD;
}

std::optional<MetricValue> metricValue(MetricType type, double number)
{
    switch (type) {
    case MetricType::BOOLEAN:
        if (number != 0 && number != 1) return std::nullopt;
        return MetricValue(number == 1);
    case MetricType::INT16:
        return whole<qint16>(number);
    case MetricType::INT32:
        return whole<qint32>(number);
    case MetricType::UINT16:
        return whole<quint16>(number);
    case MetricType::UINT32:
        return whole<quint32>(number);
    case MetricType::FLOAT:
        return floating(number);
    case MetricType::INT64:
    case MetricType::STRING:
        return std::nullopt; // no tag has these types
    }
    return std::nullopt;
}

bool isSameValue(const MetricValue& a, const MetricValue& b)
{
    const float* const left = std::get_if<float>(&a);
    const float* const right = std::get_if<float>(&b);
    if (left != nullptr && right != nullptr && std::isnan(*left) && std::isnan(*right)) return true;
    return a == b;
}
