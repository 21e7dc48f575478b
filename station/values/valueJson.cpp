#include "values/valueJson.h"

#include "plan/tagValue.h"

#include <cmath>
#include <limits>

namespace {

/// The value's text with decimal digits, which is the only form of a number in JSON.
QByteArray decimalText(const Tag& tag, const QByteArray& bytes)
{
    if (tag.format == Tag::DECIMAL) return tagValueText(tag, bytes).toLatin1();
    Tag decimal = tag;
    decimal.format = Tag::DECIMAL;
    return tagValueText(decimal, bytes).toLatin1();
}

bool isNumber(const QByteArray& text)
{
    const char last = text.at(text.size() - 1);
    return last >= '0' && last <= '9';
}

} // namespace

QByteArray valueJson(const Tag& tag, const QByteArray& bytes)
{
    const QByteArray text = decimalText(tag, bytes);
    if (text.isEmpty()) return QByteArrayLiteral("null");
    if (tag.isBit()) return text == "1" ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
    return isNumber(text) ? text : '"' + text + '"';
}

QByteArray valueJson(const Tag& tag, double number)
{
    // The conversions of other numbers would be undefined.
    const double most = tag.type == Tag::FLOAT32 ? double(std::numeric_limits<float>::max())
                                                 : double(std::numeric_limits<quint32>::max());
    const bool isOfFloat = tag.type == Tag::FLOAT32 && !std::isfinite(number);
    if (!isOfFloat && !(std::fabs(number) <= most)) return QByteArrayLiteral("null");
    if (tag.type == Tag::FLOAT32) return valueJson(tag, tagFloatBytes(tag, float(number)));
    if (tag.isBit()) return number != 0 ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
    return QByteArray::number(qint64(number));
}
