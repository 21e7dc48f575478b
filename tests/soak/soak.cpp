// Runs the built driver for millions of exchanges and watches the memory of the process.
//
//   soak [--exchanges N] [--driver FILE]
//
// --exchanges  how many, 100000 to 1000000000000 (default 10000000)
// --driver     the library to load (default: the one that was built)
//
// In the first half the driver is started anew every 10000 exchanges. In the second half it never
// is, so that what grows with the exchanges has no start to clear it. Memory is measured at each
// tenth, when all that was queued is done. Exit status: 0 the memory stayed flat after the first
// tenth, nothing was done too seldom and the cache ended as PLC memory, 1 not so, 2 usage or no
// driver.

#include "soakHost.h"

#include <CLI/CLI.hpp>

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>

namespace {

enum ExitStatus { PASSED, FAILED, UNUSABLE };
enum { TENTHS = 10, TENTHS_WITH_STARTS = 5, EXCHANGES_A_START = 10000 };
enum { MOST_GROWTH_KIB = 256, MOST_ALLOCATED_BYTES = 4 * 1024 };

struct Memory
{
    long residentKib;
    long allocatedBytes; ///< pages that the allocator keeps do not blur this one
};

long residentKib()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

Memory memoryNow()
{
    const struct mallinfo2 blocks = mallinfo2();
    return {residentKib(), long(blocks.uordblks + blocks.hblkhd)};
}

double secondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Most that any later tenth had more than the first.
Memory runTenths(SoakHost& host, long long exchanges)
{
    const auto start = std::chrono::steady_clock::now();
    Memory warm = {0, 0};
    Memory growth = {0, 0};
    for (int tenth = 1; tenth <= TENTHS; ++tenth) {
        for (long long i = 0; i < exchanges / TENTHS; ++i) {
            if (tenth <= TENTHS_WITH_STARTS && i % EXCHANGES_A_START == 0) host.restart();
            host.exchange();
        }
        host.settle();
        const Memory now = memoryNow();
        if (tenth == 1) warm = now;
        growth.residentKib = std::max(growth.residentKib, now.residentKib - warm.residentKib);
        growth.allocatedBytes =
            std::max(growth.allocatedBytes, now.allocatedBytes - warm.allocatedBytes);
        std::printf("%3d %%  %10lld exchanges  %7.1f s  %6ld KiB resident  %8ld bytes allocated\n",
                    10 * tenth, exchanges / TENTHS * tenth, secondsSince(start), now.residentKib,
                    now.allocatedBytes);
        std::fflush(stdout);
    }
    return growth;
}

/// Prints what was done; false if something of it happened too seldom for its memory to show.
bool didEnough(const SoakHost::Figures& figures, long long exchanges)
{
    const struct
    {
        const char* what;
        long long times;
        long long leastOfAMillion;
    } rows[] = {{"accepted", figures.accepted, 900000},
                {"rejected", figures.rejected, 25000},
                {"given up", figures.givenUp, 500},
                {"bits written", figures.bitFrames, 45000},
                {"words written", figures.wordFrames, 65000},
                {"recipe frames", figures.recipeFrames, 300},
                {"downloads", figures.downloads, 100},
                {"uploads", figures.uploads, 100},
                {"one-shot reads", figures.oneShotReads, 12000},
                {"starts", figures.starts, 50},
                {"told", figures.told, 200000}};
    bool enough = true;
    for (const auto& row : rows) {
        const long long least = row.leastOfAMillion * exchanges / 1000000;
        std::printf("%-16s %10lld, at least %10lld%s\n", row.what, row.times, least,
                    row.times < least ? "  TOO FEW" : "");
        enough = enough && row.times >= least;
    }
    return enough;
}

ExitStatus run(const std::string& driverFile, long long exchanges)
{
    const DriverLibrary driver(QString::fromStdString(driverFile));
    SoakHost host(driver);
    // What measuring itself loads is loaded before it counts.
    std::printf("at the start  %6ld KiB resident\n", memoryNow().residentKib);
    const Memory growth = runTenths(host, exchanges);
    const int wrong = host.wrongUnits();
    const bool enough = didEnough(host.figures(), exchanges);
    std::printf("growth after the first tenth: %ld KiB resident (below %d), %ld bytes allocated "
                "(below %d); wrong units at the end: %d\n",
                growth.residentKib, int(MOST_GROWTH_KIB), growth.allocatedBytes,
                int(MOST_ALLOCATED_BYTES), wrong);
    const bool flat =
        growth.residentKib < MOST_GROWTH_KIB && growth.allocatedBytes < MOST_ALLOCATED_BYTES;
    return flat && enough && wrong == 0 ? PASSED : FAILED;
}

/// The allocator's cache of a thread counts as allocated and fills over hours; starts the program
/// again without it.
void runWithoutAllocatorCache(char** argv)
{
    if (std::getenv("GLIBC_TUNABLES") != nullptr) return;
    setenv("GLIBC_TUNABLES", "glibc.malloc.tcache_count=0", 1);
    execv("/proc/self/exe", argv);
}

} // namespace

int main(int argc, char** argv)
{
    runWithoutAllocatorCache(argv);
    long long exchanges = 10000000;
    std::string driverFile = KAKB_DRIVER_FILE;
    CLI::App app("exchanges of the driver, and the memory that they keep");
    app.add_option("--exchanges", exchanges, "how many")
        ->check(CLI::Range(100000LL, 1000000000000LL))
        ->capture_default_str();
    app.add_option("--driver", driverFile, "library to load")->capture_default_str();
    try {
        app.parse(argc, argv);
        return run(driverFile, exchanges);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? int(PASSED) : int(UNUSABLE);
    } catch (const DriverError& error) {
        std::cerr << error.what() << "\n";
        return UNUSABLE;
    }
}
