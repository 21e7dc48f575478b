#ifndef CHILD_PROCESS_H
#define CHILD_PROCESS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// A child process with pipes as its standard input, output and error. Its output may be a terminal
/// instead. The destructor kills it.
class ChildProcess
{
public:
    enum { KILLED = 1000 }; ///< status of a program that a signal ended
    enum Output { PIPE, TERMINAL };

    /// @throws std::system_error when the process does not start
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 Output output = PIPE);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const
    {
        return m_id;
    }

    /// The descriptor of its standard output, to wait on.
    int outputDescriptor() const
    {
        return m_output;
    }

    /// The next line of standard output without its line end. None: the output has ended, or `ms`
    /// milliseconds are over.
    std::optional<std::string> readLine(int ms);

    /// Drops the next bytes of standard output.
    /// @return number of bytes; 0: the output has ended, or `ms` milliseconds are over
    int skipOutput(int ms);

    void closeInput();
    void kill();

    /// Reads standard output to its end, then waits for the process.
    /// @return its exit status, or KILLED
    /// @throws std::runtime_error when the output has not ended within `ms` milliseconds
    int waitForEnd(int ms);

    /// The bytes that waitForEnd() read. Errors must fit into a pipe.
    const std::string& output() const
    {
        return m_text;
    }
    const std::string& errors() const
    {
        return m_errorText;
    }

private:
    bool readMore(int ms);
    int reap();

    pid_t m_id = -1;
    int m_input = -1;
    int m_output = -1;
    int m_errors = -1;
    std::string m_text;
    std::string m_errorText;
};

#endif
