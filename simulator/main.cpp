// kakb-sim: a simulated PLC. Its Modbus side is libmodbus, so it shares no framing code with the
// driver that it is used to test.
//
// usage: kakb-sim [--station N]
//   --station N   station number, 1 to 247 (default 1)
// Prints the path of its pseudo-terminal on the first line, then serves until it is terminated.
// Exit status: 0 terminated, 1 usage, 2 the link failed.

#include "plcMemory.h"
#include "pseudoTerminal.h"

#include <CLI/CLI.hpp>

#include <poll.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

enum ExitStatus { EXIT_TERMINATED = 0, EXIT_USAGE = 1, EXIT_LINK = 2 };

const int POLL_INTERVAL_MS = 500; // a signal between the test and the wait is seen after it

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
}

/// Without SA_RESTART, so that a signal ends the wait for a request. libmodbus starts its own wait
/// anew, so the wait for the first byte is not left to it.
void stopOnSignals()
{
    struct sigaction action = {};
    action.sa_handler = requestStop;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

struct FreeContext
{
    void operator()(modbus_t* context) const
    {
        modbus_free(context);
    }
};

bool waitForByte(int descriptor)
{
    pollfd wanted = {descriptor, POLLIN, 0};
    return poll(&wanted, 1, POLL_INTERVAL_MS) > 0;
}

void serve(modbus_t* context)
{
    PlcMemory memory;
    uint8_t request[MODBUS_RTU_MAX_ADU_LENGTH];
    while (!stopRequested) {
        if (!waitForByte(modbus_get_socket(context))) continue;
        const int length = modbus_receive(context, request);
        if (length <= 0) continue;
        memory.tick();
        if (modbus_reply(context, request, length, memory.mapping()) >= 0)
            memory.reflectWrite(request);
    }
}

int runOnPseudoTerminal(int station)
{
    const PseudoTerminal terminal;
    // The line settings are the pseudo-terminal's own: libmodbus only gets its open end.
    const std::unique_ptr<modbus_t, FreeContext> context(
        modbus_new_rtu(terminal.path().c_str(), 38400, 'N', 8, 1));
    if (!context || modbus_set_slave(context.get(), station) != 0 ||
        modbus_set_socket(context.get(), terminal.descriptor()) != 0) {
        std::fprintf(stderr, "kakb-sim: libmodbus: %s\n", modbus_strerror(errno));
        return EXIT_LINK;
    }
    std::printf("%s\n", terminal.path().c_str());
    std::fflush(stdout);
    serve(context.get());
    return EXIT_TERMINATED;
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Simulated PLC on a pseudo-terminal", "kakb-sim");
    int station = 1;
    app.add_option("--station", station, "station number")
        ->check(CLI::Range(1, 247))
        ->capture_default_str();
    try {
        app.parse(argc, argv);
        stopOnSignals();
        return runOnPseudoTerminal(station);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_TERMINATED : EXIT_USAGE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "kakb-sim: %s\n", error.what());
        return EXIT_LINK;
    }
}
