#ifndef STREAM_READER_H
#define STREAM_READER_H

#include "http/httpMessages.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <vector>

/// A message as a client of the stream reads it.
struct ReceivedMessage
{
    quint64 id = 0;
    QByteArray name;
    QByteArray data;

    QJsonObject json() const
    {
        return QJsonDocument::fromJson(data).object();
    }
    bool isFull() const
    {
        return name == "values" && json().value(QLatin1String("full")).toBool();
    }
};

/// Reads Server-Sent Events as a browser does: fields by line, of two names or ids the last counts,
/// a blank line ends the message, and one without data is none.
class StreamReader
{
public:
    /// Takes what came; returns the messages that are whole now.
    std::vector<ReceivedMessage> take(const QByteArray& bytes)
    {
        m_rest.append(bytes);
        std::vector<ReceivedMessage> messages;
        for (int end = int(m_rest.indexOf('\n')); end >= 0; end = int(m_rest.indexOf('\n'))) {
            takeLine(m_rest.left(end), messages);
            m_rest.remove(0, end + 1);
        }
        return messages;
    }

    /// Reads all that the body has now, in pieces of a size.
    std::vector<ReceivedMessage> readAll(HttpBody& body, size_t pieces = 16384)
    {
        QByteArray bytes;
        std::vector<char> piece(pieces);
        for (qint64 count = 1; count > 0;) {
            count = body.read(piece.data(), pieces);
            if (count > 0) bytes.append(piece.data(), int(count));
        }
        return take(bytes);
    }

private:
    void takeLine(const QByteArray& line, std::vector<ReceivedMessage>& messages)
    {
        if (line.isEmpty()) {
            m_message.id = m_lastId;
            if (!m_message.data.isEmpty()) messages.push_back(m_message);
            m_message = ReceivedMessage();
            return;
        }
        const int colon = int(line.indexOf(": "));
        const QByteArray value = line.mid(colon + 2);
        if (line.startsWith("id: ")) m_lastId = value.toULongLong();
        if (line.startsWith("event: ")) m_message.name = value;
        if (line.startsWith("data: ")) m_message.data += value;
    }

    QByteArray m_rest;
    ReceivedMessage m_message;
    quint64 m_lastId = 0;
};

#endif
