#ifndef STRANGE_NAMES_H
#define STRANGE_NAMES_H

#include <QString>

#include <random>
#include <set>
#include <vector>

/// Names that are hard to tell apart in topics, no two alike: a few letters, digits and hyphens,
/// and what topics cannot hold.
inline std::vector<QString> strangeNames(size_t count, std::mt19937& random)
{
    static const char letters[] = {'a', 'A', '_', '-', '1', '2', '+', '#', '/'};
    std::set<QString> names;
    while (names.size() < count) {
        QString name;
        for (auto length = 1 + random() % 5; length > 0; --length)
            name += QLatin1Char(letters[random() % sizeof letters]);
        names.insert(name);
    }
    return {names.begin(), names.end()};
}

#endif
