#include "program/heapUse.h"

#include <cstdlib> // names the C library

#ifdef __GLIBC__
#include <malloc.h>

namespace {

/// Links allocate little and seldom: even a thousand of them hardly meet in a heap.
enum { HEAPS = 2 };

} // namespace

void boundHeaps()
{
    mallopt(M_ARENA_MAX, HEAPS);
}

void giveBackFreedHeap()
{
    malloc_trim(0);
}

#else // other C libraries have other rules

void boundHeaps() {}

void giveBackFreedHeap() {}

#endif
