#include "machine/driverCopy.h"

#include <QFile>

#include <sys/mman.h>
#include <unistd.h>

std::unique_ptr<DriverLibrary> loadDriverCopy(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw DriverNotLoaded((fileName + QLatin1String(": ") + file.errorString()).toStdString());
    const QByteArray bytes = file.readAll();
    const int copy = memfd_create("kakb-driver", MFD_CLOEXEC);
    if (copy < 0 || ::write(copy, bytes.constData(), size_t(bytes.size())) != bytes.size())
        throw DriverError("no memory for a copy of the driver");
    // The descriptor stays open: its number must never name another copy.
    return std::make_unique<DriverLibrary>(QLatin1String("/proc/self/fd/") + QString::number(copy));
}
