#include "session/zeroPages.h"

#include <sys/mman.h>

#include <algorithm>
#include <new>

namespace {

unsigned char* mapped(size_t size)
{
    void* const pages =
        mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    return static_cast<unsigned char*>(pages);
}

} // namespace

ZeroPages::ZeroPages(size_t size) : m_size(size), m_bytes(mapped(size)) {}

ZeroPages::~ZeroPages()
{
    munmap(m_bytes, m_size);
}

/// Pages of a process that locks its memory cannot be given back: they are written.
void ZeroPages::clear()
{
    if (madvise(m_bytes, m_size, MADV_DONTNEED) == 0) return;
    std::fill_n(m_bytes, m_size, static_cast<unsigned char>(0));
}
