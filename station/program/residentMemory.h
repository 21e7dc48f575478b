#ifndef RESIDENT_MEMORY_H
#define RESIDENT_MEMORY_H

// The station runs for months beside other programs, on machines with little memory.

/// Gives back the pages that only the start needed: unused parts of the heap, and all pages of the
/// program and its libraries that are as in their files. Most libraries are read whole by the
/// loader and used for a small part. A page that is needed again comes back by itself, from the
/// system's cache of files or from the disk. Any thread calls it, at any time.
void giveBackStartPages();

#endif
