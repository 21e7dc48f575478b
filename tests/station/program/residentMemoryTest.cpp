#include "program/residentMemory.h"

#include "links/descriptor.h"

#include <QtGlobal>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace {

enum { LARGEST_PAGE = 65536, TABLE_SIZE = 8 * LARGEST_PAGE };

/// A part of the program's file that nothing else is near to: the kernel brings neighbours along.
alignas(LARGEST_PAGE) const unsigned char TABLE[TABLE_SIZE] = {1, 2, 3};

uintptr_t pageSize()
{
    return uintptr_t(::sysconf(_SC_PAGESIZE));
}

/// A byte of the table, behind the compiler's back, which knows what the table has.
volatile unsigned char& tableByte(size_t index)
{
    return const_cast<volatile unsigned char&>(TABLE[index]);
}

/// Whether the page of the byte is in memory as a part of this process.
bool isResident(size_t index)
{
    const Descriptor map(::open("/proc/self/pagemap", O_RDONLY | O_CLOEXEC));
    quint64 entry = 0;
    const uintptr_t page = reinterpret_cast<uintptr_t>(&TABLE[index]) / pageSize();
    EXPECT_EQ(::pread(map.number(), &entry, sizeof entry, off_t(page * sizeof entry)),
              ssize_t(sizeof entry));
    return entry >> 63;
}

void protectPage(size_t index, int protection)
{
    const uintptr_t page = reinterpret_cast<uintptr_t>(&TABLE[index]) / pageSize();
    ASSERT_EQ(::mprotect(reinterpret_cast<void*>(page * pageSize()), pageSize(), protection), 0);
}

} // namespace

TEST(ResidentMemory, IsGivenBackWhereTheFileHasTheSameAndComesBackWhenRead)
{
    const size_t index = TABLE_SIZE / 2;
    EXPECT_EQ(tableByte(index), 0);
    ASSERT_TRUE(isResident(index));
    giveBackStartPages();
    EXPECT_FALSE(isResident(index));
    EXPECT_EQ(tableByte(index), 0);
    EXPECT_TRUE(isResident(index));
}

TEST(ResidentMemory, IsKeptWhereItWasWrittenTo)
{
    const size_t index = TABLE_SIZE / 4;
    protectPage(index, PROT_READ | PROT_WRITE);
    tableByte(index) = 204;
    protectPage(index, PROT_READ);
    giveBackStartPages();
    EXPECT_EQ(tableByte(index), 204);
}
