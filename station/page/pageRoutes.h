#ifndef PAGE_ROUTES_H
#define PAGE_ROUTES_H

#include "http/httpRoutes.h"

#include <QByteArrayList>

/// Adds the page: "/" and "/NAME" for each of its other files. A body goes out as gzip when the
/// client takes it. Each file has an `ETag`; a client that has the file already gets 304.
void addPageRoutes(HttpRoutes& routes);

/// The paths of the login page and its own files. They hold nothing of the station and are needed
/// before a token was given.
const QByteArrayList& loginPaths();

#endif
