#include "verbs/commandLine.h"

#include "driver/companionFiles.h"
#include "output/writtenFile.h"
#include "plan/addressReason.h"
#include "program/printing.h"
#include "verbs/addressVerbs.h"
#include "verbs/commandOptions.h"
#include "verbs/infoVerb.h"
#include "verbs/inspectionVerbs.h"
#include "verbs/planVerb.h"
#include "verbs/readVerb.h"
#include "verbs/recipeVerb.h"
#include "verbs/usageTexts.h"
#include "verbs/writeVerb.h"
#include "wire/timeUnits.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace {

std::vector<Tag> chosenTags(const CommandOptions& options, const DriverLibrary& driver)
{
    const TagChoice choice(driver, text(options.tagFile));
    if (options.names.empty()) return choice.inFile();
    std::vector<Tag> tags;
    for (const std::string& name : options.names) {
        const std::vector<Tag> named = choice.named(text(name));
        tags.insert(tags.end(), named.begin(), named.end());
    }
    return tags;
}

std::vector<Tag> someTags(const CommandOptions& options, const DriverLibrary& driver)
{
    const std::vector<Tag> tags = chosenTags(options, driver);
    if (tags.empty())
        throw VerbFailure(EXIT_USAGE,
                          QLatin1String("name tags or addresses, or a tag file that has some"));
    return tags;
}

/// Only the user's tag file says which variables a PLC has. The simulated PLC's variables are
/// known, so it has a default tag file.
std::vector<Tag> polledTags(CommandOptions options, const DriverLibrary& driver)
{
    if (options.tagFile.empty()) {
        if (addressOf(driver, options.link).kind != LinkAddress::SIMULATED)
            throw VerbFailure(EXIT_USAGE, QLatin1String("--tags is required: only the simulated "
                                                        "PLC has a tag file of its own"));
        options.tagFile = companionTagFile().toStdString();
    }
    return someTags(options, driver);
}

ExitStatus plan(const CommandOptions& options, const DriverLibrary& driver)
{
    const std::vector<Tag> tags = polledTags(options, driver);
    const LinkAddress address = addressOf(driver, options.link);
    const qint64 pace = options.link.everyMs.value_or(defaultPaceMs(address.kind)) * MILLISECOND;
    printPlan(stdout, tags, timingOf(address), options.link.turnaroundUs, pace,
              options.link.mostGap, driver, options.link.json);
    return EXIT_DONE;
}

ExitStatus write(const CommandOptions& options, const DriverLibrary& driver)
{
    const TagChoice choice(driver, text(options.tagFile));
    QStringList arguments;
    for (const std::string& name : options.names)
        arguments << text(name);
    const std::vector<Assignment> assignments = assignmentsOf(
        arguments, choice, driver, options.allowNan ? ALLOW_NON_FINITE : REFUSE_NON_FINITE);
    return writeTags(driver, options.link, assignments);
}

RecipeOptions recipeOptions(const CommandOptions& options)
{
    RecipeOptions recipe;
    recipe.file = text(options.recipeFile);
    recipe.output = text(options.recipeOutput);
    recipe.verify = options.verify;
    recipe.allowsNan = options.allowNan;
    return recipe;
}

/// The place that check and series ask about, in one word ("MW100") or in two.
/// @throws CLI::RequiredError without an address
void mustHaveAddress(const CommandOptions& options)
{
    const bool hasDigit = options.area.find_first_of("0123456789") != std::string::npos;
    if (options.address.empty() && !hasDigit) throw CLI::RequiredError("ADDRESS");
}

AreaAndAddress placeOf(const CommandOptions& options, const DriverLibrary& driver)
{
    if (options.address.empty()) return areaAndAddress(text(options.area), driver);
    const QString known = areaName(text(options.area), driver);
    return {known.isEmpty() ? text(options.area) : known, text(options.address)};
}

void addQuestions(CLI::App& app, CommandOptions& o, Verb& chosen)
{
    CLI::App* info = app.add_subcommand("info", "Identity, default settings, areas");
    addJson(info, o);
    info->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            printInfo(stdout, driver, o.link.json);
            return EXIT_DONE;
        };
    });
    CLI::App* check = app.add_subcommand("check", "Whether an address is valid, or why not");
    addAddress(check, o);
    check->add_flag("--write", o.write, "check also whether the address may be written");
    check->callback([&] {
        mustHaveAddress(o);
        chosen = [&](const DriverLibrary& driver) {
            const AreaAndAddress place = placeOf(o, driver);
            return printCheck(stdout, driver, place.area, place.address, o.count, o.write,
                              o.link.json)
                       ? EXIT_DONE
                       : EXIT_INVALID;
        };
    });
    CLI::App* series = app.add_subcommand("series", "Addresses at an interval");
    addAddress(series, o);
    series->add_option("--interval", o.interval, "words or bits from one address to the next")
        ->check(CLI::Range(1, 65536))
        ->capture_default_str();
    series->callback([&] {
        mustHaveAddress(o);
        chosen = [&](const DriverLibrary& driver) {
            const AreaAndAddress place = placeOf(o, driver);
            return printSeries(stdout, driver, place.area, place.address, o.count, o.interval,
                               o.link.json)
                       ? EXIT_DONE
                       : EXIT_INVALID;
        };
    });
    CLI::App* planVerb = app.add_subcommand("plan", "The requests that read the tags");
    planVerb->footer(
        "Without grouping, bits still come in groups of 16, in one request for each group.\n\n" +
        helpFooter());
    addPolledTags(planVerb, o);
    addTiming(planVerb, o);
    addGap(planVerb, o);
    addEvery(planVerb, o);
    planVerb->callback(
        [&] { chosen = [&](const DriverLibrary& driver) { return plan(o, driver); }; });
}

void addTransfers(CLI::App& app, CommandOptions& o, Verb& chosen)
{
    CLI::App* watchVerb = app.add_subcommand("watch", "Polls the tags and shows changes");
    addPolledTags(watchVerb, o);
    addTurnaround(watchVerb, o);
    addLink(watchVerb, o);
    addGap(watchVerb, o);
    addEvery(watchVerb, o);
    addWatch(watchVerb, o);
    watchVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return watch(driver, o.link, polledTags(o, driver), o.watch);
        };
    });
    CLI::App* readVerb = app.add_subcommand("read", "Reads tags or addresses once");
    readVerb->add_option("NAME", o.names,
                         "names of the tag file, or addresses: MW100, MX12.3, 2:QW8, "
                         "MW100:float32:high, IW0:hex, MW0..MW62, MW0+16:int16");
    readVerb->add_flag("--both-orders", o.bothOrders,
                       "show each 32-bit value in both word orders, with the type of each");
    addTags(readVerb, o);
    addTurnaround(readVerb, o);
    addLink(readVerb, o);
    addGap(readVerb, o);
    readVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            const std::vector<Tag> tags = someTags(o, driver);
            return readTags(driver, o.link, o.bothOrders ? inBothOrders(tags) : tags,
                            o.bothOrders ? WITH_WORD_ORDER : NAMED_ONLY);
        };
    });
    CLI::App* writeVerb = app.add_subcommand("write", "Writes values; the PLC confirms them");
    writeVerb
        ->add_option("NAME=VALUE", o.names,
                     "such as level=3.5, MW100=7, MX12.3=1, "
                     "MW100:float32=21.5, MW10=0xFF or MW10=1,2,3")
        ->required();
    addAllowNan(writeVerb, o);
    addTags(writeVerb, o);
    addHold(writeVerb, o);
    addLink(writeVerb, o);
    writeVerb->callback(
        [&] { chosen = [&](const DriverLibrary& driver) { return write(o, driver); }; });
}

void addRecipe(CLI::App& app, CommandOptions& o, Verb& chosen)
{
    CLI::App* recipe = app.add_subcommand("recipe", "Transfers a recipe");
    recipe->require_subcommand(1);
    CLI::App* download =
        recipe->add_subcommand("download", "Writes the recipe's values into the PLC");
    CLI::App* upload = recipe->add_subcommand("upload", "Reads the recipe's values from the PLC");
    for (CLI::App* verb : {download, upload}) {
        verb->add_option("FILE", o.recipeFile, "recipe (CSV)")->required();
        verb->add_flag("--verify", o.verify, "read back, and name every value that differs");
        addLink(verb, o);
    }
    upload->add_option(
        "--output", o.recipeOutput,
        "file to write; -: standard output, the messages then go to standard error (default: "
        "FILE itself)");
    addAllowNan(download, o);
    download->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return downloadRecipe(driver, o.link, recipeOptions(o));
        };
    });
    upload->callback([&] {
        if (o.recipeOutput.empty()) o.recipeOutput = o.recipeFile;
        chosen = [&](const DriverLibrary& driver) {
            return uploadRecipe(driver, o.link, recipeOptions(o));
        };
    });
}

ExitStatus usageError(const std::string& sentence)
{
    std::fprintf(stderr, "kakb-host: %s\n", sentence.c_str());
    return EXIT_USAGE;
}

bool writesToStandardOutput(const CommandOptions& options)
{
    return isStandardOutput(text(options.link.pcap)) ||
           isStandardOutput(text(options.recipeOutput));
}

/// Two files in one would be neither of them.
std::string problemOfFiles(const CommandOptions& options)
{
    const QString capture = text(options.link.pcap);
    const QString recipe = text(options.recipeOutput);
    const bool areOne =
        !capture.isEmpty() &&
        (capture == recipe || (isStandardOutput(capture) && isStandardOutput(recipe)));
    return areOne ? "--pcap and the uploaded recipe name the same file" : std::string();
}

} // namespace

std::optional<ExitStatus> parseCommandLine(int argc, char** argv, Command& command)
{
    CLI::App app("Host for the quorvane ka_kb driver", "kakb-host");
    app.require_subcommand(1);
    app.footer(helpFooter());
    app.set_version_flag("--version", "kakb-host " KAKB_PROJECT_VERSION);
    const auto options = std::make_shared<CommandOptions>();
    app.add_option("--driver", command.driver,
                   "driver library (default: the library beside this program, else the system's)");
    addQuestions(app, *options, command.verb);
    addTransfers(app, *options, command.verb);
    addRecipe(app, *options, command.verb);
    addMemory(app, *options, command.verb);
    addScan(app, command.verb);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            const std::string wrongVerb = wrongVerbSentence(app);
            if (!wrongVerb.empty()) return usageError(wrongVerb);
            return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
        }
        return usageError(usageSentence(app, error));
    }
    const std::string problem = problemOfFiles(*options);
    if (!problem.empty()) return usageError(problem);
    command.writesFileToStandardOutput = writesToStandardOutput(*options);
    command.verb = [options, verb = command.verb](const DriverLibrary& driver) {
        return verb(driver);
    };
    return std::nullopt;
}
