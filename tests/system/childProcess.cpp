#include "childProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

enum NotOpened { NOT_OPENED };

struct Pipe
{
    int readEnd = -1;
    int writeEnd = -1;

    explicit Pipe(NotOpened) {}
    Pipe()
    {
        int ends[2] = {-1, -1};
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "no pipe");
        readEnd = ends[0];
        writeEnd = ends[1];
    }
};

/// A terminal of 24 lines of 80 characters. Bytes written to one end are read at the other end.
Pipe terminal()
{
    Pipe ends(NOT_OPENED);
    const winsize size = {24, 80, 0, 0};
    if (openpty(&ends.readEnd, &ends.writeEnd, nullptr, nullptr, &size) != 0)
        throw std::system_error(errno, std::generic_category(), "no pseudo-terminal");
    fcntl(ends.readEnd, F_SETFD, FD_CLOEXEC);
    fcntl(ends.writeEnd, F_SETFD, FD_CLOEXEC);
    return ends;
}

void closeOnce(int& descriptor)
{
    if (descriptor >= 0) close(std::exchange(descriptor, -1));
}

int msUntil(Clock::time_point end)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    return left.count() > 0 ? int(left.count()) : 0;
}

} // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                           Output kind)
{
    Pipe input;
    Pipe output = kind == TERMINAL ? terminal() : Pipe();
    Pipe errors;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input.readEnd, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output.writeEnd, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.writeEnd, STDERR_FILENO);
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    const int result =
        posix_spawnp(&m_id, program.c_str(), &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    closeOnce(input.readEnd);
    closeOnce(output.writeEnd);
    closeOnce(errors.writeEnd);
    m_input = input.writeEnd;
    m_output = output.readEnd;
    m_errors = errors.readEnd;
    if (result == 0) return;
    m_id = -1;
    throw std::system_error(result, std::generic_category(), program);
}

ChildProcess::~ChildProcess()
{
    kill();
    closeOnce(m_input);
    closeOnce(m_output);
    closeOnce(m_errors);
}

void ChildProcess::kill()
{
    if (m_id < 0) return;
    ::kill(m_id, SIGKILL);
    reap();
}

int ChildProcess::skipOutput(int ms)
{
    if (m_output < 0 || !readMore(ms)) return 0;
    const int bytes = int(m_text.size());
    m_text.clear();
    return bytes;
}

void ChildProcess::closeInput()
{
    closeOnce(m_input);
}

bool ChildProcess::readMore(int ms)
{
    pollfd wanted = {m_output, POLLIN, 0};
    if (poll(&wanted, 1, ms) <= 0) return false;
    char bytes[65536];
    const ssize_t count = read(m_output, bytes, sizeof bytes);
    if (count <= 0) {
        closeOnce(m_output);
        return false;
    }
    m_text.append(bytes, size_t(count));
    return true;
}

std::optional<std::string> ChildProcess::readLine(int ms)
{
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(ms);
    for (;;) {
        const size_t lineEnd = m_text.find('\n');
        if (lineEnd != std::string::npos) {
            const std::string line = m_text.substr(0, lineEnd);
            m_text.erase(0, lineEnd + 1);
            return line;
        }
        if (m_output < 0 || !readMore(msUntil(end))) return std::nullopt;
    }
}

int ChildProcess::waitForEnd(int ms)
{
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(ms);
    while (m_output >= 0) {
        if (!readMore(msUntil(end)) && m_output >= 0)
            throw std::runtime_error("the program did not end in time");
    }
    char bytes[4096];
    ssize_t count = 0;
    while ((count = read(m_errors, bytes, sizeof bytes)) > 0)
        m_errorText.append(bytes, size_t(count));
    return reap();
}

int ChildProcess::reap()
{
    int status = 0;
    waitpid(std::exchange(m_id, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : int(KILLED);
}
