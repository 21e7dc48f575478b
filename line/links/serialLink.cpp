#include "links/serialLink.h"

#include "links/descriptor.h"
#include "links/descriptorBytes.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

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

/// Of a port that has several names, such as a link by its adapter's serial number, the one that
/// all programs lock. Qt looks below /dev for what does not begin with a slash or a dot.
QString pathOf(const QString& device)
{
    const QString canonical = QFileInfo(device).canonicalFilePath();
    return canonical.isEmpty() ? device : canonical;
}

} // namespace

SerialLink::SerialLink(const QString& device, const LineSettings& settings)
    : m_device(device), m_port(pathOf(device))
{
    m_port.setBaudRate(settings.baud);
    m_port.setDataBits(static_cast<QSerialPort::DataBits>(settings.dataBits));
    m_port.setParity(parityOf(settings));
    m_port.setStopBits(settings.stopBits == 2 ? QSerialPort::TwoStop : QSerialPort::OneStop);
    if (!m_port.open(QIODevice::ReadWrite)) throw openingError();
    lock();
    m_port.clear(); // what came for an earlier host
}

/// The lock that terminal programs respect. Qt's own exclusive mode does not stop the system's
/// administrator, and its lock file only programs that look for it.
void SerialLink::lock()
{
    if (flock(descriptor(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) throw inUse();
}

LinkError SerialLink::inUse() const
{
    return error(QLatin1String("in use by another program"));
}

LinkError SerialLink::error(const QString& reason) const
{
    return LinkError((m_device + QLatin1String(": ") + reason).toStdString());
}

/// What can be opened but has no line settings is refused by the system in words of its own.
LinkError SerialLink::openingError() const
{
    const QByteArray name = QFile::encodeName(m_device);
    const Descriptor opened(open(name.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    if (opened.number() >= 0 && !isatty(opened.number()))
        return LinkError((m_device + QLatin1String(" is not a serial port")).toStdString());
    const bool isBusy = opened.number() < 0 && errno == EBUSY;
    const bool isLocked = opened.number() >= 0 && m_port.error() == QSerialPort::PermissionError;
    if (isBusy || isLocked) return inUse();
    return error(m_port.errorString());
}

/// An unplugged adapter stays readable for ever and has nothing to read.
LinkError SerialLink::systemError(int number) const
{
    switch (number) {
    case EIO:
    case ENXIO:
    case ENODEV:
    case ENODATA:
        return error(QLatin1String("the device is gone"));
    case ETIMEDOUT:
        return error(QLatin1String("the device takes no bytes"));
    default:
        return error(QString::fromStdString(std::generic_category().message(number)));
    }
}

void SerialLink::write(const QByteArray& bytes)
{
    if (const int failure = writeAll(descriptor(), bytes, ::write)) throw systemError(failure);
}

QByteArray SerialLink::read()
{
    QByteArray bytes;
    if (const int failure = readAvailable(descriptor(), bytes)) throw systemError(failure);
    return bytes;
}

int SerialLink::descriptor() const
{
    return int(m_port.handle());
}
