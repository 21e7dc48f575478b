#ifndef SERIAL_LINK_H
#define SERIAL_LINK_H

#include "links/link.h"
#include "wire/lineTiming.h"

#include <QSerialPort>

/// A serial port, or a pseudo-terminal in its place. Qt opens the port and sets the line. The bytes
/// bypass Qt's buffers: these cost 40 microseconds an exchange and hide the loss of the device.
/// Only one program at a time can open the port, under any of its names.
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
