#include "program/privateFile.h"

#include "links/descriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

enum { MOST_BYTES = 4096 };

QString unreadable()
{
    return QLatin1String("cannot read it: ") + QString::fromLocal8Bit(std::strerror(errno));
}

/// Why others than this user could know the secret; empty: they cannot.
QString ownershipProblem(const struct stat& file, const QString& what)
{
    if (!S_ISREG(file.st_mode))
        return QString(QLatin1String("the %1 is no regular file")).arg(what);
    if (file.st_uid != geteuid() && file.st_uid != 0)
        return QString(QLatin1String("the %1 belongs to another user")).arg(what);
    if ((file.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return QString(QLatin1String("others can read or change the %1; allow its owner only: "
                                     "chmod 600"))
            .arg(what);
    return QString();
}

} // namespace

/// Looks at the opened file, not at its name: the name may lead to another file meanwhile.
PrivateText privateText(const QString& fileName, const QString& what)
{
    const QString begin = fileName + QLatin1String(": ");
    PrivateText text;
    const Descriptor file(
        ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.number() < 0) {
        text.isMissing = errno == ENOENT;
        text.problem = begin + unreadable();
        return text;
    }
    struct stat found = {};
    fstat(file.number(), &found);
    const QString problem = ownershipProblem(found, what);
    if (!problem.isEmpty()) {
        text.problem = begin + problem;
        return text;
    }
    QByteArray bytes(MOST_BYTES + 1, '\0');
    const ssize_t size = ::read(file.number(), bytes.data(), size_t(bytes.size()));
    if (size < 0) {
        text.problem = begin + unreadable();
        return text;
    }
    text.bytes = bytes.left(int(size));
    if (size > MOST_BYTES)
        text.problem = begin + QString(QLatin1String("the %1 is longer than 4096 bytes")).arg(what);
    return text;
}
