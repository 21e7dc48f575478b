#include "http/securityHeaders.h"

#include <algorithm>

HttpRequest::Pairs allHeaders(const HttpResponse& response)
{
    HttpRequest::Pairs headers{
        {"Content-Security-Policy",
         "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
         "img-src 'self' data:; frame-ancestors 'none'; base-uri 'none'; form-action 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"}};
    if (!response.contentType.isEmpty()) headers.emplace_back("Content-Type", response.contentType);
    const bool isCacheSaid =
        std::any_of(response.headers.begin(), response.headers.end(),
                    [](const auto& header) { return header.first == "Cache-Control"; });
    if (!isCacheSaid) headers.emplace_back("Cache-Control", "no-store");
    headers.insert(headers.end(), response.headers.begin(), response.headers.end());
    return headers;
}
