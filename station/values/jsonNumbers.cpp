#include "values/jsonNumbers.h"

#include <cmath>

namespace {

enum { LONGEST_SHOWN = 40 };

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

/// A number that QJsonDocument takes, of the same length.
QByteArray readable(const QByteArray& number)
{
    bool fitsDouble = false;
    const double value = number.toDouble(&fitsDouble);
    if (fitsDouble && !std::isinf(value)) return number;
    QByteArray other = std::isinf(value) ? BEYOND_DOUBLE_TEXT : "0";
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
