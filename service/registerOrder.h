#ifndef REGISTER_ORDER_H
#define REGISTER_ORDER_H

#include <QString>

#include <algorithm>
#include <utility>
#include <vector>

/// Sort key of a variable: station, then area in table order, then address, as one number that
/// wraps around at 32 bits.
int getRegAddressWeight(int station, const QString& regName, int addr);

/// Sorts ascending by weight; equal weights keep their order. The weight counts as a number of type
/// Weight, signed or unsigned. Each is computed once and only indices move while sorting, because
/// the records are large.
template <typename Weight, typename Records> void sortByRegAddressWeight(Records& records)
{
    typedef std::pair<Weight, int> Entry;
    std::vector<Entry> order;
    const Records& unsorted = records;
    const int size = int(unsorted.size());
    order.reserve(size_t(size));
    for (int i = 0; i < size; ++i) {
        const int weight = getRegAddressWeight(unsorted.at(i).station, unsorted.at(i).regName,
                                               unsorted.at(i).addr);
        order.push_back(Entry(Weight(weight), i));
    }
    // The index as second criterion keeps equal weights in order.
    std::sort(order.begin(), order.end());

    Records sorted;
    sorted.reserve(size);
    for (int i = 0; i < size; ++i)
        sorted.append(unsorted.at(order[size_t(i)].second));
    records = sorted;
}

#endif
