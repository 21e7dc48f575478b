#ifndef ZERO_PAGES_H
#define ZERO_PAGES_H

#include <cstddef>

/// Memory of a fixed size, all zero at first. Only the pages that were written take memory of the
/// machine: a large buffer that is seldom used costs next to nothing. Not thread-safe: the owner
/// guards it.
class ZeroPages
{
public:
    /// @param size  bytes, 1 or more
    /// @throws std::bad_alloc
    explicit ZeroPages(size_t size);
    ~ZeroPages();
    ZeroPages(const ZeroPages&) = delete;
    ZeroPages& operator=(const ZeroPages&) = delete;

    unsigned char* data()
    {
        return m_bytes;
    }
    const unsigned char* data() const
    {
        return m_bytes;
    }
    size_t size() const
    {
        return m_size;
    }

    /// All bytes are zero again, and the written pages go back to the system.
    void clear();

private:
    const size_t m_size;
    unsigned char* const m_bytes;
};

#endif
