#ifndef WRITTEN_VALUE_H
#define WRITTEN_VALUE_H

#include "plan/tag.h"

#include <QByteArray>
#include <QJsonValue>

#include <variant>

/// Why a value does not fit a tag, in words, with the values that do.
struct UnfitValue
{
    QString problem;
};

/// The bytes for intf_setData of a value that a client asks for.
///
/// - Bits take true, false, 0 and 1.
/// - Integers take a number of their range without a fraction; 1e3 and 5.0 are such numbers.
/// - A float takes each number whose nearest float is finite.
///
/// A text is never a value: "1,5" or "0x10" would be read by each reader in its own way.
std::variant<QByteArray, UnfitValue> writtenBytes(const Tag& tag, const QJsonValue& value);

#endif
