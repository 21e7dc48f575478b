#include "http/httpMessages.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace {

/// The first value of a key, compared byte by byte; null: there is none.
const QByteArray* firstValue(const HttpRequest::Pairs& pairs, const QByteArray& key)
{
    for (const auto& pair : pairs) {
        if (pair.first == key) return &pair.second;
    }
    return nullptr;
}

} // namespace

std::optional<QByteArray> HttpRequest::queried(const QByteArray& key) const
{
    const QByteArray* const value = firstValue(query, key);
    return value ? std::optional<QByteArray>(*value) : std::nullopt;
}

QByteArray HttpRequest::header(const QByteArray& name) const
{
    const QByteArray* const value = firstValue(headers, name);
    return value ? *value : QByteArray();
}

HttpResponse errorResponse(int status, const QString& sentence)
{
    const QJsonObject document{{QLatin1String("error"), sentence}};
    HttpResponse response = jsonResponse(QJsonDocument(document).toJson(QJsonDocument::Compact));
    response.status = status;
    return response;
}

HttpResponse jsonResponse(const QByteArray& document)
{
    HttpResponse response;
    response.contentType = QByteArrayLiteral("application/json");
    response.body = document;
    return response;
}
