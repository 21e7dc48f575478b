#include "lineClient.h"

#include <sys/socket.h>

#include <cerrno>

namespace {

enum { READ_AT_ONCE = 512 };

bool isPassing(int reason)
{
    return reason == EAGAIN || reason == EINTR;
}

} // namespace

bool LineClient::serve(const Answer& answer)
{
    if (!isWaiting() && !m_hasEnded) read(answer);
    return send() && !(m_hasEnded && m_answers.empty());
}

void LineClient::read(const Answer& answer)
{
    char bytes[READ_AT_ONCE];
    const ssize_t count = recv(m_socket.get(), bytes, sizeof bytes, 0);
    if (count < 0 && isPassing(errno)) return;
    for (ssize_t i = 0; i < count; ++i)
        take(bytes[i], answer);
    if (count > 0) return;
    m_hasEnded = true;
    if (!m_line.empty()) endLine(answer);
}

void LineClient::take(char letter, const Answer& answer)
{
    if (letter == '\n') return endLine(answer);
    if (m_line.size() <= LONGEST_LINE) m_line += letter;
}

void LineClient::endLine(const Answer& answer)
{
    m_answers += m_line.size() > LONGEST_LINE
                     ? "error the line has more than " + std::to_string(LONGEST_LINE) + " bytes"
                     : answer(m_line);
    m_answers += '\n';
    m_line.clear();
}

/// @return false when the client takes no more bytes, ever
bool LineClient::send()
{
    while (!m_answers.empty()) {
        const ssize_t count =
            ::send(m_socket.get(), m_answers.data(), m_answers.size(), MSG_NOSIGNAL);
        if (count < 0) return isPassing(errno);
        m_answers.erase(0, std::size_t(count));
    }
    return true;
}
