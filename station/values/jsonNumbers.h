#ifndef JSON_NUMBERS_H
#define JSON_NUMBERS_H

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <optional>

/// A JSON text whose numbers QJsonDocument reads as JSON means them, or why there is none.
struct JsonNumbers
{
    QByteArray json;
    QString problem; ///< in words; empty: there is none
};

/// Looks at the numbers of a JSON text, which may be no JSON elsewhere.
///
/// - QJsonDocument takes `.5` and `1.`, which are no JSON. Such a number is the problem.
/// - It takes no number beyond a double. Such a number is JSON: `1e400` becomes +-BEYOND_DOUBLE,
///   and `1e-400`, which is nearest to 0, becomes 0. No byte changes its place.
JsonNumbers jsonNumbersOf(const QByteArray& json);

/// A number from here on fits no type of a tag, and may stand for one that no double can hold.
const double BEYOND_DOUBLE = 1e308;

/// Beyond it, readers of JSON do not agree on whole numbers (RFC 8259, 6).
const double MOST_EXACT = 0x1p53 - 1;

/// A number without a fraction, up to MOST_EXACT in size; empty: the value is none.
std::optional<qint64> wholeNumber(const QJsonValue& value);

#endif
