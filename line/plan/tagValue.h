#ifndef TAG_VALUE_H
#define TAG_VALUE_H

#include "plan/tag.h"

#include <QByteArray>

#include <optional>

/// The text of a tag's value. Bits are "0" and "1". A float has the fewest digits that tell it from
/// the neighbouring floats.
/// @param bytes  of intf_getData: two bytes a word, low byte first, or one byte a bit
QString tagValueText(const Tag& tag, const QByteArray& bytes);

/// The bytes for intf_setData from the text of a value: decimal, 0x hexadecimal for the unsigned
/// types, 0/1/true/false for bool. Empty when the text is no value of the tag's type.
std::optional<QByteArray> tagValueBytes(const Tag& tag, const QString& text);

#endif
