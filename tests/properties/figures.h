#ifndef FIGURES_H
#define FIGURES_H

#include <initializer_list>
#include <string>

// What all cases of the running test did together. It prints them in one line when it has passed;
// one that names none, or never came to what it names, has shown nothing and fails.

/// Begins a case, and names what must come in one case at least.
void countCase(std::initializer_list<const char*> due = {});

/// Adds to a count, which must not end at 0.
void tally(const std::string& what, long long times = 1);

/// Keeps the most seen at once, which must come to `due`.
void tallyMost(const std::string& what, long long seen, long long due);

#endif
