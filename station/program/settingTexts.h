#ifndef SETTING_TEXTS_H
#define SETTING_TEXTS_H

#include <QString>

#include <optional>

// What the texts of options and of the configuration's keys may be. A problem is in words; it is
// empty when there is none.

/// The whole numbers that a key or an option takes.
struct NumberRange
{
    int lowest;
    int highest;
};

constexpr NumberRange TIMEOUT_RANGE = {10, 60000};
constexpr NumberRange ATTEMPTS_RANGE = {1, 20};
constexpr NumberRange PAUSE_RANGE = {10, 30000};

/// A name that people read: some text without control characters.
QString nameProblem(const QString& name);

/// The name of a link. It can be a part of a path: it has no slash.
QString linkNameProblem(const QString& name);

/// A name as it stands in the header `Host`: letters, digits, hyphens and dots, without a port.
QString hostNameProblem(const QString& name);

/// Bytes from a text such as "256MiB": a whole number with KiB, MiB or GiB; empty: the text is
/// none, or more than 1024 GiB.
std::optional<qint64> sizeBytes(const QString& text);

#endif
