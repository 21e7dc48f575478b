#include "values/jsonText.h"

#include <charconv>
#include <cmath>

namespace {

enum { FIRST_PRINTABLE = 0x20, LONGEST_NUMBER = 32 };

/// RFC 8259, 7: the quotation mark, the backslash and the control characters.
void appendEscaped(QByteArray& json, char character)
{
    const char digits[] = "0123456789abcdef";
    const auto code = static_cast<unsigned char>(character);
    if (code >= FIRST_PRINTABLE) {
        json.append('\\').append(character);
        return;
    }
    json.append("\\u00").append(digits[code >> 4]).append(digits[code & 0xFu]);
}

bool isPlain(char character)
{
    return static_cast<unsigned char>(character) >= FIRST_PRINTABLE && character != '"' &&
           character != '\\';
}

} // namespace

void JsonText::separate()
{
    if (m_hasValueAhead) m_json.append(',');
    m_hasValueAhead = true;
}

JsonText& JsonText::beginObject()
{
    separate();
    m_json.append('{');
    m_hasValueAhead = false;
    return *this;
}

JsonText& JsonText::endObject()
{
    m_json.append('}');
    m_hasValueAhead = true;
    return *this;
}

JsonText& JsonText::beginArray()
{
    separate();
    m_json.append('[');
    m_hasValueAhead = false;
    return *this;
}

JsonText& JsonText::endArray()
{
    m_json.append(']');
    m_hasValueAhead = true;
    return *this;
}

JsonText& JsonText::key(const char* name)
{
    word(name);
    m_json.append(':');
    m_hasValueAhead = false;
    return *this;
}

JsonText& JsonText::text(const QString& text)
{
    separate();
    const QByteArray utf8 = text.toUtf8();
    m_json.append('"');
    int plainFrom = 0;
    const int size = int(utf8.size());
    for (int at = 0; at < size; ++at) {
        if (isPlain(utf8.at(at))) continue;
        m_json.append(utf8.constData() + plainFrom, at - plainFrom);
        appendEscaped(m_json, utf8.at(at));
        plainFrom = at + 1;
    }
    m_json.append(utf8.constData() + plainFrom, size - plainFrom).append('"');
    return *this;
}

JsonText& JsonText::textOrNull(const QString& given)
{
    return given.isEmpty() ? null() : text(given);
}

JsonText& JsonText::word(const char* text)
{
    separate();
    m_json.append('"').append(text).append('"');
    return *this;
}

JsonText& JsonText::integer(qint64 value)
{
    separate();
    m_json.append(QByteArray::number(value));
    return *this;
}

JsonText& JsonText::number(double value)
{
    if (std::isnan(value)) return word("nan");
    if (std::isinf(value)) return word(value > 0 ? "inf" : "-inf");
    separate();
    char digits[LONGEST_NUMBER];
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    m_json.append(digits, int(result.ptr - digits));
    return *this;
}

JsonText& JsonText::boolean(bool value)
{
    return raw(value ? "true" : "false");
}

JsonText& JsonText::null()
{
    return raw("null");
}

JsonText& JsonText::raw(const QByteArray& json)
{
    separate();
    m_json.append(json);
    return *this;
}
