#ifndef STATION_LIST_H
#define STATION_LIST_H

#include <QString>

#include <optional>
#include <vector>

/// Station numbers from a text such as "1-247" or "1,3,7-9": ascending, each number once. Empty
/// when the text is no list of numbers from 1 to 247.
std::optional<std::vector<int>> stationList(const QString& text);

#endif
