#include "output/writtenFile.h"

#include "output/outputStream.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace {

using Stream = std::unique_ptr<std::FILE, CloseStream>;

enum { TURN_MS = 50 };

[[noreturn]] void fail(int error)
{
    throw WriteError(std::strerror(error));
}

/// The file behind a name; none: there is no such file.
std::optional<struct stat> fileBehind(const QByteArray& path)
{
    struct stat found = {};
    if (stat(path.constData(), &found) == 0) return found;
    if (errno != ENOENT) fail(errno);
    return std::nullopt;
}

bool isOpenForWriting(int descriptor, const struct stat& file)
{
    struct stat opened = {};
    if (fstat(descriptor, &opened) != 0) return false;
    if (opened.st_dev != file.st_dev || opened.st_ino != file.st_ino) return false;
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

/// A descriptor of this program that writes to the file; -1: none.
int openDescriptor(const struct stat& file)
{
    const QStringList entries =
        QDir(QLatin1String("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System);
    for (const QString& entry : entries) {
        bool isNumber = false;
        const int descriptor = entry.toInt(&isNumber);
        if (isNumber && isOpenForWriting(descriptor, file)) return descriptor;
    }
    return -1;
}

/// Opens a file that is not regular. ENXIO: a named pipe without a reader. It is asked for again
/// and again, because an opening that blocks may miss the signal that is to end the program.
Descriptor openInPlace(const QByteArray& path, bool (*isToEnd)())
{
    while (true) {
        Descriptor opened(open(path.constData(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (opened.number() >= 0) {
            fcntl(opened.number(), F_SETFL, fcntl(opened.number(), F_GETFL) & ~O_NONBLOCK);
            return opened;
        }
        if (errno != ENXIO && errno != EINTR) fail(errno);
        if (isToEnd()) fail(EINTR);
        poll(nullptr, 0, TURN_MS);
    }
}

/// The bytes of a stream on their way to a descriptor, with the patience of OutputStream.
class WayToDescriptor
{
public:
    WayToDescriptor(Descriptor descriptor, bool (*isToEnd)())
        : m_isStandardOutput(false),
          m_owned(std::move(descriptor)),
          m_output(m_bytes, m_owned.number(), isToEnd)
    {
    }
    WayToDescriptor(int borrowed, bool (*isToEnd)())
        : m_isStandardOutput(borrowed == STDOUT_FILENO), m_output(m_bytes, borrowed, isToEnd)
    {
    }

    static Stream streamOn(std::unique_ptr<WayToDescriptor> way)
    {
        cookie_io_functions_t functions = {};
        functions.write = writeTo;
        functions.close = end;
        Stream stream(fopencookie(way.get(), "w", functions));
        if (!stream) fail(errno);
        static_cast<void>(way.release()); // end() deletes it
        return stream;
    }

private:
    static ssize_t writeTo(void* way, const char* bytes, size_t size)
    {
        return ssize_t(static_cast<WayToDescriptor*>(way)->write(bytes, size));
    }

    static int end(void* way)
    {
        delete static_cast<WayToDescriptor*>(way);
        return 0;
    }

    /// EPIPE on standard output is success: the reader closed the pipe.
    size_t write(const char* bytes, size_t size)
    {
        std::fwrite(bytes, 1, size, m_bytes);
        const int error = m_output.flush();
        if (error == 0 || (error == EPIPE && m_isStandardOutput)) return size;
        errno = error;
        return 0;
    }

    const bool m_isStandardOutput;
    const Descriptor m_owned; ///< none: the descriptor is borrowed
    std::FILE* m_bytes = nullptr;
    OutputStream m_output;
};

/// The stream to a file that is written in place; null: the name is of a regular file, or of none.
Stream inPlaceStream(const QString& fileName, bool (*isToEnd)())
{
    const auto borrowed = [isToEnd](int descriptor) {
        return WayToDescriptor::streamOn(std::make_unique<WayToDescriptor>(descriptor, isToEnd));
    };
    if (isStandardOutput(fileName)) return borrowed(STDOUT_FILENO);
    const QByteArray path = QFile::encodeName(fileName);
    const std::optional<struct stat> file = fileBehind(path);
    if (!file) return nullptr;
    const int descriptor = openDescriptor(*file);
    if (descriptor >= 0) return borrowed(descriptor);
    if (S_ISREG(file->st_mode)) return nullptr;
    return WayToDescriptor::streamOn(
        std::make_unique<WayToDescriptor>(openInPlace(path, isToEnd), isToEnd));
}

/// Gives the new file the old file's owner, group and mode. Only root may give a file away. The
/// mode comes last: a change of owner clears some of its bits.
void keepAttributes(int descriptor, const struct stat& old)
{
    const bool areKept = fchown(descriptor, old.st_uid, old.st_gid) == 0 ||
                         fchown(descriptor, uid_t(-1), old.st_gid) == 0;
    (void)areKept; // else the file becomes the user's: a whole file matters more than its owner
    if (fchmod(descriptor, old.st_mode & mode_t(ALLPERMS)) != 0) fail(errno);
}

void replaceFile(const QString& fileName, const QByteArray& bytes)
{
    const std::optional<struct stat> old = fileBehind(QFile::encodeName(fileName));
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) throw WriteError(file.errorString().toStdString());
    if (old) keepAttributes(file.handle(), *old);
    // flush() first: commit() ignores a failure to write buffered bytes, as on a full disk. The
    // reason is in errno alone.
    errno = 0;
    if (file.write(bytes) != bytes.size() || !file.flush()) fail(errno != 0 ? errno : EIO);
    if (!file.commit()) throw WriteError(file.errorString().toStdString());
}

} // namespace

bool isStandardOutput(const QString& fileName)
{
    return fileName == QLatin1String("-") || fileName == QLatin1String("/dev/stdout");
}

void writeFile(const QString& fileName, const QByteArray& bytes, bool (*isToEnd)())
{
    const Stream stream = inPlaceStream(fileName, isToEnd);
    if (!stream) return replaceFile(fileName, bytes);
    const size_t size = size_t(bytes.size());
    errno = 0;
    if (std::fwrite(bytes.constData(), 1, size, stream.get()) != size ||
        std::fflush(stream.get()) != 0)
        fail(errno);
}

std::unique_ptr<std::FILE, CloseStream> openFile(const QString& fileName, bool (*isToEnd)())
{
    Stream stream = inPlaceStream(fileName, isToEnd);
    if (stream) return stream;
    const int descriptor = open(QFile::encodeName(fileName).constData(),
                                O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, DEFFILEMODE);
    if (descriptor < 0) fail(errno);
    stream.reset(fdopen(descriptor, "w"));
    if (!stream) {
        close(descriptor);
        fail(ENOMEM);
    }
    return stream;
}
