#include "program/tableTerminal.h"

#include "links/descriptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>

namespace {

const int JOB_SIGNALS[] = {SIGTSTP, SIGCONT, SIGQUIT};

struct Bytes
{
    char bytes[TableTerminal::MOST_BYTES];
    size_t size;
};

// The state that the signal handlers share with the main thread. A handler runs in the main thread.
// The constants are set before the handlers are installed.

Bytes enterBytes;      ///< constant
Bytes leaveBytes;      ///< constant
bool withKeys = false; ///< constant
termios cooked;        ///< constant: settings of the user's screen
termios single;        ///< constant: settings of the table's screen
int screen = -1;       ///< constant: non-blocking, to the terminal of standard output
struct sigaction before[std::size(JOB_SIGNALS)]; ///< constant: actions to restore

volatile std::sig_atomic_t isWanted = 0;  ///< the table is to be shown; the main thread sets it
volatile std::sig_atomic_t isShown = 0;   ///< the terminal has the table's settings and screen
volatile std::sig_atomic_t isEntered = 0; ///< the table's screen is to be entered and drawn anew

sigset_t jobSignals()
{
    sigset_t mask;
    sigemptyset(&mask);
    for (const int number : JOB_SIGNALS)
        sigaddset(&mask, number);
    return mask;
}

/// Whether the shell has given the terminal to this program. A terminal that is not the controlling
/// terminal has no foreground: every program may use it.
bool isInForeground()
{
    const pid_t foreground = tcgetpgrp(STDOUT_FILENO);
    return foreground < 0 || foreground == getpgrp();
}

/// For handlers. Waits for the terminal a short time only: a terminal whose reader has stopped must
/// not keep the program from stopping or ending.
void writeNow(const Bytes& text)
{
    enum { PATIENCE_MS = 100 };
    pollfd room = {screen, POLLOUT, 0};
    poll(&room, 1, PATIENCE_MS);
    if (write(screen, text.bytes, text.size) < 0) return; // a handler can tell nobody
}

void apply(const termios& settings)
{
    if (!withKeys) return;
    while (tcsetattr(STDIN_FILENO, TCSANOW, &settings) < 0 && errno == EINTR) {
    }
}

/// In the background the system stops the program here, before the screen is touched.
void takeSettings()
{
    apply(single);
    isShown = 1;
    isEntered = 1;
}

void restoreSettings()
{
    apply(cooked);
    isShown = 0;
}

/// Ends the handler's block of the signal, so that its default action happens inside the handler.
void takeDefaultAction(int number)
{
    struct sigaction own = {};
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    sigaction(number, &standard, &own);
    raise(number);
    sigset_t signal;
    sigset_t blocked;
    sigemptyset(&signal);
    sigaddset(&signal, number);
    pthread_sigmask(SIG_UNBLOCK, &signal, &blocked);
    pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
    sigaction(number, &own, nullptr);
}

/// SIGTSTP and SIGQUIT: gives the terminal back, then stops or ends. The system does not stop a
/// program that no shell could continue; then attend() takes the terminal again.
void giveBack(int number)
{
    const int error = errno;
    if (isShown) {
        writeNow(leaveBytes);
        restoreSettings();
    }
    takeDefaultAction(number);
    errno = error;
}

/// SIGCONT: the shell or another program has used the terminal meanwhile. After SIGSTOP, which no
/// handler sees, it is still the table's for this program.
void takeAgain(int)
{
    const int error = errno;
    isShown = 0;
    if (isWanted && isInForeground()) {
        takeSettings();
        writeNow(enterBytes); // the main thread may be in the middle of a frame
    }
    errno = error;
}

void install()
{
    struct sigaction action = {};
    action.sa_mask = jobSignals();
    for (size_t i = 0; i < std::size(JOB_SIGNALS); ++i) {
        const int number = JOB_SIGNALS[i];
        sigaction(number, nullptr, &before[i]);
        if (before[i].sa_handler == SIG_IGN) continue; // a shell without job control
        action.sa_handler = number == SIGCONT ? takeAgain : giveBack;
        sigaction(number, &action, nullptr);
    }
}

void uninstall()
{
    for (size_t i = 0; i < std::size(JOB_SIGNALS); ++i)
        sigaction(JOB_SIGNALS[i], &before[i], nullptr);
}

Bytes bytesOf(const QByteArray& text)
{
    Bytes bytes = {};
    bytes.size = std::min(size_t(text.size()), sizeof bytes.bytes);
    std::memcpy(bytes.bytes, text.constData(), bytes.size);
    return bytes;
}

/// Signals stay on: Ctrl-C, Ctrl-Z and Ctrl-\ have their usual effect.
termios singleKeys(termios settings)
{
    settings.c_lflag &= ~tcflag_t(ICANON | ECHO | ECHOE | ECHOK | ECHONL | IEXTEN);
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    return settings;
}

int openedScreen()
{
    const std::string path = "/proc/self/fd/" + std::to_string(STDOUT_FILENO);
    return open(path.c_str(), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
}

} // namespace

TableTerminal::TableTerminal(const QByteArray& enter, const QByteArray& leave)
{
    enterBytes = bytesOf(enter);
    leaveBytes = bytesOf(leave);
    withKeys = isatty(STDIN_FILENO) && tcgetattr(STDIN_FILENO, &cooked) == 0;
    single = singleKeys(cooked);
    screen = openedScreen();
    install();
}

TableTerminal::~TableTerminal()
{
    leave();
    uninstall();
    const Descriptor closed(std::exchange(screen, -1));
}

bool TableTerminal::hasKeys() const
{
    return withKeys;
}

TableTerminal::Attention TableTerminal::attend()
{
    if (m_hasLeft) return HIDDEN;
    const SignalsBlocked blocked;
    isWanted = 1;
    if (!isInForeground()) {
        isShown = 0;
        return HIDDEN;
    }
    if (!isShown) takeSettings();
    return std::exchange(isEntered, 0) ? ENTERED : SHOWN;
}

void TableTerminal::leave()
{
    if (std::exchange(m_hasLeft, true)) return;
    const SignalsBlocked blocked;
    isWanted = 0;
    if (!isShown) return;
    std::fwrite(leaveBytes.bytes, 1, leaveBytes.size, stdout);
    std::fflush(stdout);
    restoreSettings();
}

QByteArray TableTerminal::waitForKeys(int ms)
{
    const bool isListening = withKeys && isShown && !m_areKeysOver;
    pollfd keys = {isListening ? STDIN_FILENO : -1, POLLIN, 0};
    if (poll(&keys, 1, ms) <= 0) return QByteArray();
    char bytes[256];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    m_areKeysOver = count <= 0 && !(keys.revents & POLLIN);
    return count > 0 ? QByteArray(bytes, int(count)) : QByteArray();
}

TableTerminal::Size TableTerminal::size()
{
    enum { DEFAULT_COLUMNS = 80, DEFAULT_ROWS = 24 };
    winsize size = {};
    ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);
    return {size.ws_col > 0 ? size.ws_col : int(DEFAULT_COLUMNS),
            size.ws_row > 0 ? size.ws_row : int(DEFAULT_ROWS)};
}

SignalsBlocked::SignalsBlocked()
{
    const sigset_t mask = jobSignals();
    pthread_sigmask(SIG_BLOCK, &mask, &m_before);
}

SignalsBlocked::~SignalsBlocked()
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}
