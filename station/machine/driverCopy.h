#ifndef DRIVER_COPY_H
#define DRIVER_COPY_H

#include "driver/driverLibrary.h"

#include <memory>
#include <mutex>
#include <vector>

/// Loads a copy of the driver of its own. The driver keeps its state for each loaded library, and
/// the loader gives the same library again for a name or a file that it knows: each copy is a file
/// of its own, in memory, under a name that was never used before.
///
/// A copy stays loaded until the process ends: texts of the driver, which Qt shares instead of
/// copying, may outlive every use of it. Its descriptor stays open, too: its number is part of the
/// name, and a name that came again would give the first copy again.
/// @throws DriverError
std::unique_ptr<DriverLibrary> loadDriverCopy(const QString& fileName);

/// The copies of the driver that the links use. A copy that a link has given back is lent to the
/// next link, so a station that reads its configuration again and again has no more copies than it
/// had links at one time. Any thread calls it.
class DriverCopies
{
public:
    explicit DriverCopies(const QString& fileName);

    /// A copy that nobody else uses. It comes back when the last pointer to it goes, which may be
    /// after the end of this object.
    /// @throws DriverError
    std::shared_ptr<const DriverLibrary> lend();

private:
    using Copy = std::unique_ptr<const DriverLibrary>;

    struct Shelf
    {
        std::mutex mutex;
        std::vector<Copy> unused; ///< guarded by mutex
    };

    Copy takeUnused();

    const QString m_fileName;
    const std::shared_ptr<Shelf> m_shelf; ///< lives as long as a lent copy
};

#endif
