#ifndef TAG_VALUE_H
#define TAG_VALUE_H

#include "plan/tag.h"

#include <QByteArray>

#include <optional>

/// The text of a tag's value in the tag's format. Bits are "0" and "1". A float has the fewest
/// digits that tell it from the neighbouring floats. Hexadecimal and binary texts have all digits,
/// 0x00FF.
/// @param bytes  of intf_getData: two bytes a word, low byte first, or one byte a bit
QString tagValueText(const Tag& tag, const QByteArray& bytes);

/// The tag's value as a number. Every value of every type is exact in it; bits are 0 and 1.
/// @param bytes  as for tagValueText(); empty: there is no number either
std::optional<double> tagValueNumber(const Tag& tag, const QByteArray& bytes);

/// The bytes for intf_setData from the text of a value: decimal, 0x hexadecimal and 0b binary for
/// the unsigned types, 0/1/true/false for bool. Empty when the text is no value of the tag's type.
std::optional<QByteArray> tagValueBytes(const Tag& tag, const QString& text);

/// The bytes for intf_setData of a float.
/// @param tag  of type FLOAT32
QByteArray tagFloatBytes(const Tag& tag, float value);

/// The values of the tag's type, in words: "0 to 65535", "0, 1, true or false". Those of a float
/// are the finite ones.
QString tagValuesText(const Tag& tag);

/// Whether nan, inf and -inf are values of a float. A PLC that computes with one of them spreads it
/// to other values.
enum NonFinite { REFUSE_NON_FINITE, ALLOW_NON_FINITE };

/// Why a text is no value of the tag, with the values that are; empty: it is one.
QString valueProblem(const Tag& tag, const QString& text, NonFinite nonFinite);

#endif
