#ifndef HTTP_ROUTES_H
#define HTTP_ROUTES_H

#include "http/httpMessages.h"

#include <map>

/// The paths of the station and what answers them.
class HttpRoutes
{
public:
    /// @param path  as a whole, "/api/v1/values"
    void add(const QByteArray& method, const QByteArray& path, HttpFunction function);

    /// Answers the request: 404 for an unknown path, 405 with `Allow` for another method. HEAD is
    /// answered as GET; the server leaves the body out.
    void answer(const HttpRequest& request, const HttpAnswer& answer) const;

private:
    std::map<QByteArray, std::map<QByteArray, HttpFunction>> m_functions; ///< by path and method
};

#endif
