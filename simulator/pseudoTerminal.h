#ifndef PSEUDO_TERMINAL_H
#define PSEUDO_TERMINAL_H

#include <string>

/// A pseudo-terminal in raw mode. A host opens path() like a serial port; the bytes come and go at
/// descriptor(). Throws std::system_error when the system has none left.
class PseudoTerminal
{
public:
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    int descriptor() const
    {
        return m_master;
    }
    const std::string& path() const
    {
        return m_path;
    }

private:
    int m_master;
    int m_slave; // held open, so that the line does not hang up between two hosts
    std::string m_path;
};

#endif
