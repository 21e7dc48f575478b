#ifndef PLAIN_HOST_H
#define PLAIN_HOST_H

#include "benchHost.h"
#include "faultyLine.h"

/// Hands the driver what came, cut to the reply's length, so that nothing but the driver's own
/// checks stands between it and the line. Late replies are more than those can tell apart: it needs
/// a line without them.
class PlainHost
{
public:
    explicit PlainHost(FaultyLine& line) : m_line(line) {}

    QByteArray exchange(const FRAME_PRO& frame)
    {
        return m_line.exchange(requestOf(frame)).left(frame.recvLen);
    }

private:
    FaultyLine& m_line;
};

#endif
