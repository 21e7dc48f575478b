#include "staleName.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

bool removeStaleName(const std::string& path,
                     const std::function<bool(const std::string& path)>& isStale)
{
    if (!isStale(path)) {
        errno = EEXIST;
        return false;
    }
    const std::string aside = path + "~" + std::to_string(getpid());
    if (renameat2(AT_FDCWD, path.c_str(), AT_FDCWD, aside.c_str(), RENAME_NOREPLACE) != 0)
        return errno == ENOENT; // another program has removed it
    if (isStale(aside)) {
        unlink(aside.c_str());
        return true;
    }
    renameat2(AT_FDCWD, aside.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    errno = EEXIST;
    return false;
}
