#ifndef USAGE_TEXTS_H
#define USAGE_TEXTS_H

#include <CLI/CLI.hpp>

/// Behind every help: the exit statuses.
std::string helpFooter();

/// What is wrong with a command line, in one sentence.
/// @param app    has parsed it
/// @param error  what the parser threw
std::string usageSentence(const CLI::App& app, const CLI::ParseError& error);

#endif
