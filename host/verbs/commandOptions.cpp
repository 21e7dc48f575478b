#include "verbs/commandOptions.h"

#include "plan/durationText.h"
#include "wire/protocolLimits.h"

#include <cmath>
#include <cstdlib>

namespace {

EchoMode echoMode(const std::string& text)
{
    if (text == "yes") return ECHO_PRESENT;
    return text == "no" ? ECHO_ABSENT : ECHO_UNKNOWN;
}

enum { LONGEST_HOLD_MS = 3600000 };

/// A duration of up to an hour in milliseconds; empty: the text is none.
std::optional<int> holdMs(const std::string& text)
{
    const std::optional<qint64> ms = durationMs(QString::fromStdString(text));
    return ms && *ms <= LONGEST_HOLD_MS ? std::make_optional(int(*ms)) : std::nullopt;
}

TimeText::Style timeStyle(const std::string& text)
{
    if (text == "iso") return TimeText::ISO;
    return text == "local" ? TimeText::LOCAL : TimeText::RELATIVE;
}

} // namespace

CLI::Validator numberFrom(double lowest, double highest)
{
    const CLI::Range range(lowest, highest);
    const auto problem = [range](const std::string& number) {
        return std::isnan(std::strtod(number.c_str(), nullptr)) ? number + " is not a number"
                                                                : range(number);
    };
    return CLI::Validator(problem, range.get_description());
}

CLI::Validator aDuration()
{
    const auto problem = [](const std::string& text) {
        return durationProblem(QString::fromStdString(text)).toStdString();
    };
    return CLI::Validator(problem, std::string());
}

void addJson(CLI::App* verb, CommandOptions& options)
{
    verb->add_flag("--json", options.link.json, "print one JSON object on each line");
}

void addTags(CLI::App* verb, CommandOptions& options, const char* otherwise)
{
    verb->add_option("--tags", options.tagFile, std::string("tag file (CSV)") + otherwise);
}

void addPolledTags(CLI::App* verb, CommandOptions& options)
{
    addTags(verb, options, "; default, on the simulated PLC only: the demo's tag file");
}

void addLinkAddress(CLI::App* verb, CommandOptions& options)
{
    verb->add_option("--link", options.link.link,
                     "sim, serial:DEVICE,BAUD,DATA BITS,PARITY,STOP BITS or tcp:HOST,PORT; the "
                     "driver supplies omitted parts")
        ->capture_default_str();
}

void addTurnaround(CLI::App* verb, CommandOptions& options)
{
    verb->add_option("--turnaround-us", options.link.turnaroundUs,
                     "time that a station takes to begin its answer, for the plan")
        ->check(CLI::Range(0, 1000000))
        ->capture_default_str();
}

void addTiming(CLI::App* verb, CommandOptions& options)
{
    addLinkAddress(verb, options);
    addTurnaround(verb, options);
    addJson(verb, options);
}

void addGap(CLI::App* verb, CommandOptions& options)
{
    verb->add_option("--gap", options.link.mostGap,
                     "longest run of words without a tag that a request may read; 0: none; "
                     "default: as long as it saves time")
        ->check(CLI::Range(0, int(MOST_READ_REGISTERS)));
}

void addEvery(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    verb->add_option_function<std::string>(
            "--every",
            [&link](const std::string& text) {
                link.everyMs = durationMs(QString::fromStdString(text));
            },
            "shortest time from the start of a cycle to the next start, such as 500ms, 10s or 5m; "
            "0: cycles follow at once (default: 100ms over TCP, else 0)")
        ->check(aDuration())
        ->type_name("DURATION");
}

void addExchange(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    verb->add_option("--timeout-ms", link.timeoutMs,
                     "longest time that a station takes to begin its answer; over TCP, until all "
                     "of the answer is there")
        ->check(CLI::Range(10, 60000))
        ->capture_default_str();
    verb->add_option("--attempts", link.attempts, "number of attempts for each request")
        ->check(CLI::Range(1, 20))
        ->capture_default_str();
    verb->add_option_function<std::string>(
            "--echo", [&link](const std::string& mode) { link.echo = echoMode(mode); },
            "whether the link returns every byte that the host sends")
        ->check(CLI::IsMember({"yes", "no", "auto"}))
        ->default_str("auto");
}

void addTrace(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    verb->add_option_function<std::string>(
            "--time", [&link](const std::string& style) { link.time = timeStyle(style); },
            "times in lines, objects and the trace: seconds since the start, UTC, or local time "
            "with its offset")
        ->check(CLI::IsMember({"relative", "iso", "local"}))
        ->default_str("relative");
    verb->add_flag("--trace", link.trace, "print every frame to standard error");
}

void addSimulator(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    verb->add_option("--simulator", link.simulator,
                     "program of the simulated PLC (default: kakb-sim beside this program)");
    verb->add_option("--simulator-arguments", link.simulatorArguments,
                     "more arguments for the simulated PLC, separated by blanks");
}

void addLinkRun(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    addLinkAddress(verb, options);
    addExchange(verb, options);
    verb->add_option("--pause-ms", link.pauseMs,
                     "pause before the host opens a lost link again; doubles up to 30 s")
        ->check(CLI::Range(10, 30000))
        ->capture_default_str();
    addTrace(verb, options);
    verb->add_option(
        "--pcap", link.pcap,
        "write the requests and their answers to a capture file; -: standard output, the values "
        "then go to standard error");
    addSimulator(verb, options);
}

void addLink(CLI::App* verb, CommandOptions& options)
{
    addLinkRun(verb, options);
    addJson(verb, options);
}

void addWatch(CLI::App* verb, CommandOptions& options)
{
    WatchOptions& watch = options.watch;
    verb->add_option("--seconds", watch.seconds, "end after so many seconds; 0: run until stopped")
        ->check(numberFrom(0, 1e7))
        ->capture_default_str();
    verb->add_flag("--csv", watch.csv,
                   "print CSV: every --every, by default every second, a line with the time and "
                   "each tag's value");
    verb->add_option(
            "--until", watch.until,
            "end with status 0 as soon as the tag was read with the value; also NAME>VALUE "
            "and NAME<VALUE; several: all at once")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->take_all();
    verb->add_option("--fail-when-bad", watch.failWhenBad,
                     "end with status 9 as soon as a tag was bad for so many seconds")
        ->type_name("SECONDS")
        ->check(numberFrom(0.1, 1e7));
}

void addHold(CLI::App* verb, CommandOptions& options)
{
    LinkOptions& link = options.link;
    const auto problem = [](const std::string& text) {
        return holdMs(text) ? std::string()
                            : text + " is no duration such as 500ms or 2s, up to 60m";
    };
    verb->add_option_function<std::string>(
            "--hold", [&link](const std::string& text) { link.holdMs = *holdMs(text); },
            "how long values wait for a station that has fallen silent; 0: they fail at once")
        ->check(CLI::Validator(problem, "DURATION"))
        ->default_str("2s");
}

void addAllowNan(CLI::App* verb, CommandOptions& options)
{
    verb->add_flag("--allow-nan", options.allowNan, "write also the values nan, inf and -inf");
}

void addAddress(CLI::App* verb, CommandOptions& options)
{
    verb->add_option("AREA", options.area,
                     "MW, IW, QW, MX, IX or QX, with or without the address: MW100")
        ->required();
    verb->add_option("ADDRESS", options.address, "such as 100 or 12.3");
    verb->add_option("--count", options.count, "words or bits")
        ->check(CLI::Range(1, 65536))
        ->capture_default_str();
    addJson(verb, options);
}
