#include "http/accessToken.h"

#include <QCryptographicHash>
#include <QList>
#include <QMessageAuthenticationCode>

namespace {

enum { COOKIE_DAYS = 365, NAME_DIGITS = 8 };

QByteArray digestOf(const QByteArray& text)
{
    return QCryptographicHash::hash(text, QCryptographicHash::Sha256);
}

QByteArray derived(const QByteArray& token, const char* purpose)
{
    return QMessageAuthenticationCode::hash(purpose, token, QCryptographicHash::Sha256).toHex();
}

/// The digests have one length, so the time tells neither the length of a text nor where two texts
/// differ.
bool areSame(const QByteArray& a, const QByteArray& b)
{
    int difference = int(a.size()) ^ int(b.size());
    for (int i = 0; i < int(a.size()) && i < int(b.size()); ++i)
        difference |= a.at(i) ^ b.at(i);
    return difference == 0;
}

} // namespace

AccessToken::AccessToken(const QByteArray& token)
    : m_digest(digestOf(token)),
      m_cookieName("kakb_" + derived(token, "cookie name").left(NAME_DIGITS)),
      m_cookieValue(derived(token, "cookie value"))
{
}

bool AccessToken::isToken(const QByteArray& shown) const
{
    return areSame(digestOf(shown), m_digest);
}

bool AccessToken::isInCookies(const QByteArray& cookies) const
{
    for (const QByteArray& cookie : cookies.split(';')) {
        const int equals = int(cookie.indexOf('='));
        if (equals < 0 || cookie.left(equals).trimmed() != m_cookieName) continue;
        if (areSame(digestOf(cookie.mid(equals + 1).trimmed()), digestOf(m_cookieValue)))
            return true;
    }
    return false;
}

QByteArray AccessToken::cookieToSet(const QByteArray& origin) const
{
    const QByteArray seconds = QByteArray::number(COOKIE_DAYS * 86400);
    return m_cookieName + "=" + m_cookieValue + "; Path=/; Max-Age=" + seconds +
           "; HttpOnly; SameSite=Strict" + (origin.startsWith("https://") ? "; Secure" : "");
}

QByteArray AccessToken::cookieToTakeBack() const
{
    return m_cookieName + "=; Path=/; Max-Age=0; HttpOnly; SameSite=Strict";
}

std::optional<QByteArray> bearerToken(const QByteArray& authorization)
{
    const int space = int(authorization.indexOf(' '));
    if (space < 0 || authorization.left(space).toLower() != "bearer") return std::nullopt;
    return authorization.mid(space + 1).trimmed();
}
