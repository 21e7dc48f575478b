#ifndef UNREAD_STANDARD_ERROR_H
#define UNREAD_STANDARD_ERROR_H

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>

/// Standard error of the test's program, into a pipe that is full and that nobody reads.
class UnreadStandardError
{
public:
    UnreadStandardError() : m_before(::dup(STDERR_FILENO))
    {
        EXPECT_EQ(0, ::pipe2(m_pipe.data(), O_CLOEXEC));
        EXPECT_NE(-1, ::fcntl(m_pipe[1], F_SETFL, O_NONBLOCK));
        const std::array<char, 4096> some{};
        while (::write(m_pipe[1], some.data(), some.size()) > 0) {
        }
        EXPECT_NE(-1, ::fcntl(m_pipe[1], F_SETFL, 0));
        EXPECT_NE(-1, ::dup2(m_pipe[1], STDERR_FILENO));
    }
    ~UnreadStandardError()
    {
        ::dup2(m_before, STDERR_FILENO);
        for (const int descriptor : {m_before, m_pipe[0], m_pipe[1]})
            ::close(descriptor);
    }
    UnreadStandardError(const UnreadStandardError&) = delete;
    UnreadStandardError& operator=(const UnreadStandardError&) = delete;

    /// Makes room.
    void read() const
    {
        std::array<char, 4096> some{};
        EXPECT_GT(::read(m_pipe[0], some.data(), some.size()), 0);
    }

private:
    const int m_before;
    std::array<int, 2> m_pipe = {-1, -1};
};

#endif
