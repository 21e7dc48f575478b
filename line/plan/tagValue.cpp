#include "plan/tagValue.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

enum { WORD_BYTES = 2, FEWEST_FLOAT_DIGITS = 6, MOST_FLOAT_DIGITS = 9 };

using Limits = std::pair<qint64, qint64>;

quint32 byteAt(const QByteArray& bytes, int index)
{
    return static_cast<unsigned char>(bytes.at(index));
}

quint32 wordAt(const QByteArray& bytes, int index)
{
    return byteAt(bytes, index * WORD_BYTES) | byteAt(bytes, index * WORD_BYTES + 1) << 8;
}

quint32 bitsOf(const Tag& tag, const QByteArray& bytes)
{
    if (tag.units() == 1) return wordAt(bytes, 0);
    const bool lowFirst = tag.wordOrder == Tag::LOW_WORD_FIRST;
    return wordAt(bytes, lowFirst ? 0 : 1) | wordAt(bytes, lowFirst ? 1 : 0) << 16;
}

void appendWord(QByteArray& bytes, quint32 word)
{
    bytes.append(static_cast<char>(word & 0xFFu));
    bytes.append(static_cast<char>(word >> 8 & 0xFFu));
}

QByteArray bytesOf(const Tag& tag, quint32 bits)
{
    QByteArray bytes;
    const bool highFirst = tag.units() == 2 && tag.wordOrder == Tag::HIGH_WORD_FIRST;
    appendWord(bytes, highFirst ? bits >> 16 : bits);
    if (tag.units() == 2) appendWord(bytes, highFirst ? bits : bits >> 16);
    return bytes;
}

// The C library's conversions follow the user's locale, and Qt's refuse the text of the largest
// float, which lies above it before it is rounded.
std::optional<float> plainFloat(const QByteArray& text)
{
    float value = 0;
    const char* const end = text.constData() + text.size();
    const std::from_chars_result result = std::from_chars(text.constData(), end, value);
    if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return value;
}

std::optional<float> floatOf(const QString& text)
{
    if (text == QLatin1String("nan")) return std::numeric_limits<float>::quiet_NaN();
    if (text == QLatin1String("inf")) return std::numeric_limits<float>::infinity();
    if (text == QLatin1String("-inf")) return -std::numeric_limits<float>::infinity();
    const bool plus = text.startsWith(QLatin1Char('+')) && !text.startsWith(QLatin1String("+-"));
    const std::optional<float> value = plainFloat((plus ? text.mid(1) : text).toUtf8());
    return value && std::isfinite(*value) ? value : std::nullopt;
}

QString floatText(float value)
{
    if (std::isnan(value)) return QLatin1String("nan");
    if (std::isinf(value)) return QLatin1String(value > 0 ? "inf" : "-inf");
    if (value == 0) return QLatin1String("0"); // Qt's versions differ over the sign
    int digits = FEWEST_FLOAT_DIGITS;
    QString text = QString::number(double(value), 'g', digits);
    while (floatOf(text) != value && digits < MOST_FLOAT_DIGITS)
        text = QString::number(double(value), 'g', ++digits);
    return text;
}

std::optional<QByteArray> floatBytes(const Tag& tag, const QString& text)
{
    const std::optional<float> value = floatOf(text);
    if (!value) return std::nullopt;
    quint32 bits = 0;
    std::memcpy(&bits, &*value, sizeof bits);
    return bytesOf(tag, bits);
}

std::optional<QByteArray> boolBytes(const QString& text)
{
    if (text == QLatin1String("1") || text == QLatin1String("true")) return QByteArray(1, 1);
    if (text == QLatin1String("0") || text == QLatin1String("false")) return QByteArray(1, 0);
    return std::nullopt;
}

template <typename Number> Limits limitsOf()
{
    return {std::numeric_limits<Number>::min(), std::numeric_limits<Number>::max()};
}

Limits limitsOf(Tag::Type type)
{
    switch (type) {
    case Tag::INT16:
        return limitsOf<qint16>();
    case Tag::INT32:
        return limitsOf<qint32>();
    case Tag::UINT32:
        return limitsOf<quint32>();
    default:
        return limitsOf<quint16>();
    }
}

std::optional<QByteArray> integerBytes(const Tag& tag, const QString& text)
{
    const Limits limits = limitsOf(tag.type);
    const bool hexadecimal =
        limits.first == 0 && text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive);
    bool ok = false;
    const qint64 value = text.toLongLong(&ok, hexadecimal ? 16 : 10);
    if (!ok || value < limits.first || value > limits.second) return std::nullopt;
    return bytesOf(tag, static_cast<quint32>(value));
}

} // namespace

QString tagValueText(const Tag& tag, const QByteArray& bytes)
{
    if (bytes.size() < (tag.isBit() ? 1 : WORD_BYTES * tag.units())) return QString();
    if (tag.isBit()) return QLatin1String(byteAt(bytes, 0) != 0 ? "1" : "0");
    const quint32 bits = bitsOf(tag, bytes);
    if (tag.type == Tag::INT16) return QString::number(static_cast<qint16>(bits));
    if (tag.type == Tag::INT32) return QString::number(static_cast<qint32>(bits));
    if (tag.type != Tag::FLOAT32) return QString::number(bits);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return floatText(value);
}

std::optional<QByteArray> tagValueBytes(const Tag& tag, const QString& text)
{
    const QString trimmed = text.trimmed();
    if (tag.type == Tag::BOOL) return boolBytes(trimmed);
    if (tag.type == Tag::FLOAT32) return floatBytes(tag, trimmed);
    return integerBytes(tag, trimmed);
}
