#ifndef PLACE_TEXT_H
#define PLACE_TEXT_H

#include "place.h"

// Places as a user writes them: MW100, MX12.3, 2:QW8. Without STATION: the station is 1. Small
// letters and a % ahead of the area mean the same: 2:%qw8.
// Each function returns what is wrong with the text; empty when it is right and the result is set.

std::string parsePlace(const std::string& text, Place& place);

/// "MW500..MW600" or a single place. Both ends have the same area; the station stands ahead of the
/// range.
std::string parseRange(const std::string& text, Place& first, Place& last);

/// "MW100=5" or "2:MX12.3=1". A word takes -32768 to 65535, a bit 0 and 1.
std::string parseAssignment(const std::string& text, PlaceValue& assigned);

/// Reads a value that fits the area.
std::string parseValue(const std::string& text, Area area, std::uint16_t& value);

#endif
