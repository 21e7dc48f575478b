#ifndef DESCRIPTOR_H
#define DESCRIPTOR_H

#include <unistd.h>

#include <utility>

/// Owns a file descriptor of the operating system and closes it. -1: none.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0) close(m_number);
    }
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }

    /// Gives the descriptor to somebody else, who closes it.
    int release()
    {
        return std::exchange(m_number, -1);
    }

    int number() const
    {
        return m_number;
    }

private:
    int m_number;
};

#endif
