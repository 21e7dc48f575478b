#include "plant/durableFile.h"

#include "links/descriptor.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool writeWhole(const QByteArray& fileName, const QByteArray& bytes)
{
    const Descriptor file(
        ::open(fileName.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR));
    return file.number() >= 0 &&
           ::write(file.number(), bytes.constData(), size_t(bytes.size())) == bytes.size() &&
           ::fsync(file.number()) == 0;
}

/// A new name is on the disk when the folder is.
bool syncFolder(const QString& path)
{
    const Descriptor folder(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder.number() >= 0 && ::fsync(folder.number()) == 0;
}

} // namespace

QString writeDurably(const QString& fileName, const QByteArray& bytes)
{
    const QByteArray name = QFile::encodeName(fileName);
    const QByteArray work = name + ".new";
    if (!writeWhole(work, bytes) || ::rename(work.constData(), name.constData()) != 0) {
        const QString reason = systemReason();
        ::unlink(work.constData());
        return reason;
    }
    return syncFolder(QFileInfo(fileName).path()) ? QString() : systemReason();
}
