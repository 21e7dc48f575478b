#include "verbs/usageTexts.h"

#include "program/exitStatus.h"

#include <algorithm>

namespace {

/// The innermost verb that the parser has recognised, or the program itself.
const CLI::App& deepestVerb(const CLI::App& app)
{
    const CLI::App* deepest = &app;
    while (!deepest->get_subcommands().empty())
        deepest = deepest->get_subcommands().front();
    return *deepest;
}

/// The words to type for the verb, for example "kakb-host recipe upload".
std::string commandOf(const CLI::App& verb)
{
    const CLI::App* const parent = verb.get_parent();
    return (parent ? commandOf(*parent) + ' ' : std::string()) + verb.get_name();
}

std::string verbsOf(const CLI::App& app)
{
    std::string names;
    for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; }))
        names += (names.empty() ? "" : ", ") + verb->get_name();
    return names;
}

/// The parser reports a wrong word as a missing verb; this sentence tells the two apart.
std::string verbSentence(const CLI::App& app)
{
    const CLI::App& asked = deepestVerb(app);
    const std::vector<std::string> words = app.remaining(true);
    if (words.empty()) return "a verb is missing: " + verbsOf(asked);
    const std::string& word = words.front();
    if (word.front() == '-') return "there is no option \"" + word + "\"";
    return "there is no verb \"" + word + "\"; the verbs are " + verbsOf(asked);
}

bool needsVerb(const CLI::App& app)
{
    return deepestVerb(app).get_require_subcommand_min() > 0;
}

std::string withHint(const CLI::App& app, const std::string& sentence)
{
    return sentence + " (" + commandOf(deepestVerb(app)) + " --help says more)";
}

} // namespace

std::string helpFooter()
{
    std::string text = "Exit status:";
    int status = 0;
    for (const char* const meaning : EXIT_MEANINGS)
        text += "\n  " + std::to_string(status++) + "  " + meaning;
    return text;
}

std::string usageSentence(const CLI::App& app, const CLI::ParseError& error)
{
    const bool lacksVerb =
        needsVerb(app) && error.get_exit_code() == int(CLI::ExitCodes::RequiredError);
    std::string sentence = lacksVerb ? verbSentence(app) : error.what();
    std::replace(sentence.begin(), sentence.end(), '\n', ' ');
    return withHint(app, sentence);
}

std::string wrongVerbSentence(const CLI::App& app)
{
    const std::vector<std::string> words = app.remaining(true);
    if (!needsVerb(app) || words.empty() || words.front().front() == '-') return "";
    return withHint(app, verbSentence(app));
}
