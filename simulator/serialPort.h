#ifndef SERIAL_PORT_H
#define SERIAL_PORT_H

#include "terminalLine.h"

/// A serial port with 8 data bits, no parity and 1 stop bit. Only one program at a time can open
/// the port.
class SerialPort : public TerminalLine
{
public:
    SerialPort(const std::string& device, int baud);
    ~SerialPort() override;

    std::string address() const override
    {
        return m_device;
    }

private:
    void lock();
    void configure(int baud);

    std::string m_device;
};

#endif
