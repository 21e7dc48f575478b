// kakb-sim: a simulated PLC. Its Modbus side is libmodbus, so it shares no framing code with the
// driver that it is used to test.
//
// usage: kakb-sim [options]
//
// Stations
//   --station N           1 to 247, several times or as a list N,N (default 1)
//   --stations LIST       stations and ranges, such as 1-8 or 1,3-5,247; several times
// Link (default: a pseudo-terminal)
//   --link-path FILE      symbolic link to the pseudo-terminal for as long as it is there; replaces
//                         a link whose terminal is gone, and nothing else
//   --serial DEVICE       a serial port, 8N1, at --baud (default 38400)
//   --tcp PORT            a TCP port with RTU frames, 0 to 65535, 0: any free one
//   --bind ADDRESS        of the TCP port, IPv4 or IPv6 in digits (default 127.0.0.1)
//   --baud N              300 to 4000000: a pseudo-terminal or TCP port takes as long as the wire
//                         would, 10 bits a byte; each reply comes whole when its last byte would
//                         (default: no time)
//   --trickle             each byte at its time instead; needs --baud
//   --turnaround-us N     from request end to reply start, 0 to 10000000 (default 0)
// Memory. ADDRESS as kakb-host takes it: MW100, MX12.3; without STATION: it is of station 1
//   --load FILE           start with the memory that --dump wrote (default: all 0)
//   --set [STATION:]ADDRESS=VALUE
//                         several times, after --load; a word -32768 to 65535, a bit 0 or 1
//   --refuse [STATION:]FIRST[..LAST][:CODE][:write]
//                         several times: what reads or writes there is answered with exception
//                         CODE, 1 to 255 (default 2); with :write only what writes
// Signals
//   --signal STATION:AREA:NUMBER:KIND[:PERIOD_MS[:AMPLITUDE]]
//                         several times. AREA IW QW MW IX QX MX; NUMBER as on the wire: IW and QW
//                         0 to 255, MW 3000 to 7095, IX and QX 0 to 4095, MX 3000 to 65535; KIND
//                         ramp (default 10000 ms, 1000), sine (10000 ms, 1000), toggle (1000 ms,
//                         1), square (10000 ms, 1000), counter (1000 ms, 65535) or walk, which is
//                         random (200 ms, 1000), for bits toggle and square only; PERIOD_MS 1 to
//                         86400000; AMPLITUDE 1 to 65535, of a sine 32767
//   --demo signals        on each station: IW 0 ramp, IW 1 sine, IW 2 counter, IW 3 walk, IX 64 to
//   67
//                         toggles, MW 3000 counter, MX 3160 toggle
//   --demo tank           on each station a tank with pump, valve and alarms, see the manual page
//   --demo-signals        the same as --demo signals
//   --seed N              signal phases and faults, 0 to 4294967295 (default 1)
// Faults, each a share of the exchanges, 0 to 1 (default 0), 1 at most together
//   --drop --drop-request --corrupt --truncate --duplicate --delay --stray-before --stray-after
//   --wrong-station --exception
//   --delay-ms N          how late --delay is, 0 to 60000 (default 700); later replies queue behind
//   --duplicate SHARE[:AFTER-MS]
//                         the second copy is written by itself, AFTER-MS behind the end of the
//                         first one, 0 to 60000 (default 0); later replies queue behind
//   --exception-code N    1 to 255 (default 6)
//   --silent STATION[:SHARE]
//                         executes nothing and never answers, or only in that share of the
//                         exchanges, 0 to 1; several times
//   --late SHARE:UP-TO-MS
//                         replies late by a random time up to UP-TO-MS, 0 to 60000, in that share
//                         of the exchanges, 0 to 1, whatever other fault they have; executed at
//                         once; later replies of the same station queue behind
//   --fault-exchanges N   only the first N exchanges have these faults, 0 to 2000000000 (default 0:
//                         all)
//   --stall SECONDS[:EVERY]
//                         stands still for SECONDS, then serves in order what was asked meanwhile:
//                         once, 1 s after the first request, or every EVERY seconds from start to
//                         start, the first EVERY seconds after the first request. Both 0.1 to 3600,
//                         EVERY more than SECONDS
//   --stall-station N     only that station stalls; the others answer meanwhile
//   --service-ms N        from the start of an answer that a stall held back to the start of the
//                         next one, 0 to 60000 (default 0)
//   --echo                returns every byte that the host sends, ahead of anything else, as an
//                         adapter for two wires does
// Control
//   --control PATH        a Unix socket that takes commands, see controlCommands.h
// End
//   --report FILE         counts, silent intervals and own lateness, as lines "key value"
//   --dump FILE           memory that is not 0, as lines "STATION AREA NUMBER VALUE", NUMBER as on
//                         the wire
//   --until-stdin-ends    end when standard input does, and not when interrupted
//
// Prints what a host opens on the first line, a path or "tcp:ADDRESS,PORT", then serves until it is
// terminated or interrupted, a control client ends it, or its terminal is closed.
// Exit status: 0 ended on request, 1 usage or a file to load that is not right, 2 the link failed
// or an output could not be written.

#include "echoingLine.h"
#include "memoryFile.h"
#include "openLine.h"
#include "outputFile.h"
#include "report.h"

#include <sys/prctl.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>

namespace {

enum ExitStatus { EXIT_ENDED = 0, EXIT_USAGE = 1, EXIT_LINK = 2 };

const char* const CANNOT_WRITE = "cannot write the output";

const unsigned long FINEST_TIMER_SLACK_NS = 1;

volatile std::sig_atomic_t stopRequested = 0;

void requestStop(int)
{
    stopRequested = 1;
}

/// @return the signal mask for waiting. At all other times the signals stay blocked, so that none
///         comes between the test of `stopRequested` and the wait
sigset_t stopOnSignals(bool untilStdinEnds)
{
    struct sigaction action = {};
    action.sa_handler = requestStop;
    sigaction(SIGTERM, &action, nullptr);
    // SIGINT and SIGHUP reach both a host and the PLC that it started, and the host ends the PLC.
    if (untilStdinEnds) action.sa_handler = SIG_IGN;
    sigaction(SIGINT, &action, nullptr);
    struct sigaction before = {};
    sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr); // not under nohup
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigset_t waiting;
    sigemptyset(&blocked);
    for (const int ending : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&blocked, ending);
    sigprocmask(SIG_BLOCK, &blocked, &waiting);
    for (const int ending : {SIGTERM, SIGINT, SIGHUP})
        sigdelset(&waiting, ending);
    return waiting;
}

/// An output file that cannot be written ends the run at its start.
std::unique_ptr<OutputFile> openOutput(const std::string& path)
{
    return path.empty() ? nullptr : std::make_unique<OutputFile>(path);
}

void fillMemory(PlcStations& stations, const MemorySettings& memory)
{
    if (!memory.loadFile.empty()) loadMemory(memory.loadFile, stations);
    for (const PlaceValue& value : memory.assigned)
        stations.apply(value);
}

/// Writes both files, also when the first one cannot be written.
void writeOutputs(OutputFile* report, OutputFile* dump, const std::string& figures,
                  const PlcStations& stations)
{
    std::string trouble;
    try {
        if (report) report->write(figures);
    } catch (const LinkError& error) {
        trouble = error.what();
    }
    if (dump) dump->write(memoryText(stations));
    if (!trouble.empty()) throw LinkError(trouble);
}

bool isShown()
{
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
}

int serve(const SimulatorOptions& options, const sigset_t& waitingMask)
{
    PlcStations stations(options.stations);
    PlcProgram program(options.signals, options.seed, options.tankStations);
    program.start(stations);
    fillMemory(stations, options.memory);
    const std::unique_ptr<OutputFile> report = openOutput(options.reportFile);
    const std::unique_ptr<OutputFile> dump = openOutput(options.dumpFile);
    const std::unique_ptr<LineEnd> line = openLine(options);
    EchoingLine echoing(*line);
    const LinePacing pacing(options.line);
    RequestHandler handler(stations, pacing, options.faults, options.seed);
    ServerLoop loop(options.echo ? echoing : *line, handler, stations, program, pacing);
    ControlCommands commands(stations, handler);
    std::unique_ptr<ControlSocket> control;
    if (!options.controlPath.empty()) {
        control = std::make_unique<ControlSocket>(options.controlPath);
        loop.setControl(*control, commands);
    }
    std::printf("%s\n", line->address().c_str());
    if (!isShown()) throw LinkError(CANNOT_WRITE);
    // A lost link ends the run, but the report up to then is still written.
    int status = EXIT_ENDED;
    try {
        loop.run(stopRequested, waitingMask, options.untilStdinEnds);
    } catch (const LinkError& error) {
        std::fprintf(stderr, "kakb-sim: %s\n", error.what());
        status = EXIT_LINK;
    }
    std::ostringstream figures;
    writeReport(figures, handler, loop, echoing.echoedBytes());
    writeOutputs(report.get(), dump.get(), figures.str(), stations);
    return status;
}

int fail(int status, const std::string& sentence)
{
    std::fprintf(stderr, "kakb-sim: %s\n", sentence.c_str());
    return status;
}

/// After help, the version, or wrong arguments.
int parsed(const CLI::App& app, const CLI::ParseError& error)
{
    if (error.get_exit_code() == int(CLI::ExitCodes::Success)) {
        std::ostringstream text;
        app.exit(error, text);
        std::fputs(text.str().c_str(), stdout);
        return isShown() ? int(EXIT_ENDED) : fail(EXIT_LINK, CANNOT_WRITE);
    }
    std::string sentence = error.what();
    std::replace(sentence.begin(), sentence.end(), '\n', ' ');
    return fail(EXIT_USAGE, sentence + " (kakb-sim --help says more)");
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app("Simulated PLC on a pseudo-terminal, a serial port or a TCP port", "kakb-sim");
    try {
        const SimulatorOptions options = parseOptions(app, argc, argv);
        prctl(PR_SET_TIMERSLACK, FINEST_TIMER_SLACK_NS);
        return serve(options, stopOnSignals(options.untilStdinEnds));
    } catch (const CLI::ParseError& error) {
        return parsed(app, error);
    } catch (const MemoryFileError& error) {
        return fail(EXIT_USAGE, error.what());
    } catch (const std::exception& error) {
        return fail(EXIT_LINK, error.what());
    }
}
