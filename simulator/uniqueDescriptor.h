#ifndef UNIQUE_DESCRIPTOR_H
#define UNIQUE_DESCRIPTOR_H

#include <unistd.h>

/// Owns a file descriptor; -1: none.
class UniqueDescriptor
{
public:
    explicit UniqueDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    ~UniqueDescriptor()
    {
        reset();
    }
    UniqueDescriptor(UniqueDescriptor&& other) noexcept : m_descriptor(other.m_descriptor)
    {
        other.m_descriptor = -1;
    }
    UniqueDescriptor(const UniqueDescriptor&) = delete;
    UniqueDescriptor& operator=(const UniqueDescriptor&) = delete;

    int get() const
    {
        return m_descriptor;
    }
    void reset(int descriptor = -1)
    {
        if (m_descriptor >= 0) close(m_descriptor);
        m_descriptor = descriptor;
    }

private:
    int m_descriptor;
};

#endif
