#ifndef WATCHED_MEMORY_H
#define WATCHED_MEMORY_H

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <utility>

#include <sys/mman.h>
#include <unistd.h>

inline size_t pageBytes()
{
    return size_t(sysconf(_SC_PAGESIZE));
}

/// Memory of whole pages, so that nothing else lies beside what a test watches.
class OwnPages
{
public:
    explicit OwnPages(size_t pages)
        : m_bytes(pages * pageBytes()),
          m_start(static_cast<unsigned char*>(
              mmap(nullptr, m_bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (m_start == MAP_FAILED) std::abort();
    }
    ~OwnPages()
    {
        munmap(m_start, m_bytes);
    }
    OwnPages(const OwnPages&) = delete;
    OwnPages& operator=(const OwnPages&) = delete;

    unsigned char* page(size_t index) const
    {
        return m_start + index * pageBytes();
    }

private:
    size_t m_bytes;
    unsigned char* m_start;
};

enum class Watched { READS_AND_WRITES, WRITES };

/// Calls `whenTouched` on the thread and at the moment of the next access to the page that holds
/// `place`. A test thus sees what holds during an access, and needs no second thread and no time.
/// The page is protected until then: the access faults, and goes on once the call has returned.
class MemoryWatch
{
public:
    MemoryWatch(const void* place, Watched accesses, std::function<void()> whenTouched)
        : m_page(pageOf(place)), m_whenTouched(std::move(whenTouched)), m_next(s_first)
    {
        if (s_first == nullptr) takeSignal();
        s_first = this;
        protect(accesses == Watched::WRITES ? PROT_READ : PROT_NONE);
    }
    ~MemoryWatch()
    {
        protect(PROT_READ | PROT_WRITE);
        s_first = m_next; // watches end in the opposite order of their making
        if (s_first == nullptr) sigaction(SIGSEGV, &s_before, nullptr);
    }
    MemoryWatch(const MemoryWatch&) = delete;
    MemoryWatch& operator=(const MemoryWatch&) = delete;

private:
    static uintptr_t pageOf(const void* place)
    {
        return reinterpret_cast<uintptr_t>(place) / pageBytes() * pageBytes();
    }

    static void takeSignal()
    {
        struct sigaction action = {};
        action.sa_sigaction = touched;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &s_before);
    }

    static void touched(int, siginfo_t* info, void*)
    {
        for (MemoryWatch* watch = s_first; watch != nullptr; watch = watch->m_next) {
            if (watch->m_page != pageOf(info->si_addr)) continue;
            watch->protect(PROT_READ | PROT_WRITE);
            watch->m_whenTouched();
            return;
        }
        // A fault of the test's own: it comes again, to whom it went before.
        sigaction(SIGSEGV, &s_before, nullptr);
    }

    void protect(int access) const
    {
        if (mprotect(reinterpret_cast<void*>(m_page), pageBytes(), access) != 0) std::abort();
    }

    static inline MemoryWatch* s_first = nullptr;
    static inline struct sigaction s_before = {};

    uintptr_t m_page;
    std::function<void()> m_whenTouched;
    MemoryWatch* m_next;
};

#endif
