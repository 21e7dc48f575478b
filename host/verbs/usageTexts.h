#ifndef USAGE_TEXTS_H
#define USAGE_TEXTS_H

#include <CLI/CLI.hpp>

/// The end of every help text: the exit statuses.
std::string helpFooter();

/// The error in a command line, in one sentence.
/// @param app    the parser after it has failed
/// @param error  the parser's exception
std::string usageSentence(const CLI::App& app, const CLI::ParseError& error);

/// The error of a command line with a word that is no verb; empty: it has none. Such a command line
/// has no help to show.
/// @param app  the parser after it has found --help
std::string wrongVerbSentence(const CLI::App& app);

#endif
