// What the driver takes of memory and of start-up time, as a host that loads it sees it.
//
// usage: footprint LIBRARY
// Prints a line each, name and number: heap bytes of a loaded and initialised driver, of a cached
// unit, of a queued write, and the median time to load and unload the library in microseconds, with
// Qt loaded already.
// Exit status: 0 done, 1 usage, 2 the library does not load.

#include "quorvane_ka_kb_plc.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>

namespace {

enum { UNITS = 10000, WRITES = 500, LOADS = 201, BYTES_OF_PROPERTIES = 16 };

template <typename Function> Function resolve(void* library, const char* name)
{
    return reinterpret_cast<Function>(dlsym(library, name));
}

double heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
}

/// As a host makes it for each call.
QString markerWords()
{
    return QString::fromLatin1("MW");
}

double medianLoadMicroseconds(const char* file)
{
    std::vector<double> times;
    for (int i = 0; i < LOADS; ++i) {
        const auto start = std::chrono::steady_clock::now();
        void* library = dlopen(file, RTLD_NOW);
        if (library != nullptr) dlclose(library);
        const std::chrono::duration<double, std::micro> taken =
            std::chrono::steady_clock::now() - start;
        times.push_back(taken.count());
    }
    std::sort(times.begin(), times.end());
    return times[LOADS / 2];
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: footprint LIBRARY\n");
        return 1;
    }
    const double loadTime = medianLoadMicroseconds(argv[1]);
    const double before = heapBytes();
    void* library = dlopen(argv[1], RTLD_NOW);
    if (library == nullptr) {
        std::fprintf(stderr, "footprint: %s\n", dlerror());
        return 2;
    }
    const auto initProperty = resolve<decltype(&intf_initProperty)>(library, "intf_initProperty");
    const auto getData = resolve<decltype(&intf_getData)>(library, "intf_getData");
    const auto setData = resolve<decltype(&intf_setData)>(library, "intf_setData");
    char properties[BYTES_OF_PROPERTIES] = "0#0#0#3#125";
    int status = 0;
    initProperty(nullptr, 0, nullptr, &status, properties, nullptr);
    const double empty = heapBytes();

    unsigned char value[2] = {0, 0};
    for (int i = 0; i < UNITS; ++i)
        getData(1, markerWords(), i, 1, value);
    const double cached = heapBytes();
    for (int i = 0; i < WRITES; ++i)
        setData(1, markerWords(), i, 1, value, 0);
    const double queued = heapBytes();

    std::printf("empty_driver_bytes %.0f\n", empty - before);
    std::printf("cached_unit_bytes %.1f\n", (cached - empty) / UNITS);
    std::printf("queued_write_bytes %.1f\n", (queued - cached) / WRITES);
    std::printf("load_microseconds %.0f\n", loadTime);
    return 0;
}
