#ifndef HEAP_USE_H
#define HEAP_USE_H

/// Lets all threads share a few heaps of the C library. By default threads have eight heaps for
/// each processor, and each heap keeps room of its own for what was freed in it. Call it before the
/// first thread starts.
void boundHeaps();

/// Gives free memory back to the system. Call it when much was freed at once, as reading the
/// configuration takes several times the memory of what the links keep of it, and now and then:
/// otherwise the station's memory is that of its busiest moment for ever.
void giveBackFreedHeap();

#endif
