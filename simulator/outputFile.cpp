#include "outputFile.h"

#include "lineEnd.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

namespace {

const int MOST_LINKS = 40; // as many as the system follows
const mode_t PERMISSIONS = 07777;
const mode_t NEW_FILE_MODE = 0666; // less the bits of the user's mask

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

/// True for /proc/self/fd/1, also as /dev/stdout's target and as /dev/fd/1.
bool isOpenFile(const std::string& path)
{
    char folder[PATH_MAX] = {};
    return realpath(folderOf(path).c_str(), folder) && std::string(folder).rfind("/proc/", 0) == 0;
}

/// The file that the path leads to, behind symbolic links; also a file that is not there yet. The
/// search ends at a file that a process has open.
std::string targetOf(std::string path)
{
    char target[PATH_MAX] = {};
    for (int links = 0; links < MOST_LINKS && !isOpenFile(path); ++links) {
        const ssize_t length = readlink(path.c_str(), target, sizeof target);
        if (length <= 0 || length == ssize_t(sizeof target)) break;
        const std::string folder = target[0] == '/' ? "" : folderOf(path);
        path = folder;
        path.append(target, std::size_t(length));
    }
    return path;
}

mode_t maskOfUser()
{
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

bool writeAll(int descriptor, const std::string& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        written += std::size_t(count);
    }
    return true;
}

} // namespace

OutputFile::OutputFile(const std::string& path) : m_path(path), m_target(targetOf(path))
{
    struct stat found = {};
    const bool isThere = stat(path.c_str(), &found) == 0;
    if (isThere && (!S_ISREG(found.st_mode) || isOpenFile(m_target))) {
        m_open.reset(open(path.c_str(), O_WRONLY | O_APPEND | O_NOCTTY | O_CLOEXEC));
        if (m_open.get() < 0) failLink(m_path);
        return;
    }
    if (isThere && access(path.c_str(), W_OK) != 0) failLink(m_path);
    if (!isThere && errno != ENOENT) failLink(m_path);
    std::string probe;
    newFileBeside(probe);
    unlink(probe.c_str());
}

void OutputFile::write(const std::string& text)
{
    if (m_open.get() < 0) return replace(text);
    if (!writeAll(m_open.get(), text)) failLink(m_path);
}

/// @param name  set to the name of the new, empty file
UniqueDescriptor OutputFile::newFileBeside(std::string& name) const
{
    name = m_target + ".XXXXXX";
    UniqueDescriptor made(mkostemp(&name[0], O_CLOEXEC));
    if (made.get() < 0) failLink(m_path);
    return made;
}

void OutputFile::replace(const std::string& text)
{
    struct stat before = {};
    const mode_t mode = stat(m_target.c_str(), &before) == 0 ? before.st_mode & PERMISSIONS
                                                             : NEW_FILE_MODE & ~maskOfUser();
    std::string name;
    const UniqueDescriptor made = newFileBeside(name);
    // fsync: a name that is renamed before its bytes are on the disk is empty after a power cut.
    if (fchmod(made.get(), mode) == 0 && writeAll(made.get(), text) && fsync(made.get()) == 0 &&
        rename(name.c_str(), m_target.c_str()) == 0)
        return;
    const int reason = errno;
    unlink(name.c_str());
    errno = reason;
    failLink(m_path);
}
