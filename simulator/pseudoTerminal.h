#ifndef PSEUDO_TERMINAL_H
#define PSEUDO_TERMINAL_H

#include "terminalLine.h"

/// A pseudo-terminal in raw mode. A host opens address() like a serial port, and may lock it
/// against other hosts.
class PseudoTerminal : public TerminalLine
{
public:
    /// @param linkPath  symbolic link to the terminal, removed by the destructor; empty: none. A
    ///                  link whose target is gone is replaced; anything else stays, and the
    ///                  LinkError says what is there.
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
    bool isStaleLink(const std::string& linkPath) const;
    [[noreturn]] void failTaken(const std::string& linkPath) const;

    UniqueDescriptor m_hostSide; // kept open: the line must not hang up between two hosts
    UniqueDescriptor m_departures;
    std::string m_path;
    std::string m_linkPath;
};

#endif
