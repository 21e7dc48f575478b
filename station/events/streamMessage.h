#ifndef STREAM_MESSAGE_H
#define STREAM_MESSAGE_H

#include <QByteArray>

#include <memory>

/// One message of the stream as it is sent. It is encoded once; all clients send the same bytes.
struct StreamMessage
{
    quint64 id = 0;
    QByteArray text; ///< a Server-Sent Event as a whole, with the blank line that ends it
};

using SharedMessage = std::shared_ptr<const StreamMessage>;

/// @param name      the event's name, such as "values"
/// @param document  JSON without a line break
SharedMessage streamMessage(quint64 id, const char* name, const QByteArray& document);

#endif
