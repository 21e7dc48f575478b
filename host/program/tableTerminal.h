#ifndef TABLE_TERMINAL_H
#define TABLE_TERMINAL_H

#include <QByteArray>

#include <csignal>

/// The terminal of a watch's table: changes to the table's screen and to single keys, and back,
/// also around Ctrl-Z, fg and Ctrl-\. The keys come from standard input when it is a terminal, too.
/// The screen is standard output, which must be a terminal.
///
///                     attend(), SIGCONT: in the foreground
///     USER'S SCREEN ---------------------------------------> TABLE'S SCREEN
///       cooked input <--------------------------------------   keys: no echo, no lines
///                     leave(), SIGTSTP (then it stops), SIGQUIT (then it ends)
///
/// - Both settings change together. Their signals are blocked while the main thread changes them.
/// - A program in the background does not touch the terminal: the shell has it.
/// - The signal handlers put the terminal back themselves, with system calls only. The main thread
///   may be waiting for a reader that has stopped.
///
/// Only the main thread uses it, and only one object may exist at a time. All other threads must be
/// started under SignalsBlocked: a handler in another thread would run beside the main thread.
class TableTerminal
{
public:
    struct Size
    {
        int columns;
        int rows;
    };

    /// @param enter  bytes that change to the table's screen; at most MOST_BYTES
    /// @param leave  bytes that restore the user's screen; at most MOST_BYTES
    TableTerminal(const QByteArray& enter, const QByteArray& leave);

    /// Leaves the table's screen.
    ~TableTerminal();
    TableTerminal(const TableTerminal&) = delete;
    TableTerminal& operator=(const TableTerminal&) = delete;

    enum { MOST_BYTES = 64 };

    /// Whether standard input is a terminal.
    bool hasKeys() const;

    enum Attention {
        HIDDEN, ///< the program is in the background: draw nothing
        SHOWN,  ///< the table's screen is as it was
        ENTERED ///< the table's screen is empty: draw the whole table
    };

    /// Takes the terminal for the table when the program has it not. Call it before each frame.
    /// After ENTERED the caller writes the bytes that enter the screen ahead of the frame.
    Attention attend();

    /// Writes the bytes that restore the user's screen to stdout. A later attend() does nothing.
    void leave();

    /// Waits at most `ms` milliseconds for keys. A signal and a return to the foreground end the
    /// wait, too.
    /// @return bytes of the keys; empty: none
    QByteArray waitForKeys(int ms);

    /// The size of the screen; 80 times 24 when the terminal does not know it.
    static Size size();

private:
    bool m_hasLeft = false;
    bool m_areKeysOver = false; ///< standard input has failed or ended
};

/// Blocks SIGTSTP, SIGCONT and SIGQUIT in the calling thread during its lifetime. Threads that are
/// started meanwhile block them for good.
class SignalsBlocked
{
public:
    SignalsBlocked();
    ~SignalsBlocked();
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t m_before;
};

#endif
