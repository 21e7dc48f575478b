#ifndef API_ERROR_H
#define API_ERROR_H

#include "http/httpMessages.h"

#include <stdexcept>

/// Why the API does not do what a request asks for. what() is one sentence, and the answer.
struct ApiError : std::runtime_error
{
    enum Status {
        BAD_REQUEST = 400,   ///< the body or the query is not of the request's form
        READ_ONLY = 403,     ///< the station or the tag may not be written
        NOT_FOUND = 404,     ///< there is no such link or tag
        UNPROCESSABLE = 422, ///< a value does not fit
        UNAVAILABLE = 503    ///< the station cannot do it now
    };

    ApiError(Status which, const QString& sentence)
        : std::runtime_error(sentence.toStdString()), status(which)
    {
    }

    const Status status;
};

/// Makes the function of a route from one that makes the response at once or throws an ApiError.
HttpFunction answering(std::function<HttpResponse(const HttpRequest&)> respond);

/// The answer that tells the error.
HttpResponse responseTo(const ApiError& error);

#endif
