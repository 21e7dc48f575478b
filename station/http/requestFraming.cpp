#include "http/requestFraming.h"

#include <algorithm>
#include <cstring>

namespace {

bool isTokenCharacter(char character)
{
    const bool isLetter = (character >= 'a' && character <= 'z');
    const bool isDigit = character >= '0' && character <= '9';
    return isLetter || isDigit ||
           (character != '\0' && std::strchr("!#$%&'*+-.^_`|~", character) != nullptr);
}

/// A header's name with a space at its end is another name to some readers.
bool isToken(const QByteArray& name)
{
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), isTokenCharacter);
}

bool isPlainValue(const QByteArray& value)
{
    return std::all_of(value.begin(), value.end(), [](char character) {
        return character == '\t' ||
               (static_cast<unsigned char>(character) >= 0x20 && character != 0x7f);
    });
}

std::vector<QByteArray> valuesOf(const RequestHead& head, const QByteArray& name)
{
    std::vector<QByteArray> values;
    for (const auto& header : head.headers) {
        if (header.first == name) values.push_back(header.second);
    }
    return values;
}

/// -1: the text is no length.
qint64 lengthNumber(const QByteArray& text)
{
    enum { MOST_DIGITS = 18 };
    const bool isNumber = !text.isEmpty() && text.size() <= MOST_DIGITS &&
                          std::all_of(text.begin(), text.end(), [](char character) {
                              return character >= '0' && character <= '9';
                          });
    return isNumber ? text.toLongLong() : -1;
}

HttpResponse unsound(const QString& sentence)
{
    return errorResponse(400, sentence);
}

} // namespace

std::optional<HttpResponse> framingRefusal(const RequestHead& head)
{
    if (head.bytes > MOST_HEAD_BYTES) {
        return errorResponse(
            431,
            QStringLiteral("the head of a request has at most %1 bytes").arg(int(MOST_HEAD_BYTES)));
    }
    for (const auto& header : head.headers) {
        if (!isToken(header.first) || !isPlainValue(header.second))
            return unsound(QStringLiteral("a header is not well formed"));
    }
    const auto lengths = valuesOf(head, "content-length");
    const auto encodings = valuesOf(head, "transfer-encoding");
    if (!encodings.empty()) {
        if (!lengths.empty())
            return unsound(QStringLiteral("Content-Length beside Transfer-Encoding"));
        if (encodings.size() > 1 || encodings[0].toLower() != "chunked" ||
            head.version != "HTTP/1.1")
            return unsound(QStringLiteral("the only Transfer-Encoding is chunked"));
    }
    if (lengths.empty()) return std::nullopt;
    const qint64 length = lengthNumber(lengths[0]);
    if (lengths.size() > 1) return unsound(QStringLiteral("more than one Content-Length"));
    if (length < 0) return unsound(QStringLiteral("the Content-Length is no number of bytes"));
    if (length > MOST_BODY_BYTES) return bodyTooLarge();
    return std::nullopt;
}

HttpResponse bodyTooLarge()
{
    return errorResponse(
        413,
        QStringLiteral("the body of a request has at most %1 bytes").arg(int(MOST_BODY_BYTES)));
}
