#include "verbs/inspectionVerbs.h"

#include "program/printing.h"
#include "verbs/diffVerb.h"
#include "verbs/dumpVerb.h"
#include "verbs/memoryWords.h"
#include "verbs/scanVerb.h"
#include "verbs/stationList.h"

namespace {

ExitStatus scan(const CommandOptions& options, const DriverLibrary& driver)
{
    const std::optional<std::vector<int>> stations = stationList(text(options.stations));
    if (!stations)
        throw VerbFailure(EXIT_USAGE,
                          QLatin1String("--stations takes numbers from 1 to 247, as 1,3,7-9"));
    return scanStations(driver, options.link, {*stations, options.bauds});
}

} // namespace

/// Silent stations are the rule in a scan, so it has a shorter time-out than the other verbs.
void addScan(CLI::App& app, Verb& chosen)
{
    enum { SCAN_TIMEOUT_MS = 100, SCAN_ATTEMPTS = 2, SLOWEST_BAUD = 300, FASTEST_BAUD = 4000000 };
    const auto o = std::make_shared<CommandOptions>();
    o->link.timeoutMs = SCAN_TIMEOUT_MS;
    o->link.attempts = SCAN_ATTEMPTS;
    CLI::App* verb = app.add_subcommand("scan", "Finds the stations that answer; writes nothing");
    verb->add_option("--stations", o->stations, "stations to ask, such as 1,3,7-9")
        ->capture_default_str();
    verb->add_option("--bauds", o->bauds,
                     "speeds to try on a serial link, such as 9600,19200 (default: the link's own)")
        ->delimiter(',')
        ->check(CLI::Range(int(SLOWEST_BAUD), int(FASTEST_BAUD)));
    addLinkAddress(verb, *o);
    addJson(verb, *o);
    addExchange(verb, *o);
    addTrace(verb, *o);
    addSimulator(verb, *o);
    verb->callback(
        [o, &chosen] { chosen = [o](const DriverLibrary& driver) { return scan(*o, driver); }; });
}

void addMemory(CLI::App& app, CommandOptions& o, Verb& chosen)
{
    CLI::App* dumpVerb = app.add_subcommand("dump", "Writes words of the PLC into a file");
    dumpVerb->add_option("WORDS", o.names, "areas or addresses of words: MW, 2:QW, MW0..MW62")
        ->required();
    dumpVerb->add_option("--output", o.recipeOutput,
                         "file to write (default, and with -: standard output)");
    addLinkRun(dumpVerb, o);
    dumpVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            QStringList words;
            for (const std::string& name : o.names)
                words << text(name);
            return dumpMemory(driver, o.link, memoryWords(words, driver), text(o.recipeOutput));
        };
    });
    CLI::App* diffVerb = app.add_subcommand("diff", "Compares the PLC with a recipe or a dump");
    diffVerb->add_option("FILE", o.recipeFile, "recipe (CSV), or a file of dump or kakb-sim")
        ->required();
    addLink(diffVerb, o);
    diffVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return compareWithFile(driver, o.link, text(o.recipeFile));
        };
    });
}
