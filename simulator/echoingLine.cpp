#include "echoingLine.h"

Bytes EchoingLine::receive()
{
    const Bytes bytes = m_line.receive();
    if (bytes.empty()) return bytes;
    m_line.send(bytes);
    m_echoed += std::int64_t(bytes.size());
    return bytes;
}
