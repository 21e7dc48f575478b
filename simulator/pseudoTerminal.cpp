#include "pseudoTerminal.h"

#include <pty.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

PseudoTerminal::PseudoTerminal() : m_master(-1), m_slave(-1)
{
    char path[256] = {};
    termios raw = {};
    cfmakeraw(&raw);
    if (openpty(&m_master, &m_slave, path, &raw, nullptr) != 0)
        throw std::system_error(errno, std::generic_category(), "no pseudo-terminal");
    m_path = path;
}

PseudoTerminal::~PseudoTerminal()
{
    close(m_slave);
    close(m_master);
}
