#include "driver/driverFile.h"

#include <QFileInfo>
#include <QStringList>

#include <dlfcn.h>

#include <vector>

namespace {

/// The folders in which the system searches a library: those of LD_LIBRARY_PATH, then its own.
QStringList systemFolders()
{
    QStringList folders;
    void* const program = dlopen(nullptr, RTLD_LAZY);
    Dl_serinfo needed = {};
    if (program == nullptr || dlinfo(program, RTLD_DI_SERINFOSIZE, &needed) != 0) return folders;
    std::vector<Dl_serinfo> room(needed.dls_size / sizeof(Dl_serinfo) + 1);
    Dl_serinfo* const found = room.data();
    dlinfo(program, RTLD_DI_SERINFOSIZE, found); // gives the list its size
    if (dlinfo(program, RTLD_DI_SERINFO, found) == 0) {
        const Dl_serpath* const paths = found->dls_serpath;
        for (unsigned i = 0; i < found->dls_cnt; ++i)
            folders << QString::fromLocal8Bit(paths[i].dls_name);
    }
    dlclose(program);
    return folders;
}

QString searchText(const QString& fileName)
{
    const QFileInfo file(fileName);
    if (fileName.contains(QLatin1Char('/')))
        return file.exists() ? QString()
                             : QLatin1String("; searched in the folder ") + file.absolutePath();
    const QString here =
        file.exists() ? QString(QLatin1String("; the file of this folder is ./%1")).arg(fileName)
                      : QString();
    return QLatin1String("; searched in the system's library folders ") +
           systemFolders().join(QLatin1String(", ")) + here;
}

} // namespace

DriverLibrary loadDriver(const QString& fileName)
{
    try {
        return DriverLibrary(fileName);
    } catch (const DriverNotLoaded& error) {
        throw DriverNotLoaded(error.what() + searchText(fileName).toStdString());
    }
}

QString loadedFile(const DriverLibrary& driver)
{
    Dl_info found = {};
    dladdr(reinterpret_cast<const void*>(driver.getVersion), &found);
    return QString::fromLocal8Bit(found.dli_fname);
}
