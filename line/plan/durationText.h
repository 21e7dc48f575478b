#ifndef DURATION_TEXT_H
#define DURATION_TEXT_H

#include <QString>

#include <optional>

/// A duration such as "500ms", "10s" or "5m", in milliseconds; empty when the text is none. The
/// number is whole and has at most 9 digits. "0" needs no unit.
std::optional<qint64> durationMs(const QString& text);

/// Why a text is no duration, in words; empty: it is one.
QString durationProblem(const QString& text);

/// The text of a duration with the longest unit that keeps the number whole: "500ms", "10s", "5m".
/// @param ms  0 or more
QString durationText(qint64 ms);

#endif
