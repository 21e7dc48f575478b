#ifndef ECHOING_LINE_H
#define ECHOING_LINE_H

#include "lineEnd.h"

#include <cstdint>

/// A line with local echo, as of a two-wire adapter: every byte of the host goes back to it at
/// once, ahead of any reply.
class EchoingLine : public LineEnd
{
public:
    /// @param line  outlives this
    explicit EchoingLine(LineEnd& line) : m_line(line) {}

    std::string address() const override
    {
        return m_line.address();
    }
    int descriptor() const override
    {
        return m_line.descriptor();
    }
    int listener() const override
    {
        return m_line.listener();
    }
    void acceptHost() override
    {
        m_line.acceptHost();
    }
    int departures() const override
    {
        return m_line.departures();
    }
    void hostLeft() override
    {
        m_line.hostLeft();
    }
    Bytes receive() override;
    void send(const Bytes& bytes) override
    {
        m_line.send(bytes);
    }

    std::int64_t echoedBytes() const
    {
        return m_echoed;
    }

private:
    LineEnd& m_line;
    std::int64_t m_echoed = 0;
};

#endif
