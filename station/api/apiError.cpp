#include "api/apiError.h"

HttpResponse responseTo(const ApiError& error)
{
    return errorResponse(error.status, QString::fromUtf8(error.what()));
}

HttpFunction answering(std::function<HttpResponse(const HttpRequest&)> respond)
{
    return [respond = std::move(respond)](const HttpRequest& request, const HttpAnswer& answer) {
        HttpResponse response;
        try {
            response = respond(request);
        } catch (const ApiError& error) {
            response = responseTo(error);
        }
        answer(std::move(response));
    };
}
