#include "api/frameDocument.h"

#include "session/frameMeaning.h"

FrameRecord recordOf(const LoggedFrame& frame)
{
    FrameRecord record;
    record.time = frame.time;
    record.direction = frame.direction;
    record.bytes = frame.bytes;
    return record;
}

void appendFrame(JsonText& json, const GatheredFrame& frame)
{
    json.beginObject().key("time").integer(frame.time);
    json.key("direction").word(isSent(frame) ? ">" : "<");
    json.key("hex").word(frame.bytes.toHex(' ').toUpper().constData());
    json.key("meaning").text(frameMeaning(frame)).endObject();
}
