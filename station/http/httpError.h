#ifndef HTTP_ERROR_H
#define HTTP_ERROR_H

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

/// The server cannot start. what() is one sentence.
struct HttpError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// What failed, and the system's reason in errno.
inline HttpError systemHttpError(const std::string& what)
{
    return HttpError(what + ": " + std::strerror(errno));
}

#endif
