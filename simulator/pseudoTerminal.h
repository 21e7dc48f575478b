#ifndef PSEUDO_TERMINAL_H
#define PSEUDO_TERMINAL_H

#include "terminalLine.h"

/// A pseudo-terminal in raw mode. A host opens address() like a serial port, one at a time if it
/// asks for that.
class PseudoTerminal : public TerminalLine
{
public:
    /// @param linkPath  a symbolic link to make for as long as this lives; empty: none. One that is
    ///                  there already is replaced.
    explicit PseudoTerminal(const std::string& linkPath);
    ~PseudoTerminal() override;

    std::string address() const override
    {
        return m_path;
    }
    int departures() const override
    {
        return m_departures.get();
    }
    void hostLeft() override;

private:
    void makeLink(const std::string& linkPath);

    UniqueDescriptor m_hostSide; // held open, so that the line does not hang up between two hosts
    UniqueDescriptor m_departures;
    std::string m_path;
    std::string m_linkPath;
};

#endif
