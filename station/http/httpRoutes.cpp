#include "http/httpRoutes.h"

namespace {

HttpResponse wrongMethod(const QByteArray& method, const std::map<QByteArray, HttpFunction>& known)
{
    QByteArray allowed;
    for (const auto& function : known) {
        if (!allowed.isEmpty()) allowed += ", ";
        allowed += function.first;
        if (function.first == "GET") allowed += ", HEAD";
    }
    HttpResponse response = errorResponse(
        405, QStringLiteral("the path takes %1, not %2")
                 .arg(QString::fromLatin1(allowed), QString::fromLatin1(method.left(20))));
    response.headers.emplace_back("Allow", allowed);
    return response;
}

} // namespace

void HttpRoutes::add(const QByteArray& method, const QByteArray& path, HttpFunction function)
{
    m_paths[path].functions[method] = std::move(function);
}

void HttpRoutes::addPublic(const QByteArray& method, const QByteArray& path, HttpFunction function)
{
    add(method, path, std::move(function));
    m_paths[path].isPublic = true;
}

void HttpRoutes::setLoginPage(const QByteArray& path)
{
    m_loginPage = path;
}

bool HttpRoutes::isPublic(const QByteArray& path) const
{
    const auto found = m_paths.find(path);
    return found != m_paths.end() && found->second.isPublic;
}

bool HttpRoutes::takesPost(const QByteArray& path) const
{
    const auto found = m_paths.find(path);
    return found != m_paths.end() && found->second.functions.count("POST") > 0;
}

void HttpRoutes::answer(const HttpRequest& request, const HttpAnswer& answer) const
{
    const auto path = m_paths.find(request.path);
    if (path == m_paths.end()) {
        answer(errorResponse(404, QStringLiteral("the station has no such path")));
        return;
    }
    const auto& functions = path->second.functions;
    const auto function = functions.find(request.method == "HEAD" ? "GET" : request.method);
    if (function == functions.end()) {
        answer(wrongMethod(request.method, functions));
        return;
    }
    function->second(request, answer);
}
