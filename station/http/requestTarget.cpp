#include "http/requestTarget.h"

#include <QList>

#include <algorithm>

namespace {

/// The value of a hexadecimal digit; -1: it is none.
int digit(char character)
{
    if (character >= '0' && character <= '9') return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

bool isControl(char character)
{
    return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
}

bool isPlainText(const QByteArray& bytes)
{
    if (std::any_of(bytes.begin(), bytes.end(), isControl)) return false;
    // What is no UTF-8 comes back changed.
    return QString::fromUtf8(bytes).toUtf8() == bytes;
}

enum Plus { PLUS_IS_PLUS, PLUS_IS_SPACE };

std::optional<QByteArray> decoded(const QByteArray& text, Plus plus)
{
    QByteArray bytes;
    for (int at = 0; at < int(text.size()); ++at) {
        const char character = text.at(at);
        if (character == '+' && plus == PLUS_IS_SPACE) {
            bytes += ' ';
        } else if (character == '%') {
            const int high = at + 2 < int(text.size()) ? digit(text.at(at + 1)) : -1;
            const int low = high >= 0 ? digit(text.at(at + 2)) : -1;
            if (low < 0) return std::nullopt;
            bytes += char(16 * high + low);
            at += 2;
        } else {
            bytes += character;
        }
    }
    if (!isPlainText(bytes)) return std::nullopt;
    return bytes;
}

std::optional<HttpRequest::Pairs> decodedQuery(const QByteArray& text)
{
    HttpRequest::Pairs pairs;
    for (const QByteArray& part : text.split('&')) {
        if (part.isEmpty()) continue;
        const int equals = int(part.indexOf('='));
        const auto key = decoded(equals < 0 ? part : part.left(equals), PLUS_IS_SPACE);
        const auto value = decoded(equals < 0 ? QByteArray() : part.mid(equals + 1), PLUS_IS_SPACE);
        if (!key || !value) return std::nullopt;
        pairs.emplace_back(*key, *value);
    }
    return pairs;
}

} // namespace

std::optional<RequestTarget> requestTarget(const QByteArray& text)
{
    if (!text.startsWith('/')) return std::nullopt;
    const int question = int(text.indexOf('?'));
    const auto path = decoded(question < 0 ? text : text.left(question), PLUS_IS_PLUS);
    const auto query = decodedQuery(question < 0 ? QByteArray() : text.mid(question + 1));
    if (!path || !query) return std::nullopt;
    return RequestTarget{*path, *query};
}
