#include "api/namedLink.h"

#include "plan/tagText.h"

QString queriedName(const HttpRequest& request, const QByteArray& key)
{
    return QString::fromUtf8(request.queried(key).value_or(QByteArray()));
}

std::shared_ptr<MachineLink> linkNamed(const StationParts& parts, const QString& name)
{
    std::shared_ptr<MachineLink> link = parts.links.find(name);
    if (!link)
        throw ApiError(ApiError::NOT_FOUND, QLatin1String("there is no link ") + quoted(name));
    return link;
}

std::vector<std::shared_ptr<MachineLink>> queriedLinks(const StationParts& parts,
                                                       const HttpRequest& request)
{
    const QString name = queriedName(request, "link");
    if (name.isEmpty()) return parts.links.all();
    return {linkNamed(parts, name)};
}

std::shared_ptr<MachineLink> queriedLink(const StationParts& parts, const HttpRequest& request)
{
    const QString name = queriedName(request, "link");
    if (name.isEmpty())
        throw ApiError(ApiError::BAD_REQUEST, QLatin1String("the query names no link"));
    return linkNamed(parts, name);
}

int tagNamed(const MachineLink& link, const QString& name)
{
    const std::optional<int> tag = link.tagNamed(name);
    if (!tag)
        throw ApiError(
            ApiError::NOT_FOUND,
            QString(QLatin1String("link %1 has no tag %2")).arg(quoted(link.name()), quoted(name)));
    return *tag;
}
