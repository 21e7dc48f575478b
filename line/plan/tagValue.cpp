#include "plan/tagValue.h"

#include "plan/tagText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

enum { WORD_BYTES = 2, FEWEST_FLOAT_DIGITS = 6, MOST_FLOAT_DIGITS = 9 };
enum { DECIMAL_BASE = 10, HEXADECIMAL_BASE = 16, BINARY_BASE = 2, WORD_BITS = 16 };

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

bool holdsValue(const Tag& tag, const QByteArray& bytes)
{
    return bytes.size() >= (tag.isBit() ? 1 : WORD_BYTES * tag.units());
}

float floatOfBits(quint32 bits)
{
    float value = 0;
    static_assert(sizeof value == sizeof bits, "a float has 32 bits");
    std::memcpy(&value, &bits, sizeof value);
    return value;
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

// The C library's conversions depend on the user's locale. Qt's conversions refuse the text of the
// largest float, because the text is larger than that float before rounding.
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
    if (value == 0) return QLatin1String("0"); // Qt's versions differ in the sign of zero
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
    return tagFloatBytes(tag, *value);
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

/// The base that a text begins with: 0x, 0b or none. The unsigned types have all three.
int baseOf(const Tag& tag, const QString& text)
{
    if (limitsOf(tag.type).first < 0) return DECIMAL_BASE;
    if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) return HEXADECIMAL_BASE;
    return text.startsWith(QLatin1String("0b"), Qt::CaseInsensitive) ? BINARY_BASE : DECIMAL_BASE;
}

bool isDigit(int base, QChar character)
{
    const char latin1 = character.toLatin1();
    if (base == BINARY_BASE) return latin1 == '0' || latin1 == '1';
    return (latin1 >= '0' && latin1 <= '9') || (latin1 >= 'a' && latin1 <= 'f') ||
           (latin1 >= 'A' && latin1 <= 'F');
}

/// Behind a prefix Qt would take a sign and, in some versions, a second prefix.
std::optional<qint64> integerOf(const Tag& tag, const QString& text)
{
    const int base = baseOf(tag, text);
    const QString digits = base == DECIMAL_BASE ? text : text.mid(2);
    const bool isPlain = std::all_of(digits.begin(), digits.end(), [base](QChar character) {
        return base == DECIMAL_BASE || isDigit(base, character);
    });
    bool ok = false;
    const qint64 value = digits.toLongLong(&ok, base);
    return ok && isPlain ? std::optional<qint64>(value) : std::nullopt;
}

std::optional<QByteArray> integerBytes(const Tag& tag, const QString& text)
{
    const Limits limits = limitsOf(tag.type);
    const std::optional<qint64> value = integerOf(tag, text);
    if (!value || *value < limits.first || *value > limits.second) return std::nullopt;
    return bytesOf(tag, static_cast<quint32>(*value));
}

/// All digits of an unsigned value, 0x00FF or 0b0000000011111111.
QString patternText(const Tag& tag, quint32 bits)
{
    const bool isBinary = tag.format == Tag::BINARY;
    const int base = isBinary ? int(BINARY_BASE) : int(HEXADECIMAL_BASE);
    const int bitsPerDigit = isBinary ? 1 : 4;
    const int digits = tag.units() * WORD_BITS / bitsPerDigit;
    const QString number = QString::number(bits, base).toUpper();
    return QLatin1String(isBinary ? "0b" : "0x") + number.rightJustified(digits, QLatin1Char('0'));
}

bool isNumber(const Tag& tag, const QString& text)
{
    bool isDecimal = false;
    const double value = text.toDouble(&isDecimal);
    return (isDecimal && std::isfinite(value)) || integerOf(tag, text).has_value();
}

bool isNonFinite(const Tag& tag, const QString& text)
{
    const std::optional<float> value = floatOf(text);
    return tag.type == Tag::FLOAT32 && value && !std::isfinite(*value);
}

} // namespace

std::optional<double> tagValueNumber(const Tag& tag, const QByteArray& bytes)
{
    if (!holdsValue(tag, bytes)) return std::nullopt;
    if (tag.isBit()) return byteAt(bytes, 0) != 0 ? 1 : 0;
    const quint32 bits = bitsOf(tag, bytes);
    if (tag.type == Tag::INT16) return static_cast<qint16>(bits);
    if (tag.type == Tag::INT32) return static_cast<qint32>(bits);
    if (tag.type == Tag::FLOAT32) return double(floatOfBits(bits));
    return bits;
}

QString tagValueText(const Tag& tag, const QByteArray& bytes)
{
    if (!holdsValue(tag, bytes)) return QString();
    if (tag.isBit()) return QLatin1String(byteAt(bytes, 0) != 0 ? "1" : "0");
    const quint32 bits = bitsOf(tag, bytes);
    if (tag.type == Tag::INT16) return QString::number(static_cast<qint16>(bits));
    if (tag.type == Tag::INT32) return QString::number(static_cast<qint32>(bits));
    if (tag.type != Tag::FLOAT32)
        return tag.format == Tag::DECIMAL ? QString::number(bits) : patternText(tag, bits);
    return floatText(floatOfBits(bits));
}

std::optional<QByteArray> tagValueBytes(const Tag& tag, const QString& text)
{
    const QString trimmed = text.trimmed();
    if (tag.type == Tag::BOOL) return boolBytes(trimmed);
    if (tag.type == Tag::FLOAT32) return floatBytes(tag, trimmed);
    return integerBytes(tag, trimmed);
}

QString tagValuesText(const Tag& tag)
{
    const QString range = QLatin1String("%1 to %2");
    if (tag.type == Tag::BOOL) return QLatin1String("0, 1, true or false");
    if (tag.type == Tag::FLOAT32)
        return range.arg(floatText(std::numeric_limits<float>::lowest()),
                         floatText(std::numeric_limits<float>::max()));
    const Limits limits = limitsOf(tag.type);
    return range.arg(limits.first).arg(limits.second);
}

QByteArray tagFloatBytes(const Tag& tag, float value)
{
    quint32 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bytesOf(tag, bits);
}

QString valueProblem(const Tag& tag, const QString& text, NonFinite nonFinite)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) return QLatin1String("the value is missing");
    if (nonFinite == REFUSE_NON_FINITE && isNonFinite(tag, trimmed))
        return trimmed + QLatin1String(" is written with --allow-nan only");
    if (tagValueBytes(tag, trimmed)) return QString();
    if (isNumber(tag, trimmed))
        return QString(QLatin1String("%1 does not fit %2: %3"))
            .arg(trimmed, tagTypeText(tag), tagValuesText(tag));
    return QString(QLatin1String("\"%1\" is no value of type %2: %3"))
        .arg(trimmed, tagTypeText(tag), tagValuesText(tag));
}
