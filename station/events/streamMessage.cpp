#include "events/streamMessage.h"

SharedMessage streamMessage(quint64 id, const char* name, const QByteArray& document)
{
    enum { ROOM_FOR_FIELDS = 64 };
    auto message = std::make_shared<StreamMessage>();
    message->id = id;
    QByteArray& text = message->text;
    text.reserve(document.size() + ROOM_FOR_FIELDS);
    text.append("id: ").append(QByteArray::number(id));
    text.append("\nevent: ").append(name);
    text.append("\ndata: ").append(document).append("\n\n");
    return message;
}
