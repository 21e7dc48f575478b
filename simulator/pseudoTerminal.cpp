#include "pseudoTerminal.h"

#include "staleName.h"
#include "terminalHolder.h"

#include <climits>
#include <fcntl.h>
#include <pty.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <cerrno>

namespace {

/// Empty when the path is no symbolic link.
std::string targetOf(const std::string& linkPath)
{
    char target[PATH_MAX] = {};
    const ssize_t length = readlink(linkPath.c_str(), target, sizeof target - 1);
    return length > 0 ? target : "";
}

} // namespace

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
    // The user may have put something else in the link's place.
    if (!m_linkPath.empty() && targetOf(m_linkPath) == m_path) unlink(m_linkPath.c_str());
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
    const auto isStale = [this](const std::string& path) { return isStaleLink(path); };
    if (symlink(m_path.c_str(), linkPath.c_str()) != 0) {
        if (errno != EEXIST) failLink(linkPath);
        if (!removeStaleName(linkPath, isStale)) failTaken(linkPath);
        if (symlink(m_path.c_str(), linkPath.c_str()) != 0) failTaken(linkPath);
    }
    m_linkPath = linkPath;
}

/// A link is stale when its target is gone. The number of a terminal that is gone is given out
/// again: a link to this terminal was made for an earlier one.
bool PseudoTerminal::isStaleLink(const std::string& linkPath) const
{
    const std::string target = targetOf(linkPath);
    if (target.empty()) return false;
    return target == m_path || (access(linkPath.c_str(), F_OK) != 0 && errno == ENOENT);
}

/// Says who has the link that another program or user made.
[[noreturn]] void PseudoTerminal::failTaken(const std::string& linkPath) const
{
    const int reason = errno;
    const std::string target = targetOf(linkPath);
    if (target.empty() || reason != EEXIST) {
        errno = reason;
        failLink(linkPath);
    }
    const std::string holder = terminalHolder(target);
    throw LinkError(linkPath + ": already leads to " + target + ", which is " +
                    (holder.empty() ? "there" : "in use by " + holder));
}
