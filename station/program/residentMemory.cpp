#include "program/residentMemory.h"

#include "links/descriptor.h"

#include <QtGlobal>

#include <fcntl.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

namespace {

/// Bits of an entry of the kernel's page map.
const quint64 PRESENT = quint64(1) << 63;
const quint64 AS_IN_FILE = quint64(1) << 61;

struct Pages
{
    int map; ///< descriptor of the kernel's page map of this process
    uintptr_t size;
};

/// Whether the page can be read from its file again. One that was written to would be lost: an
/// address that the loader filled in, a debugger's breakpoint.
bool canComeBack(quint64 entry)
{
    return (entry & PRESENT) && (entry & AS_IN_FILE);
}

void giveBackBetween(uintptr_t begin, uintptr_t end, const Pages& pages)
{
    const uintptr_t first = begin / pages.size;
    std::vector<quint64> entries((end - 1) / pages.size - first + 1);
    const size_t bytes = entries.size() * sizeof entries[0];
    const off_t offset = off_t(first * sizeof entries[0]);
    if (::pread(pages.map, entries.data(), bytes, offset) != ssize_t(bytes)) return;
    for (size_t i = 0; i < entries.size(); ++i)
        if (canComeBack(entries[i]))
            ::madvise(reinterpret_cast<void*>((first + i) * pages.size), pages.size, MADV_DONTNEED);
}

/// Leaves the parts alone that the program may write to at any time.
int giveBackPartsOf(dl_phdr_info* object, size_t, void* pages)
{
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& part = object->dlpi_phdr[i];
        const uintptr_t begin = object->dlpi_addr + part.p_vaddr;
        if (part.p_type == PT_LOAD && !(part.p_flags & PF_W) && part.p_filesz > 0)
            giveBackBetween(begin, begin + part.p_filesz, *static_cast<const Pages*>(pages));
    }
    return 0;
}

} // namespace

void giveBackStartPages()
{
    ::malloc_trim(0);
    const Descriptor map(::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC));
    if (map.number() < 0) return;
    Pages pages = {map.number(), uintptr_t(::sysconf(_SC_PAGESIZE))};
    ::dl_iterate_phdr(giveBackPartsOf, &pages);
}
