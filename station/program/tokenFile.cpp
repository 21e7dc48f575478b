#include "program/tokenFile.h"

#include "links/descriptor.h"
#include "program/stationStatus.h"

#include <QFile>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace {

enum { TOKEN_BYTES = 32, LONGEST_TOKEN = 4096 };

/// What a token file has, or why it cannot be used.
struct TokenText
{
    bool isMissing = false;
    QByteArray token;
    QString problem;
};

QString inFile(const QString& fileName, const QString& problem)
{
    return fileName + QLatin1String(": ") + problem;
}

QString systemReason()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool isTokenByte(char byte)
{
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || (byte != 0 && std::strchr("-._~+/=", byte) != nullptr);
}

/// Why the token is not usable; empty: it is.
QString tokenProblem(const QByteArray& token)
{
    if (token.isEmpty()) return QLatin1String("the token file is empty");
    for (const char byte : token)
        if (!isTokenByte(byte))
            return QLatin1String("a token has letters, digits and -._~+/= only, on one line");
    return QString();
}

/// Why others than this user could know the token; empty: they cannot.
QString ownershipProblem(const struct stat& file)
{
    if (!S_ISREG(file.st_mode)) return QLatin1String("the token file is no regular file");
    if (file.st_uid != geteuid() && file.st_uid != 0)
        return QLatin1String("the token file belongs to another user");
    if ((file.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        return QLatin1String("others can read or change the token file; allow its owner only: "
                             "chmod 600");
    return QString();
}

/// Looks at the opened file, not at its name: the name may lead to another file meanwhile.
TokenText readToken(const QString& fileName)
{
    TokenText text;
    const Descriptor file(
        ::open(QFile::encodeName(fileName).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.number() < 0) {
        text.isMissing = errno == ENOENT;
        text.problem = inFile(fileName, QLatin1String("cannot read it: ") + systemReason());
        return text;
    }
    struct stat found = {};
    fstat(file.number(), &found);
    text.problem = ownershipProblem(found);
    if (text.problem.isEmpty()) {
        QByteArray bytes(LONGEST_TOKEN + 1, '\0');
        const ssize_t size = ::read(file.number(), bytes.data(), size_t(bytes.size()));
        text.token = bytes.left(int(size < 0 ? 0 : size)).trimmed();
        text.problem = size > LONGEST_TOKEN ? QLatin1String("the token is longer than 4096 bytes")
                                            : tokenProblem(text.token);
    }
    if (!text.problem.isEmpty()) text.problem = inFile(fileName, text.problem);
    return text;
}

QByteArray randomToken()
{
    QByteArray bytes(TOKEN_BYTES, '\0');
    if (getrandom(bytes.data(), size_t(bytes.size()), 0) != bytes.size())
        throw StationFailure(STATION_USAGE, QLatin1String("the system gives no random bytes"));
    return bytes.toHex();
}
[[noreturn]] void cannotWrite(const QString& fileName)
{
    throw StationFailure(STATION_USAGE,
                         inFile(fileName, QLatin1String("cannot write it: ") + systemReason()));
}

bool writeWhole(int file, const QByteArray& bytes)
{
    return ::write(file, bytes.constData(), size_t(bytes.size())) == bytes.size() &&
           ::fsync(file) == 0;
}

/// Makes the file of the token. It gets its name when all of it is on the disk, and only when no
/// other file has the name.
/// @return false: another process has made it meanwhile
bool makeFile(const QString& fileName, const QByteArray& token)
{
    const QByteArray name = QFile::encodeName(fileName);
    QByteArray work = name + ".XXXXXX";
    const Descriptor file(::mkostemp(work.data(), O_CLOEXEC)); // mode 0600
    if (file.number() < 0) cannotWrite(fileName);
    const bool isWritten = writeWhole(file.number(), token + '\n');
    const bool isMade = isWritten && ::link(work.constData(), name.constData()) == 0;
    const int failure = errno;
    ::unlink(work.constData());
    errno = failure;
    if (!isMade && (!isWritten || failure != EEXIST)) cannotWrite(fileName);
    return isMade;
}

} // namespace

QString tokenFileProblem(const QString& fileName)
{
    const TokenText found = readToken(fileName);
    return found.isMissing ? QString() : found.problem;
}

QByteArray tokenOf(const QString& fileName)
{
    TokenText found = readToken(fileName);
    if (found.isMissing) {
        const QByteArray made = randomToken();
        if (makeFile(fileName, made)) return made;
        found = readToken(fileName);
    }
    if (!found.problem.isEmpty()) throw StationFailure(STATION_USAGE, found.problem);
    return found.token;
}
