#include "values/jsonNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace {

enum { LONGEST_SHOWN = 40, MOST_EXPONENT = 1000000000 };

/// As short as the shortest number beyond a double, `2e308`.
const char BEYOND_DOUBLE_TEXT[] = "1e308";

bool isDigit(char sign)
{
    return sign >= '0' && sign <= '9';
}

bool isOfNumber(char sign)
{
    return isDigit(sign) || sign == '-' || sign == '+' || sign == '.' || sign == 'e' || sign == 'E';
}

bool beginsNumber(char sign)
{
    return isOfNumber(sign) && sign != 'e' && sign != 'E';
}

/// RFC 8259, 6: [ minus ] int [ frac ] [ exp ].
class NumberGrammar
{
public:
    explicit NumberGrammar(const QByteArray& text) : m_text(text) {}

    bool isNumber()
    {
        take('-');
        if (!take('0') && !takeDigits()) return false;
        if (take('.') && !takeDigits()) return false;
        if ((take('e') || take('E')) && !takeExponent()) return false;
        return m_at == int(m_text.size());
    }

private:
    bool take(char sign)
    {
        const bool isThere = m_at < int(m_text.size()) && m_text.at(m_at) == sign;
        if (isThere) ++m_at;
        return isThere;
    }

    /// @return false: there is none
    bool takeDigits()
    {
        const int begin = m_at;
        while (m_at < int(m_text.size()) && isDigit(m_text.at(m_at)))
            ++m_at;
        return m_at > begin;
    }

    bool takeExponent()
    {
        if (!take('-')) take('+');
        return takeDigits();
    }

    const QByteArray& m_text;
    int m_at = 0;
};

/// The exponent of a number behind its digits, at most MOST_EXPONENT in size.
qint64 exponentOf(const QByteArray& number)
{
    const int begin = int(number.toLower().indexOf('e')) + 1;
    if (begin == 0) return 0;
    qint64 exponent = 0;
    for (const char sign : number.mid(begin))
        if (isDigit(sign)) exponent = std::min<qint64>(exponent * 10 + (sign - '0'), MOST_EXPONENT);
    return number.at(begin) == '-' ? -exponent : exponent;
}

/// Whether a number that is not 0 is 1 or more in size, by the place of its first digit.
bool isLarge(const QByteArray& number)
{
    qint64 place = exponentOf(number); // the number is 0.D times ten to its power, D not 0
    bool hasBegun = false, isFraction = false;
    for (const char sign : number) {
        if (sign == 'e' || sign == 'E') break;
        if (sign == '.') isFraction = true;
        if (!isDigit(sign)) continue;
        hasBegun = hasBegun || sign != '0';
        if (hasBegun && !isFraction) ++place;
        if (!hasBegun && isFraction) --place;
    }
    return place > 0;
}

/// A number that QJsonDocument takes, of the same length. What toDouble() tells of a number that no
/// double holds differs between the versions of Qt.
QByteArray readable(const QByteArray& number)
{
    double value = 0;
    const char* const end = number.constData() + number.size();
    const auto read = std::from_chars(number.constData(), end, value);
    if (read.ec != std::errc::result_out_of_range) return number;
    QByteArray other = isLarge(number) ? BEYOND_DOUBLE_TEXT : "0";
    if (number.startsWith('-')) other.prepend('-');
    return other.leftJustified(number.size(), ' ');
}

/// The place behind the text that begins at a quotation mark.
int behindText(const QByteArray& json, int at)
{
    for (++at; at < int(json.size()) && json.at(at) != '"'; ++at) {
        if (json.at(at) == '\\') ++at; // an escaped quotation mark does not end the text
    }
    return at + 1;
}

int behindNumber(const QByteArray& json, int at)
{
    while (at < int(json.size()) && isOfNumber(json.at(at)))
        ++at;
    return at;
}

QString notJson(const QByteArray& number)
{
    return QString(QLatin1String("the number %1 is not JSON"))
        .arg(QString::fromLatin1(number.left(LONGEST_SHOWN)));
}

} // namespace

JsonNumbers jsonNumbersOf(const QByteArray& json)
{
    JsonNumbers numbers;
    numbers.json = json;
    for (int at = 0; at < int(json.size());) {
        if (json.at(at) == '"') {
            at = behindText(json, at);
            continue;
        }
        if (!beginsNumber(json.at(at))) {
            ++at;
            continue;
        }
        const int end = behindNumber(json, at);
        const QByteArray number = json.mid(at, end - at);
        if (!NumberGrammar(number).isNumber()) {
            numbers.problem = notJson(number);
            return numbers;
        }
        numbers.json.replace(at, end - at, readable(number));
        at = end;
    }
    return numbers;
}

std::optional<qint64> wholeNumber(const QJsonValue& value)
{
    const double number = value.toDouble();
    const bool isWhole = std::fabs(number) <= MOST_EXACT && std::trunc(number) == number;
    if (!value.isDouble() || !isWhole) return std::nullopt;
    return qint64(number);
}
