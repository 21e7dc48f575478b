#ifndef REQUEST_BODY_H
#define REQUEST_BODY_H

#include "api/apiError.h"

#include <QJsonObject>

// The JSON objects in the bodies of requests. All functions throw ApiError BAD_REQUEST.

/// The keys that an object of a request may have.
using KnownKeys = std::initializer_list<const char*>;

/// The object of a body.
/// @throws ApiError when the body is not JSON, is no object, or has an unknown key or one twice
QJsonObject requestObject(const QByteArray& body, KnownKeys keys);

/// @param what  what the object is, for the sentence: "the request", "row 3"
/// @throws ApiError when the object has a key that is not among `keys`
void mustHaveOnly(const QJsonObject& object, KnownKeys keys, const QString& what);

/// The text under a key.
/// @throws ApiError when it is missing or no text
QString textIn(const QJsonObject& object, const char* key, const QString& what);

#endif
