#ifndef HTTP_ROUTES_H
#define HTTP_ROUTES_H

#include "http/httpMessages.h"

#include <map>

/// The paths of the station and what answers them. Constant once a server uses it.
class HttpRoutes
{
public:
    /// @param path  as a whole, "/api/v1/values"
    void add(const QByteArray& method, const QByteArray& path, HttpFunction function);

    /// Adds a path that needs no token: the login page's own files.
    void addPublic(const QByteArray& method, const QByteArray& path, HttpFunction function);

    /// Where a browser without a token is sent when it asks for "/". Empty: nowhere, it gets 401.
    void setLoginPage(const QByteArray& path);
    const QByteArray& loginPage() const
    {
        return m_loginPage;
    }

    bool isPublic(const QByteArray& path) const;
    bool takesPost(const QByteArray& path) const;

    /// Answers the request: 404 for an unknown path, 405 with `Allow` for another method. HEAD is
    /// answered as GET; the server leaves the body out.
    void answer(const HttpRequest& request, const HttpAnswer& answer) const;

private:
    struct Path
    {
        bool isPublic = false;
        std::map<QByteArray, HttpFunction> functions; ///< by method
    };

    std::map<QByteArray, Path> m_paths;
    QByteArray m_loginPage;
};

#endif
