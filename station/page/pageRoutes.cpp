#include "page/pageRoutes.h"

#include "page/pageFile.h"

#include <QByteArrayList>

namespace {

enum { OK = 200, NOT_MODIFIED = 304 };

QByteArray pathOf(const PageFile& file)
{
    const QByteArray name(file.name);
    return name == "index.html" ? QByteArray("/") : '/' + name;
}

/// Whether the file is needed before a token was given. It holds nothing of the station.
bool isOfLoginPage(const PageFile& file)
{
    return QByteArray(file.name).startsWith("login.");
}

/// A constant of the program as bytes, without a copy.
QByteArray constantBytes(const unsigned char* bytes, size_t size)
{
    return QByteArray::fromRawData(reinterpret_cast<const char*>(bytes), int(size));
}

/// Whether a coding of `Accept-Encoding` ("gzip;q=0.5") is gzip and is not ruled out by a weight
/// of 0.
bool isWantedGzip(const QByteArray& coding)
{
    const int semicolon = int(coding.indexOf(';'));
    const QByteArray name = coding.left(semicolon).trimmed().toLower();
    if (name != "gzip" && name != "x-gzip") return false;
    if (semicolon < 0) return true;
    const QByteArray weight = coding.mid(semicolon + 1).trimmed().toLower();
    return !weight.startsWith("q=") || weight.mid(2).trimmed().toDouble() > 0;
}

bool takesGzip(const HttpRequest& request)
{
    for (const QByteArray& coding : request.header("accept-encoding").split(','))
        if (isWantedGzip(coding)) return true;
    return false;
}

/// Whether the client's copy is the file as it is now. Both codings of a file have tags of their
/// own; a copy of either is as good.
bool hasAlready(const HttpRequest& request, const QByteArray& digest)
{
    return request.header("if-none-match").contains(digest);
}

HttpResponse responseWith(const PageFile& file, const HttpRequest& request)
{
    const bool isPacked = takesGzip(request);
    const QByteArray digest(file.digest);
    HttpResponse response;
    response.headers = {{"ETag", '"' + digest + (isPacked ? "-gzip\"" : "\"")},
                        {"Vary", "Accept-Encoding"},
                        {"Cache-Control", "no-cache"}};
    if (hasAlready(request, digest)) {
        response.status = NOT_MODIFIED;
        return response;
    }
    response.status = OK;
    response.contentType = file.contentType;
    response.body = isPacked ? constantBytes(file.packed, file.packedSize)
                             : constantBytes(file.bytes, file.size);
    if (isPacked) response.headers.emplace_back("Content-Encoding", "gzip");
    return response;
}

} // namespace

void addPageRoutes(HttpRoutes& routes)
{
    for (const PageFile& file : pageFiles()) {
        const HttpFunction function = [&file](const HttpRequest& request,
                                              const HttpAnswer& answer) {
            answer(responseWith(file, request));
        };
        if (isOfLoginPage(file))
            routes.addPublic("GET", pathOf(file), function);
        else
            routes.add("GET", pathOf(file), function);
    }
    routes.setLoginPage("/login.html");
}
