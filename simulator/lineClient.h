#ifndef LINE_CLIENT_H
#define LINE_CLIENT_H

#include "uniqueDescriptor.h"

#include <functional>
#include <string>
#include <utility>

/// One connection of a control socket: lines come in, each is answered by one line. No call waits.
///
///   READING --the answer does not fit into the socket--> WAITING --all answers are sent--> READING
///
/// In WAITING nothing is read. So a client that does not read its answers holds at most the answers
/// to the bytes of one read.
class LineClient
{
public:
    using Answer = std::function<std::string(const std::string& line)>;

    enum { LONGEST_LINE = 256 };

    /// @param socket  does not block
    explicit LineClient(UniqueDescriptor socket) : m_socket(std::move(socket)) {}

    int descriptor() const
    {
        return m_socket.get();
    }

    /// True in WAITING: the client is to be called when the socket takes bytes, not when it has
    /// some.
    bool isWaiting() const
    {
        return !m_answers.empty();
    }

    /// Reads once, answers the lines that are complete, and sends. A line of more than LONGEST_LINE
    /// bytes is answered by an error, whatever it is. The last line may lack its end.
    /// @return false when the client is gone and has all answers
    bool serve(const Answer& answer);

private:
    void read(const Answer& answer);
    void take(char letter, const Answer& answer);
    void endLine(const Answer& answer);
    bool send();

    UniqueDescriptor m_socket;
    std::string m_line;    // at most LONGEST_LINE + 1 bytes: then it is too long
    std::string m_answers; // not sent yet
    bool m_hasEnded = false;
};

#endif
