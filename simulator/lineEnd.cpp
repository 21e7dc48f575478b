#include "lineEnd.h"

#include <cerrno>
#include <cstring>

void failLink(const std::string& what)
{
    throw LinkError(what + ": " + std::strerror(errno));
}

void failOpening(const std::string& what)
{
    const bool isInUse = errno == EADDRINUSE || errno == EBUSY || errno == EWOULDBLOCK;
    if (isInUse) throw LinkError(what + ": in use by another program");
    failLink(what);
}
