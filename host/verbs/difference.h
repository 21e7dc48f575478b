#ifndef DIFFERENCE_H
#define DIFFERENCE_H

#include "plan/tag.h"

#include <QByteArray>

/// Prints one value that is not as expected: a line, or with `json` an object.
/// @param expected, found  in the format of intf_getData, of the tag's size
void printDifference(const Tag& tag, const QByteArray& expected, const QByteArray& found,
                     bool json);

#endif
