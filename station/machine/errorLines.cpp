#include "machine/errorLines.h"

#include <poll.h>
#include <unistd.h>

ErrorLines& ErrorLines::standard()
{
    static ErrorLines lines(STDERR_FILENO);
    return lines;
}

void ErrorLines::put(const QByteArray& line)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_leftOut > 0) {
        const QByteArray sentence = QByteArray::number(m_leftOut) +
                                    " lines are missing here: there was no room to write them";
        if (write(sentence)) m_leftOut = 0;
    }
    if (m_leftOut > 0 || !write(line)) ++m_leftOut;
}

/// A pipe that is ready has room for a whole line.
/// @return whether the line was written
bool ErrorLines::write(QByteArray line) const
{
    line.truncate(LONGEST_LINE - 1);
    line += '\n';
    pollfd ready = {m_descriptor, POLLOUT, 0};
    if (poll(&ready, 1, 0) != 1 || (ready.revents & POLLOUT) == 0) return false;
    return ::write(m_descriptor, line.constData(), size_t(line.size())) == line.size();
}

void tellOperator(const QString& sentence)
{
    ErrorLines::standard().put("kakb-station: " + sentence.toLocal8Bit());
}
