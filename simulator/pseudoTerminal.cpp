#include "pseudoTerminal.h"

#include <climits>
#include <fcntl.h>
#include <pty.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>

#include <cerrno>

PseudoTerminal::PseudoTerminal(const std::string& linkPath)
{
    char path[PATH_MAX] = {};
    termios raw = {};
    cfmakeraw(&raw);
    int master = -1;
    int slave = -1;
    if (openpty(&master, &slave, path, &raw, nullptr) != 0) failLink("pseudo-terminal");
    m_descriptor.reset(master);
    m_hostSide.reset(slave);
    m_path = path;
    if (fcntl(master, F_SETFL, O_NONBLOCK) != 0) failLink(m_path);
    // Failure is ignored: without inotify, hosts that unlock the terminal themselves are still
    // served.
    m_departures.reset(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    inotify_add_watch(m_departures.get(), path, IN_CLOSE);
    if (!linkPath.empty()) makeLink(linkPath);
}

PseudoTerminal::~PseudoTerminal()
{
    char target[PATH_MAX] = {};
    if (m_linkPath.empty()) return;
    // Another simulated PLC may have taken the link over.
    if (readlink(m_linkPath.c_str(), target, sizeof target - 1) > 0 && m_path == target)
        unlink(m_linkPath.c_str());
}

/// Removes the lock that a killed host left on the terminal. The system removes it only with the
/// last descriptor, and that is m_hostSide.
void PseudoTerminal::hostLeft()
{
    char events[READ_BYTES];
    while (read(m_departures.get(), events, sizeof events) > 0) {
    }
    ioctl(m_hostSide.get(), TIOCNXCL);
}

void PseudoTerminal::makeLink(const std::string& linkPath)
{
    struct stat found = {};
    if (lstat(linkPath.c_str(), &found) == 0) {
        if (!S_ISLNK(found.st_mode)) {
            errno = EEXIST;
            failLink(linkPath);
        }
        unlink(linkPath.c_str());
    }
    if (symlink(m_path.c_str(), linkPath.c_str()) != 0) failLink(linkPath);
    m_linkPath = linkPath;
}
