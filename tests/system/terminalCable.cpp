#include "terminalCable.h"

#include <limits.h>
#include <poll.h>
#include <pty.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

TerminalCable::End TerminalCable::openEnd()
{
    End made;
    char path[PATH_MAX] = {};
    termios raw = {};
    cfmakeraw(&raw);
    if (openpty(&made.master, &made.slave, path, &raw, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "no pseudo-terminal");
    made.path = path;
    return made;
}

TerminalCable::TerminalCable()
    : m_ends{openEnd(), openEnd()}, m_stop(eventfd(0, EFD_CLOEXEC)), m_thread([this] { carry(); })
{
}

TerminalCable::~TerminalCable()
{
    eventfd_write(m_stop, 1);
    m_thread.join();
    close(m_stop);
    for (const End& side : m_ends) {
        close(side.master);
        close(side.slave);
    }
}

void TerminalCable::carry()
{
    for (;;) {
        pollfd awaited[] = {
            {m_ends[0].master, POLLIN, 0}, {m_ends[1].master, POLLIN, 0}, {m_stop, POLLIN, 0}};
        if (poll(awaited, 3, -1) < 0 || awaited[2].revents != 0) return;
        for (int from = 0; from < 2; ++from) {
            char bytes[1024];
            if ((awaited[from].revents & POLLIN) == 0) continue;
            const ssize_t count = read(m_ends[from].master, bytes, sizeof bytes);
            if (count <= 0 || write(m_ends[1 - from].master, bytes, size_t(count)) != count) return;
        }
    }
}
