#ifndef TERMINAL_LINE_H
#define TERMINAL_LINE_H

#include "lineEnd.h"
#include "uniqueDescriptor.h"

/// The common part of a pseudo-terminal and a serial port: bytes through one descriptor.
class TerminalLine : public LineEnd
{
public:
    int descriptor() const override
    {
        return m_descriptor.get();
    }
    Bytes receive() override;
    void send(const Bytes& bytes) override;

protected:
    UniqueDescriptor m_descriptor; ///< opened by the derived class, without blocking
};

#endif
