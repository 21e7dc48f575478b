#ifndef ACCESS_TOKEN_H
#define ACCESS_TOKEN_H

#include "http/httpMessages.h"

/// The secret that a request shows, as `Authorization: Bearer` or, after a login, as a cookie.
///
/// The cookie is made from the token: it holds nothing from which the token could be told, survives
/// a restart of the station, and ends with the token. Every comparison takes the same time for
/// every text that is compared.
class AccessToken
{
public:
    /// @param token  not empty
    explicit AccessToken(const QByteArray& token);

    bool isToken(const QByteArray& shown) const;

    /// Whether a `Cookie` header has the cookie of a login.
    bool isInCookies(const QByteArray& cookies) const;

    /// What sets the cookie, and what takes it back.
    /// @param origin  of the request: a browser that came over TLS sends the cookie only so
    QByteArray cookieToSet(const QByteArray& origin) const;
    QByteArray cookieToTakeBack() const;

private:
    QByteArray m_digest;     ///< of the token
    QByteArray m_cookieName; ///< other stations on the same host have other ones
    QByteArray m_cookieValue;
};

/// The token of an `Authorization` header; empty: it has none.
std::optional<QByteArray> bearerToken(const QByteArray& authorization);

#endif
