#ifndef TERMINAL_CABLE_H
#define TERMINAL_CABLE_H

#include <string>
#include <thread>

/// Two pseudo-terminals, connected like two serial ports by a cable. Bytes written to one end can
/// be read at the other end.
class TerminalCable
{
public:
    /// @throws std::system_error when the system has no pseudo-terminal left
    TerminalCable();
    ~TerminalCable();
    TerminalCable(const TerminalCable&) = delete;
    TerminalCable& operator=(const TerminalCable&) = delete;

    /// The device of an end, to be opened; index 0 or 1.
    const std::string& end(int index) const
    {
        return m_ends[index].path;
    }

private:
    struct End
    {
        int master = -1;
        int slave = -1; ///< held open, so that the line does not hang up between two users
        std::string path;
    };

    static End openEnd();
    void carry();

    End m_ends[2];
    int m_stop;
    std::thread m_thread;
};

#endif
