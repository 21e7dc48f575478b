#include "http/sentResponse.h"

#include "http/securityHeaders.h"

#include <algorithm>

namespace {

enum { STREAM_BLOCK_BYTES = 8192 }; // of each stream; 16 kB took no less processor time

/// A stream's body while the library sends it. The library owns it.
struct SentBody
{
    std::shared_ptr<HttpBody> body;
    BodyRests rests;
};

ssize_t readBody(void* context, uint64_t, char* to, size_t size)
{
    const auto& sent = *static_cast<SentBody*>(context);
    const qint64 count = sent.body->read(to, size);
    if (count < 0) return MHD_CONTENT_READER_END_OF_STREAM;
    if (count == HttpBody::NOTHING_YET && !sent.rests(sent.body))
        return MHD_CONTENT_READER_END_WITH_ERROR;
    return ssize_t(std::min(quint64(count), quint64(size)));
}

void freeBody(void* context)
{
    delete static_cast<SentBody*>(context);
}

void freeBytes(void* context)
{
    delete static_cast<QByteArray*>(context);
}

MHD_Response* libraryResponse(const HttpResponse& response, BodyRests bodyRests)
{
    if (response.stream) {
        return MHD_create_response_from_callback(
            MHD_SIZE_UNKNOWN, STREAM_BLOCK_BYTES, readBody,
            new SentBody{response.stream, std::move(bodyRests)}, freeBody);
    }
    // Shares the bytes: the page's files are never copied.
    auto* const bytes = new QByteArray(response.body);
    return MHD_create_response_from_buffer_with_free_callback_cls(
        size_t(bytes->size()), const_cast<char*>(bytes->constData()), freeBytes, bytes);
}

} // namespace

MHD_Result sendResponse(MHD_Connection* connection, const HttpResponse& response,
                        BodyRests bodyRests)
{
    MHD_Response* const made = libraryResponse(response, std::move(bodyRests));
    if (!made) return MHD_NO;
    for (const auto& header : allHeaders(response))
        MHD_add_response_header(made, header.first.constData(), header.second.constData());
    const MHD_Result result = MHD_queue_response(connection, unsigned(response.status), made);
    MHD_destroy_response(made);
    return result;
}

QByteArray lastResponse(const HttpResponse& response)
{
    QByteArray bytes = "HTTP/1.1 " + QByteArray::number(response.status) + " " +
                       MHD_get_reason_phrase_for(unsigned(response.status)) + "\r\n";
    for (const auto& header : allHeaders(response))
        bytes += header.first + ": " + header.second + "\r\n";
    bytes += "Connection: close\r\n";
    if (!response.stream)
        bytes += "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
    return bytes + "\r\n" + response.body;
}
