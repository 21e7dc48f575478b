#include "verbs/commandLine.h"

#include "program/companionFiles.h"
#include "verbs/addressVerbs.h"
#include "verbs/commandOptions.h"
#include "verbs/infoVerb.h"
#include "verbs/planVerb.h"
#include "verbs/readVerb.h"
#include "verbs/recipeVerb.h"
#include "verbs/usageTexts.h"
#include "verbs/watchVerb.h"
#include "verbs/writeVerb.h"

#include <cstdio>
#include <memory>
#include <vector>

namespace {

using Verb = std::function<ExitStatus(const DriverLibrary&)>;

QString text(const std::string& utf8)
{
    return QString::fromStdString(utf8);
}

std::vector<Tag> chosenTags(const CommandOptions& options, const DriverLibrary& driver)
{
    const TagChoice choice(driver, text(options.tagFile));
    if (options.names.empty()) return choice.inFile();
    std::vector<Tag> tags;
    for (const std::string& name : options.names)
        tags.push_back(choice.named(text(name)));
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
    const LineTiming timing = timingOf(addressOf(driver, options.link));
    printPlan(stdout, tags, timing, options.link.turnaroundUs, options.link.mostGap, driver,
              options.link.json);
    return EXIT_DONE;
}

ExitStatus write(const CommandOptions& options, const DriverLibrary& driver)
{
    const TagChoice choice(driver, text(options.tagFile));
    std::vector<Assignment> assignments;
    for (const std::string& name : options.names)
        assignments.push_back(assignment(text(name), choice, driver));
    return writeTags(driver, options.link, assignments);
}

RecipeOptions recipeOptions(const CommandOptions& options)
{
    RecipeOptions recipe;
    recipe.file = text(options.recipeFile);
    recipe.output = text(options.recipeOutput);
    recipe.verify = options.verify;
    return recipe;
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
        chosen = [&](const DriverLibrary& driver) {
            return printCheck(stdout, driver, text(o.area), text(o.address), o.count, o.write,
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
        chosen = [&](const DriverLibrary& driver) {
            return printSeries(stdout, driver, text(o.area), text(o.address), o.count, o.interval,
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
    planVerb->callback(
        [&] { chosen = [&](const DriverLibrary& driver) { return plan(o, driver); }; });
}

void addTransfers(CLI::App& app, CommandOptions& o, Verb& chosen)
{
    CLI::App* watchVerb = app.add_subcommand("watch", "Polls the tags and shows changes");
    addPolledTags(watchVerb, o);
    addLink(watchVerb, o);
    addGap(watchVerb, o);
    watchVerb->add_option("--seconds", o.seconds, "end after so many seconds; 0: run until stopped")
        ->check(numberFrom(0, 1e7))
        ->capture_default_str();
    watchVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return watch(driver, o.link, polledTags(o, driver), o.seconds);
        };
    });
    CLI::App* readVerb = app.add_subcommand("read", "Reads tags or addresses once");
    readVerb->add_option("NAME", o.names,
                         "names of the tag file, or addresses: MW100, MX12.3, 2:QW8");
    addTags(readVerb, o);
    addLink(readVerb, o);
    addGap(readVerb, o);
    readVerb->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return readTags(driver, o.link, someTags(o, driver));
        };
    });
    CLI::App* writeVerb = app.add_subcommand("write", "Writes values; the PLC confirms them");
    writeVerb->add_option("NAME=VALUE", o.names, "such as level=3.5, MW100=7 or MX12.3=1")
        ->required();
    addTags(writeVerb, o);
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
    upload->add_option("--output", o.recipeOutput, "file to write (default: FILE itself)");
    download->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return downloadRecipe(driver, o.link, recipeOptions(o));
        };
    });
    upload->callback([&] {
        chosen = [&](const DriverLibrary& driver) {
            return uploadRecipe(driver, o.link, recipeOptions(o));
        };
    });
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
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) return app.exit(error) == 0 ? EXIT_DONE : EXIT_USAGE;
        std::fprintf(stderr, "kakb-host: %s\n", usageSentence(app, error).c_str());
        return EXIT_USAGE;
    }
    command.verb = [options, verb = command.verb](const DriverLibrary& driver) {
        return verb(driver);
    };
    return std::nullopt;
}
