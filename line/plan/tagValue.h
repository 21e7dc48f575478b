#ifndef TAG_VALUE_H
#define TAG_VALUE_H

#include "plan/tag.h"

#include <QByteArray>

#include <optional>

/// A tag's value as text from the bytes of intf_getData: two bytes a word, low byte first, or one
/// byte a bit. Bits are "0" and "1"; a float has as many digits as tell it from its neighbours.
QString tagValueText(const Tag& tag, const QByteArray& bytes);

/// The bytes for intf_setData from a value as text: decimal, 0x hexadecimal for the unsigned types,
/// 0/1/true/false for bool. Empty when the text is no value of the tag's type.
std::optional<QByteArray> tagValueBytes(const Tag& tag, const QString& text);

#endif
