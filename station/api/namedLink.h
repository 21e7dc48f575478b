#ifndef NAMED_LINK_H
#define NAMED_LINK_H

#include "api/stationParts.h"

// The links and tags that requests name.

/// The name under a key of the query; empty: the request names none.
QString queriedName(const HttpRequest& request, const QByteArray& key);

/// 404: there is no such link, or no such tag.
HttpResponse unknownLink(const QString& name);
HttpResponse unknownTag(const QString& name);

#endif
