#include "links/serialLink.h"

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
    if (!m_port.open(QIODevice::ReadWrite)) throw error();
}

/// What an unplugged device gives has no words of its own in every version of Qt.
LinkError SerialLink::error() const
{
    const bool isGone = m_port.isOpen() && (m_port.error() == QSerialPort::ResourceError ||
                                            m_port.error() == QSerialPort::UnknownError);
    if (isGone) return LinkError((m_device + QLatin1String(": the device is gone")).toStdString());
    return LinkError((m_device + QLatin1String(": ") + m_port.errorString()).toStdString());
}

void SerialLink::write(const QByteArray& bytes)
{
    if (m_port.write(bytes) != bytes.size()) throw error();
    m_port.flush();
    if (m_port.bytesToWrite() > 0 && !m_port.waitForBytesWritten(WRITE_TIMEOUT_MS)) throw error();
}

/// An unplugged adapter stays readable for ever and has nothing to read.
QByteArray SerialLink::read()
{
    m_port.waitForReadyRead(0);
    QByteArray bytes = m_port.readAll();
    if (bytes.isEmpty() && m_port.error() != QSerialPort::NoError &&
        m_port.error() != QSerialPort::TimeoutError)
        throw error();
    m_port.clearError();
    return bytes;
}

int SerialLink::descriptor() const
{
    return int(m_port.handle());
}
