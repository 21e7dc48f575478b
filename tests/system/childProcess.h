#ifndef CHILD_PROCESS_H
#define CHILD_PROCESS_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

/// A program beside the test, with pipes at its standard input, output and error; its output may be
/// a terminal instead. The destructor kills it.
class ChildProcess
{
public:
    enum { KILLED = 1000 }; ///< status of a program that a signal ended
    enum Output { PIPE, TERMINAL };

    /// Throws std::system_error when it does not start.
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments,
                 Output output = PIPE);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t id() const
    {
        return m_id;
    }

    /// Of standard output, to wait on.
    int outputDescriptor() const
    {
        return m_output;
    }

    /// The next line of standard output without its end; none when it ended or `ms` are over.
    std::optional<std::string> readLine(int ms);

    /// Drops what comes next of standard output.
    /// @return bytes; 0 when it ended or `ms` are over
    int skipOutput(int ms);

    void closeInput();
    void kill();

    /// Reads to the end of standard output, then waits for the program. Throws std::runtime_error
    /// when the output has not ended within `ms`.
    /// @return its exit status, or KILLED
    int waitForEnd(int ms);

    /// What waitForEnd() read. Errors must fit into a pipe.
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
