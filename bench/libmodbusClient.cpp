// libmodbus' own client on a line, for comparison: reads the same words again and again.
//
// usage: libmodbusClient DEVICE BAUD SECONDS FIRST_REGISTER COUNT [--silent-intervals]
//   FIRST_REGISTER COUNT   holding registers of station 1
//   --silent-intervals     its caller waits 3.5 characters (1.75 ms above 19200 baud) before each
//                          request, as the line's rules ask; libmodbus itself does not
// Prints exchanges per second. Exit status: 0 done, 1 usage, 2 the line failed.

#include <modbus/modbus.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <vector>

#include <sys/prctl.h>

namespace {

enum { STATION = 1, BITS_PER_CHARACTER = 10, FASTEST_COUNTED_BAUD = 19200 };

struct FreeContext
{
    void operator()(modbus_t* context) const
    {
        modbus_close(context);
        modbus_free(context);
    }
};

/// MODBUS over Serial Line V1.02, 2.5.1.1.
std::chrono::microseconds silentInterval(int baud)
{
    if (baud > FASTEST_COUNTED_BAUD) return std::chrono::microseconds(1750);
    return std::chrono::microseconds(7LL * BITS_PER_CHARACTER * 1000000 / (2LL * baud));
}

void sleepFor(std::chrono::microseconds time)
{
    const timespec wait = {0, long(time.count()) * 1000};
    clock_nanosleep(CLOCK_MONOTONIC, 0, &wait, nullptr);
}

int failed(const char* what)
{
    std::fprintf(stderr, "libmodbusClient: %s: %s\n", what, modbus_strerror(errno));
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 6) {
        std::fprintf(stderr, "usage: libmodbusClient DEVICE BAUD SECONDS FIRST_REGISTER COUNT "
                             "[--silent-intervals]\n");
        return 1;
    }
    const int baud = std::atoi(argv[2]);
    const double seconds = std::atof(argv[3]);
    const int count = std::atoi(argv[5]);
    const bool waits = argc > 6 && std::strcmp(argv[6], "--silent-intervals") == 0;
    std::unique_ptr<modbus_t, FreeContext> context(modbus_new_rtu(argv[1], baud, 'N', 8, 1));
    if (!context || modbus_set_slave(context.get(), STATION) != 0) return failed(argv[1]);
    if (modbus_connect(context.get()) != 0) return failed(argv[1]);
    // It would take an answer that an earlier host left on the line for its own, from then on
    // always the one before.
    sleepFor(std::chrono::milliseconds(300));
    modbus_flush(context.get());
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL); // its sleeps are as punctual as the host's

    std::vector<uint16_t> words(static_cast<size_t>(count));
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    long exchanges = 0;
    while (Clock::now() - start < std::chrono::duration<double>(seconds)) {
        if (modbus_read_registers(context.get(), std::atoi(argv[4]), count, words.data()) == count)
            ++exchanges;
        else
            modbus_flush(context.get());
        if (waits) sleepFor(silentInterval(baud));
    }
    const std::chrono::duration<double> taken = Clock::now() - start;
    std::printf("%.2f\n", double(exchanges) / taken.count());
    return 0;
}
