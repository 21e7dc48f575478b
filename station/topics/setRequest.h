#ifndef SET_REQUEST_H
#define SET_REQUEST_H

#include "plan/tag.h"
#include "sparkplug/payload.h"

#include <QByteArray>
#include <QJsonValue>
#include <QString>

#include <optional>
#include <variant>

/// The payload of a set, {"v","id","expires"}; other keys are left aside.
struct SetRequest
{
    QString problem;               ///< why it cannot be taken, in words; empty: it can
    QByteArray id = "null";        ///< JSON, as it goes into the result
    QJsonValue value;              ///< a number or a boolean
    std::optional<qint64> expires; ///< ms since 1970; empty: never

    enum { LONGEST = 4096 }; ///< bytes
};

/// Takes any bytes.
SetRequest setRequestOf(const QByteArray& payload);

/// The value for the tag, exactly as it is written, or why it does not fit.
std::variant<MetricValue, UnfitCommand> setValue(const Tag& tag, const QJsonValue& value);

#endif
