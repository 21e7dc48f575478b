#include "faultOptions.h"

#include "numberText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

const int LONGEST_DELAY_MS = 60000;
const int LAST_STATION = 247;
const double SHORTEST_STALL_S = 0.1;
const double LONGEST_STALL_S = 3600;
const double SECOND_NS = 1e9;
const std::int64_t MILLISECOND_NS = 1000000;

const char* const MEANINGS[FAULT_KINDS] = {"reply not sent",
                                           "request dropped before the PLC sees it",
                                           "one bit of the reply flipped",
                                           "end of the reply missing",
                                           "reply sent twice",
                                           "reply late",
                                           "1 to 3 stray bytes ahead of the reply",
                                           "1 to 3 stray bytes behind the reply",
                                           "reply with the number of another station",
                                           "request refused and not executed"};

/// CLI::Range alone accepts "nan", which is neither below the range nor above it.
CLI::Validator numberFrom(double lowest, double highest)
{
    const CLI::Range range(lowest, highest);
    const auto problem = [range](const std::string& text) {
        return std::isnan(std::strtod(text.c_str(), nullptr)) ? text + " is not a number"
                                                              : range(text);
    };
    return CLI::Validator(problem, range.get_description());
}

void addRates(CLI::App& app, FaultSettings& faults, RawFaults& raw)
{
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind) {
        const std::string option = std::string("--") + faultName(static_cast<Fault>(kind));
        const std::string meaning = std::string("share of exchanges: ") + MEANINGS[kind];
        if (kind == FAULT_DUPLICATE) {
            app.add_option(option, raw.duplicate,
                           meaning + ", the second copy AFTER-MS milliseconds behind the first")
                ->type_name("SHARE[:AFTER-MS]")
                ->capture_default_str();
            continue;
        }
        app.add_option(option, faults.rates[kind], meaning)
            ->check(numberFrom(0, 1))
            ->capture_default_str();
    }
}

void addStall(CLI::App& app, RawFaults& raw)
{
    auto* const stall =
        app.add_option("--stall", raw.stall,
                       "stand still for SECONDS, then answer the requests that came meanwhile: "
                       "once, 1 s after the first request, or every EVERY seconds (default: "
                       "never)");
    stall->type_name("SECONDS[:EVERY]");
    app.add_option("--stall-station", raw.stallStation,
                   "the only station that stalls (default: all stations stall)")
        ->check(CLI::Range(1, LAST_STATION))
        ->needs(stall);
    app.add_option("--service-ms", raw.serviceMs,
                   "milliseconds from the start of a held answer to the start of the next one")
        ->check(CLI::Range(0, LONGEST_DELAY_MS))
        ->needs(stall)
        ->capture_default_str();
}

/// From "3" or "3:0.1".
struct NumberPair
{
    double first = 0;
    std::optional<double> second;
};

/// @param form  the accepted forms, for the message
/// Throws CLI::ValidationError when the text has another form.
NumberPair pairOf(const char* option, const std::string& text, const char* form)
{
    const std::size_t colon = text.find(':');
    const std::optional<double> first = decimalNumber(text.substr(0, colon));
    NumberPair pair;
    if (colon != std::string::npos) pair.second = decimalNumber(text.substr(colon + 1));
    if (!first || (colon != std::string::npos && !pair.second))
        throw CLI::ValidationError(option, "'" + text + "' is not " + form);
    pair.first = *first;
    return pair;
}

void checkRange(const char* option, double number, double lowest, double highest)
{
    if (number >= lowest && number <= highest) return;
    throw CLI::ValidationError(option, CLI::detail::to_string(number) + " is not from " +
                                           CLI::detail::to_string(lowest) + " to " +
                                           CLI::detail::to_string(highest));
}

std::int64_t fromMilliseconds(const char* option, double number)
{
    checkRange(option, number, 0, LONGEST_DELAY_MS);
    return std::llround(number * double(MILLISECOND_NS));
}

std::int64_t fromSeconds(const char* option, double number)
{
    checkRange(option, number, SHORTEST_STALL_S, LONGEST_STALL_S);
    return std::llround(number * SECOND_NS);
}

void finishDuplicates(FaultSettings& faults, const std::string& text)
{
    const NumberPair pair = pairOf("--duplicate", text, "SHARE or SHARE:AFTER-MS");
    checkRange("--duplicate", pair.first, 0, 1);
    faults.rates[FAULT_DUPLICATE] = pair.first;
    faults.duplicateAfterNs = fromMilliseconds("--duplicate", pair.second.value_or(0));
}

void finishLateness(FaultSettings& faults, const std::string& text)
{
    const NumberPair pair = pairOf("--late", text, "SHARE:UP-TO-MS");
    if (!pair.second) throw CLI::ValidationError("--late", "'" + text + "' is not SHARE:UP-TO-MS");
    checkRange("--late", pair.first, 0, 1);
    faults.lateShare = pair.first;
    faults.longestLatenessNs = fromMilliseconds("--late", *pair.second);
}

void checkServed(const char* option, int station, const std::vector<int>& stations)
{
    if (std::find(stations.begin(), stations.end(), station) == stations.end())
        throw CLI::ValidationError(option, "there is no station " + std::to_string(station));
}

void finishStalls(StallSettings& stall, const RawFaults& raw, const std::vector<int>& stations)
{
    const NumberPair pair = pairOf("--stall", *raw.stall, "SECONDS or SECONDS:EVERY");
    stall.lengthNs = fromSeconds("--stall", pair.first);
    if (pair.second) stall.everyNs = fromSeconds("--stall", *pair.second);
    if (pair.second && stall.everyNs <= stall.lengthNs)
        throw CLI::ValidationError("--stall",
                                   "'" + *raw.stall + "': EVERY has to be more than SECONDS");
    stall.serviceNs = raw.serviceMs * MILLISECOND_NS;
    if (raw.stallStation) checkServed("--stall-station", *raw.stallStation, stations);
    stall.station = raw.stallStation;
}

/// Share by station, from texts "3" (always) or "3:0.1".
std::map<int, double> silentStationsOf(const RawFaults& raw, const std::vector<int>& stations)
{
    std::map<int, double> silent;
    for (const std::string& text : raw.silentStations) {
        int station = 0;
        double share = 1;
        char rest = 0;
        const bool hasShare = text.find(':') != std::string::npos;
        const int found = std::sscanf(text.c_str(), "%d:%lf%c", &station, &share, &rest);
        if (found != (hasShare ? 2 : 1) ||
            std::to_string(station) != text.substr(0, text.find(':')))
            throw CLI::ValidationError("--silent",
                                       "'" + text + "' is not STATION or STATION:SHARE");
        checkRange("--silent", share, 0, 1);
        checkServed("--silent", station, stations);
        silent[station] = share;
    }
    return silent;
}

void checkRates(const FaultRates& rates)
{
    const double rounding = 1e-9; // ten rates of 0.1 must fit
    double together = 0;
    for (const double rate : rates)
        together += rate;
    if (together > 1 + rounding)
        throw CLI::ValidationError("the fault rates are more than 1 together");
}

} // namespace

void addFaults(CLI::App& app, FaultSettings& faults, RawFaults& raw)
{
    addRates(app, faults, raw);
    app.add_option("--delay-ms", raw.delayMs, "milliseconds by which --delay makes a reply late")
        ->check(CLI::Range(0, LONGEST_DELAY_MS))
        ->capture_default_str();
    app.add_option("--exception-code", faults.exceptionCode, "exception code of --exception")
        ->check(CLI::Range(1, 255))
        ->capture_default_str();
    app.add_option("--silent", raw.silentStations,
                   "a station that never answers and executes nothing; with SHARE, 0 to 1, it is "
                   "silent in that share of the exchanges; repeat the option for more stations "
                   "(default: none)")
        ->type_name("STATION[:SHARE]")
        ->delimiter(',');
    app.add_option("--late", raw.late,
                   "share of exchanges, independent of the other faults: reply late by a random "
                   "time up to UP-TO-MS milliseconds (default: none)")
        ->type_name("SHARE:UP-TO-MS");
    app.add_option("--fault-exchanges", faults.exchanges,
                   "only the first N exchanges have faults; 0: all")
        ->check(CLI::Range(0, 2000000000))
        ->capture_default_str();
    addStall(app, raw);
}

void finishFaults(FaultSettings& faults, const RawFaults& raw, const std::vector<int>& stations)
{
    finishDuplicates(faults, raw.duplicate);
    if (raw.late) finishLateness(faults, *raw.late);
    if (raw.stall) finishStalls(faults.stall, raw, stations);
    checkRates(faults.rates);
    faults.silentStations = silentStationsOf(raw, stations);
    faults.delayNs = raw.delayMs * MILLISECOND_NS;
}
