#ifndef PAGE_ROUTES_H
#define PAGE_ROUTES_H

#include "http/httpRoutes.h"

/// Adds the page: "/" and "/NAME" for each of its other files. A body goes out as gzip when the
/// client takes it. Each file has an `ETag`; a client that has the file already gets 304. The login
/// page, "/login.html" with its own files, needs no token.
void addPageRoutes(HttpRoutes& routes);

#endif
