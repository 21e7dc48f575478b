#include "simulatorOptions.h"

#include "faultOptions.h"
#include "numberText.h"

#include <algorithm>
#include <set>

namespace {

const int LAST_STATION = 247;
const int SERIAL_BAUD = 38400; // the controllers' own rate
const int SLOWEST_BAUD = 300;
const int FASTEST_BAUD = 4000000;
const int LONGEST_TURNAROUND_US = 10000000;
const std::int64_t MICROSECOND_NS = 1000;

const char* const DEMO_SIGNALS = "signals";
const char* const DEMO_TANK = "tank";

/// Options as the command line gives them; parseOptions() turns them into SimulatorOptions.
struct RawOptions
{
    std::vector<int> stations;
    std::vector<std::string> stationLists;
    std::vector<std::string> signals;
    bool demoSignals = false;
    std::vector<std::string> demos;
    int turnaroundUs = 0;
    RawMemory memory;
    RawFaults faults;
};

void addStations(CLI::App& app, RawOptions& raw)
{
    app.add_option("--station", raw.stations,
                   "a station; repeat the option, or give a list (default 1)")
        ->check(CLI::Range(1, LAST_STATION))
        ->delimiter(',');
    app.add_option("--stations", raw.stationLists,
                   "stations and ranges of stations, such as 1-8 or 1,3-5,247")
        ->type_name("LIST")
        ->allow_extra_args(false);
}

void addLink(CLI::App& app, SimulatorOptions& options, RawOptions& raw)
{
    auto* const linkPath = app.add_option("--link-path", options.linkPath,
                                          "make a symbolic link to the pseudo-terminal "
                                          "(default: none)");
    auto* const serial = app.add_option("--serial", options.serialDevice,
                                        "serve a serial port, 8N1, 38400 baud unless --baud is "
                                        "given (default: a pseudo-terminal)");
    auto* const tcp = app.add_option("--tcp", options.tcpPort,
                                     "serve a TCP port, 0 for any free one (default: none)");
    auto* const bind = app.add_option("--bind", options.bindAddress, "address of the TCP port");
    auto* const baud =
        app.add_option("--baud", options.line.baud,
                       "let frames take as long as on the wire (default: frames take "
                       "no time)");
    auto* const turnaround =
        app.add_option("--turnaround-us", raw.turnaroundUs,
                       "time from the end of a request to the start of its reply");
    app.add_flag("--trickle", options.line.byteByByte,
                 "deliver each byte at its time, not each reply at its end")
        ->needs(baud);
    linkPath->type_name("FILE")->excludes(serial)->excludes(tcp);
    serial->type_name("DEVICE")->excludes(tcp);
    tcp->type_name("PORT")->check(CLI::Range(0, 65535));
    bind->type_name("ADDRESS")->needs(tcp)->capture_default_str();
    baud->check(CLI::Range(SLOWEST_BAUD, FASTEST_BAUD));
    turnaround->check(CLI::Range(0, LONGEST_TURNAROUND_US))->capture_default_str();
}

void addSignals(CLI::App& app, SimulatorOptions& options, RawOptions& raw)
{
    app.add_option("--signal", raw.signals,
                   "a memory place whose value changes by itself; repeat the option for more "
                   "places (default: none)")
        ->type_name("STATION:AREA:NUMBER:KIND[:PERIOD_MS[:AMPLITUDE]]");
    app.add_option("--demo", raw.demos,
                   "on every station: signals of every kind (signals), or a tank with pump, valve "
                   "and alarms (tank) (default: none)")
        ->check(CLI::IsMember({DEMO_SIGNALS, DEMO_TANK}));
    app.add_flag("--demo-signals", raw.demoSignals, "the same as --demo signals");
    app.add_option("--seed", options.seed, "seed of signal phases and faults, 0 to 4294967295")
        ->capture_default_str();
}

void addEnd(CLI::App& app, SimulatorOptions& options)
{
    app.add_option("--control", options.controlPath,
                   "take commands on a Unix socket while the line is served (default: none)")
        ->type_name("PATH");
    app.add_option("--report", options.reportFile,
                   "write counts and times at the end (default: none)")
        ->type_name("FILE");
    app.add_option("--dump", options.dumpFile, "write the memory at the end (default: none)")
        ->type_name("FILE");
    app.add_flag("--until-stdin-ends", options.untilStdinEnds, "end when standard input ends");
}

[[noreturn]] void refuse(const char* option, const std::string& why)
{
    throw CLI::ValidationError(option, why);
}

/// Adds "3" or "3-5".
void addStations(const std::string& item, std::set<int>& all)
{
    const std::size_t dash = item.find('-');
    const std::string end = dash == std::string::npos ? item : item.substr(dash + 1);
    int first = 0;
    int last = 0;
    if (!readNumber(item.substr(0, dash), 1, LAST_STATION, first) ||
        !readNumber(end, first, LAST_STATION, last))
        refuse("--stations", "'" + item + "' is neither a station, 1 to 247, nor A-B with A <= B");
    for (int station = first; station <= last; ++station)
        all.insert(station);
}

std::vector<int> stationsOf(const RawOptions& raw)
{
    std::set<int> all(raw.stations.begin(), raw.stations.end());
    for (const std::string& list : raw.stationLists) {
        for (const std::string& item : fieldsOf(list, ','))
            addStations(item, all);
    }
    if (all.empty()) all.insert(1);
    return std::vector<int>(all.begin(), all.end());
}

bool hasDemo(const RawOptions& raw, const char* name)
{
    return std::find(raw.demos.begin(), raw.demos.end(), name) != raw.demos.end();
}

std::vector<int> tankStationsOf(const RawOptions& raw, const std::vector<int>& stations)
{
    if (!hasDemo(raw, DEMO_TANK)) return {};
    if (raw.demoSignals || hasDemo(raw, DEMO_SIGNALS))
        refuse("--demo", "the tank and the demo's signals use the same memory");
    return stations;
}

std::vector<Signal> signalsOf(const RawOptions& raw, const std::vector<int>& stations)
{
    std::vector<Signal> all;
    if (raw.demoSignals || hasDemo(raw, DEMO_SIGNALS)) all = demoSignals(stations);
    const std::set<int> known(stations.begin(), stations.end());
    for (const std::string& text : raw.signals) {
        Signal signal;
        const std::string trouble = parseSignal(text, signal);
        if (!trouble.empty()) refuse("--signal", trouble);
        if (known.count(signal.place.station) == 0)
            refuse("--signal", "there is no station " + std::to_string(signal.place.station));
        all.push_back(signal);
    }
    return all;
}

} // namespace

SimulatorOptions parseOptions(CLI::App& app, int argc, char** argv)
{
    SimulatorOptions options;
    RawOptions raw;
    app.set_version_flag("--version", "kakb-sim " KAKB_PROJECT_VERSION);
    addStations(app, raw);
    addLink(app, options, raw);
    addSignals(app, options, raw);
    addMemory(app, options.memory, raw.memory);
    addFaults(app, options.faults, raw.faults);
    app.add_flag("--echo", options.echo,
                 "return every byte that the host sends, ahead of all other bytes, as a two-wire "
                 "adapter does");
    addEnd(app, options);
    app.parse(argc, argv);

    options.stations = stationsOf(raw);
    options.signals = signalsOf(raw, options.stations);
    options.tankStations = tankStationsOf(raw, options.stations);
    finishMemory(options.memory, options.faults.refusals, raw.memory, options.stations);
    finishFaults(options.faults, raw.faults, options.stations);
    options.line.turnaroundNs = raw.turnaroundUs * MICROSECOND_NS;
    options.line.isNetwork = options.tcpPort >= 0;
    options.line.isSerialPort = !options.serialDevice.empty();
    if (options.line.isSerialPort && options.line.baud == 0) options.line.baud = SERIAL_BAUD;
    return options;
}
