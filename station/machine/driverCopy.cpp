#include "machine/driverCopy.h"

#include "links/descriptorBytes.h"

#include <QFile>

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace {

QByteArray contentsOf(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw DriverNotLoaded((fileName + QLatin1String(": ") + file.errorString()).toStdString());
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw DriverNotLoaded((fileName + QLatin1String(": ") + file.errorString()).toStdString());
    return bytes;
}

DriverError noCopy(int number)
{
    return DriverError("the driver cannot be copied into memory: " +
                       std::generic_category().message(number));
}

/// A file in memory with the bytes. Its descriptor is never closed, see loadDriverCopy().
int memoryFile(const QByteArray& bytes)
{
    const int file = memfd_create("kakb-driver", MFD_CLOEXEC);
    if (file < 0) throw noCopy(errno);
    const int failure = writeAll(file, bytes, ::write);
    if (failure == 0) return file;
    close(file); // no library has the name yet
    throw noCopy(failure);
}

} // namespace

std::unique_ptr<DriverLibrary> loadDriverCopy(const QString& fileName)
{
    const int file = memoryFile(contentsOf(fileName));
    const QString name = QLatin1String("/proc/self/fd/") + QString::number(file);
    return std::make_unique<DriverLibrary>(name);
}

DriverCopies::DriverCopies(const QString& fileName)
    : m_fileName(fileName), m_shelf(std::make_shared<Shelf>())
{
}

std::shared_ptr<const DriverLibrary> DriverCopies::lend()
{
    Copy copy = takeUnused();
    if (!copy) copy = loadDriverCopy(m_fileName);
    const auto giveBack = [shelf = m_shelf](const DriverLibrary* library) {
        Copy back(library);
        const std::lock_guard<std::mutex> lock(shelf->mutex);
        shelf->unused.push_back(std::move(back));
    };
    return std::shared_ptr<const DriverLibrary>(copy.release(), giveBack);
}

DriverCopies::Copy DriverCopies::takeUnused()
{
    const std::lock_guard<std::mutex> lock(m_shelf->mutex);
    if (m_shelf->unused.empty()) return nullptr;
    Copy copy = std::move(m_shelf->unused.back());
    m_shelf->unused.pop_back();
    return copy;
}
