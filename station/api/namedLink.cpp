#include "api/namedLink.h"

#include "plan/tagText.h"

namespace {

enum { NOT_FOUND = 404 };

} // namespace

QString queriedName(const HttpRequest& request, const QByteArray& key)
{
    return QString::fromUtf8(request.queried(key).value_or(QByteArray()));
}

HttpResponse unknownLink(const QString& name)
{
    return errorResponse(NOT_FOUND, QLatin1String("there is no link ") + quoted(name));
}

HttpResponse unknownTag(const QString& name)
{
    return errorResponse(NOT_FOUND, QLatin1String("there is no tag ") + quoted(name));
}
