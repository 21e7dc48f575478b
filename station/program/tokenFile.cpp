#include "program/tokenFile.h"

#include "links/descriptor.h"
#include "program/privateFile.h"
#include "program/stationStatus.h"

#include <QFile>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

enum { TOKEN_BYTES = 32 };

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

/// The text of the file, with the problem of a text that is no token.
PrivateText readToken(const QString& fileName)
{
    PrivateText text = privateText(fileName, QLatin1String("token file"));
    if (!text.problem.isEmpty()) return text;
    text.bytes = text.bytes.trimmed();
    const QString problem = tokenProblem(text.bytes);
    if (!problem.isEmpty()) text.problem = inFile(fileName, problem);
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
    const PrivateText found = readToken(fileName);
    return found.isMissing ? QString() : found.problem;
}

QByteArray tokenOf(const QString& fileName)
{
    PrivateText found = readToken(fileName);
    if (found.isMissing) {
        const QByteArray made = randomToken();
        if (makeFile(fileName, made)) return made;
        found = readToken(fileName);
    }
    if (!found.problem.isEmpty()) throw StationFailure(STATION_USAGE, found.problem);
    return found.bytes;
}
