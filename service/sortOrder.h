#ifndef SORT_ORDER_H
#define SORT_ORDER_H

#include <QString>

#include <algorithm>
#include <utility>
#include <vector>

/// Sort key of a variable: station, then area in table order, then address, as one number that
/// wraps around at 32 bits.
int getRegAddressWeight(int station, const QString& regName, int addr);

/// The records' weights in ascending order, each with its record's index; equal weights keep their
/// order. The weight counts as a number of type Weight, signed or unsigned. Each is computed once
/// and only indices move while sorting, because the records are large.
template <typename Weight, typename Records>
std::vector<std::pair<Weight, int>> orderByRegAddressWeight(const Records& records)
{
    std::vector<std::pair<Weight, int>> order;
    const int size = int(records.size());
    order.reserve(size_t(size));
    for (int i = 0; i < size; ++i) {
        const int weight =
            getRegAddressWeight(records.at(i).station, records.at(i).regName, records.at(i).addr);
        order.push_back(std::make_pair(Weight(weight), i));
    }
    // The index as second criterion keeps equal weights in order.
    std::sort(order.begin(), order.end());
    return order;
}

/// Puts the records in that order.
template <typename Weight, typename Records> void sortByRegAddressWeight(Records& records)
{
    const std::vector<std::pair<Weight, int>> order = orderByRegAddressWeight<Weight>(records);
    const Records& unsorted = records;
    Records sorted;
    sorted.reserve(int(order.size()));
    for (size_t i = 0; i < order.size(); ++i)
        sorted.append(unsorted.at(order[i].second));
    records = sorted;
}

#endif
