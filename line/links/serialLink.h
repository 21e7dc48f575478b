#ifndef SERIAL_LINK_H
#define SERIAL_LINK_H

#include "links/link.h"
#include "wire/lineTiming.h"

#include <QSerialPort>

/// A serial port, or a pseudo-terminal that stands for one. Opened and set up by Qt; the bytes go
/// past its buffers, which take 40 microseconds of an exchange and keep a lost device to
/// themselves. One program has the port at a time, by whatever name it opens it.
class SerialLink : public Link
{
public:
    SerialLink(const QString& device, const LineSettings& settings);

    void write(const QByteArray& bytes) override;
    QByteArray read() override;
    int descriptor() const override;

private:
    void lock();
    LinkError inUse() const;
    LinkError error(const QString& reason) const;
    LinkError openingError() const;
    LinkError systemError(int number) const;

    const QString m_device;
    QSerialPort m_port;
};

#endif
