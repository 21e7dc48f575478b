#include "links/serialLink.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace {

const int WRITE_TIMEOUT_MS = 5000;

QSerialPort::Parity parityOf(const LineSettings& settings)
{
    switch (settings.parity) {
    case LineSettings::EVEN_PARITY:
        return QSerialPort::EvenParity;
    case LineSettings::ODD_PARITY:
        return QSerialPort::OddParity;
    default:
        return QSerialPort::NoParity;
    }
}

} // namespace

SerialLink::SerialLink(const QString& device, const LineSettings& settings)
    : m_device(device), m_port(device)
{
    m_port.setBaudRate(settings.baud);
    m_port.setDataBits(static_cast<QSerialPort::DataBits>(settings.dataBits));
    m_port.setParity(parityOf(settings));
    m_port.setStopBits(settings.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    if (!m_port.open(QIODevice::ReadWrite)) throw error(m_port.errorString());
    m_port.clear(); // what came for an earlier host
}

LinkError SerialLink::error(const QString& reason) const
{
    return LinkError((m_device + QLatin1String(": ") + reason).toStdString());
}

LinkError SerialLink::systemError() const
{
    if (errno == EIO || errno == ENXIO || errno == ENODEV)
        return error(QLatin1String("the device is gone"));
    return error(QString::fromStdString(std::generic_category().message(errno)));
}

void SerialLink::waitUntilWritable() const
{
    pollfd awaited = {descriptor(), POLLOUT, 0};
    if (poll(&awaited, 1, WRITE_TIMEOUT_MS) == 0)
        throw error(QLatin1String("the device takes no bytes"));
}

void SerialLink::write(const QByteArray& bytes)
{
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(descriptor(), bytes.constData() + written, size_t(bytes.size() - written));
        if (count >= 0)
            written += int(count);
        else if (errno == EAGAIN)
            waitUntilWritable();
        else if (errno != EINTR)
            throw systemError();
    }
}

/// An unplugged adapter stays readable for ever and has nothing to read.
QByteArray SerialLink::read()
{
    std::array<char, 4096> bytes;
    const ssize_t count = ::read(descriptor(), bytes.data(), bytes.size());
    if (count > 0) return QByteArray(bytes.data(), int(count));
    if (count < 0 && (errno == EAGAIN || errno == EINTR)) return QByteArray();
    if (count == 0) errno = EIO;
    throw systemError();
}

int SerialLink::descriptor() const
{
    return int(m_port.handle());
}
