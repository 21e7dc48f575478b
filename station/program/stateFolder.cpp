#include "program/stateFolder.h"

#include "program/stationStatus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

const char OWN_FOLDER[] = "kakb-station";
const char LOCK_FILE[] = "lock";

[[noreturn]] void fail(const QString& path, const QString& reason)
{
    throw StationFailure(STATION_STATE,
                         QString(QLatin1String("the state folder %1: %2")).arg(path, reason));
}

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// A variable of the environment that holds an absolute path; else empty.
QString pathFrom(const char* variable)
{
    // The service manager separates several folders with colons.
    const QString path = QString::fromLocal8Bit(qgetenv(variable)).section(QLatin1Char(':'), 0, 0);
    return path.startsWith(QLatin1Char('/')) ? path : QString();
}

void makeFolder(const QString& path)
{
    if (QDir(path).exists()) return;
    QDir().mkpath(QFileInfo(path).path());
    if (::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0 || errno == EEXIST) return;
    fail(path, QLatin1String("cannot make it: ") + systemReason());
}

/// The kernel releases the lock with the process, however it ends; the file stays.
Descriptor lockIn(const QString& path)
{
    const QByteArray name = QFile::encodeName(QDir(path).filePath(QLatin1String(LOCK_FILE)));
    Descriptor file(::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (file.number() < 0) fail(path, QLatin1String("cannot write there: ") + systemReason());
    if (::flock(file.number(), LOCK_EX | LOCK_NB) == 0) return file;
    fail(path, errno == EWOULDBLOCK ? QLatin1String("another kakb-station uses it; give each a "
                                                    "folder of its own with --state")
                                    : QLatin1String("cannot lock it: ") + systemReason());
}

} // namespace

QString stateFolderOf(const QString& given)
{
    if (!given.isEmpty()) return given;
    const QString service = pathFrom("STATE_DIRECTORY");
    if (!service.isEmpty()) return service;
    const QString state = pathFrom("XDG_STATE_HOME");
    if (!state.isEmpty()) return QDir(state).filePath(QLatin1String(OWN_FOLDER));
    const QString home = pathFrom("HOME");
    if (home.isEmpty())
        throw StationFailure(STATION_STATE, QLatin1String("nothing names a state folder; name one "
                                                          "with --state"));
    return QDir(home).filePath(QLatin1String(".local/state/") + QLatin1String(OWN_FOLDER));
}

StateFolder::StateFolder(const QString& path) : m_path(path)
{
    makeFolder(path);
    m_lock = lockIn(path);
}

QString StateFolder::file(const char* name) const
{
    return QDir(m_path).filePath(QLatin1String(name));
}
