#include "lineEnd.h"

#include <cerrno>
#include <cstring>

void failLink(const std::string& what)
{
    throw LinkError(what + ": " + std::strerror(errno));
}
