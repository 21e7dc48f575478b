#ifndef COMMAND_OPTIONS_H
#define COMMAND_OPTIONS_H

#include "program/hostProgram.h"
#include "verbs/watchVerb.h"

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// The options of all verbs. Each verb uses some of them.
struct CommandOptions
{
    std::string area;
    std::string address;
    int count = 1;
    int interval = 1;
    bool write = false;
    std::string tagFile;
    std::vector<std::string> names;
    WatchOptions watch;
    std::string recipeFile;
    std::string recipeOutput;
    bool verify = false;
    std::string stations = "1-247";
    std::vector<int> bauds;
    bool allowNan = false;
    bool bothOrders = false;
    LinkOptions link;
};

/// CLI::Range accepts "nan", because nan is neither below nor above the range. This check refuses
/// it.
CLI::Validator numberFrom(double lowest, double highest);

/// Accepts the durations of durationMs().
CLI::Validator aDuration();

// The functions below add options that several verbs have.

void addJson(CLI::App* verb, CommandOptions& options);

/// @param otherwise  text of the help about the verb without the option
void addTags(CLI::App* verb, CommandOptions& options, const char* otherwise = "");

/// The tag file of a verb that polls. It has a default only for the simulated PLC.
void addPolledTags(CLI::App* verb, CommandOptions& options);

/// Where the PLC is.
void addLinkAddress(CLI::App* verb, CommandOptions& options);

/// For the verbs that group their reads by the time that a request takes.
void addTurnaround(CLI::App* verb, CommandOptions& options);

/// The options that a plan depends on.
void addTiming(CLI::App* verb, CommandOptions& options);

/// The pace of polling.
void addEvery(CLI::App* verb, CommandOptions& options);

/// How long and how often a station is asked, and whether the link echoes.
void addExchange(CLI::App* verb, CommandOptions& options);

/// The trace, and how times are shown.
void addTrace(CLI::App* verb, CommandOptions& options);

void addSimulator(CLI::App* verb, CommandOptions& options);

/// The options of a verb that runs the driver on a link: all of the three above, and more.
void addLinkRun(CLI::App* verb, CommandOptions& options);

/// The same, of a verb that also prints objects.
void addLink(CLI::App* verb, CommandOptions& options);

/// The options of watch alone.
void addWatch(CLI::App* verb, CommandOptions& options);

/// Whether nan and infinite values may be written.
void addAllowNan(CLI::App* verb, CommandOptions& options);

/// Area, address and count.
void addAddress(CLI::App* verb, CommandOptions& options);

#endif
