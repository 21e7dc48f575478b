#ifndef LIST_TEXTS_H
#define LIST_TEXTS_H

#include <QString>

#include <string>
#include <vector>

// Lists as texts, so that a failed comparison of two lists can be read.

typedef std::vector<std::string> Texts;

/// "station area address xCount" of a key, a variable or a recipe record.
template <typename Block> std::string blockText(const Block& block)
{
    return std::to_string(block.station) + " " + block.regName.toStdString() + " " +
           std::to_string(block.addr) + " x" + std::to_string(block.count);
}

template <typename Blocks> Texts blocksOf(const Blocks& blocks)
{
    Texts out;
    for (int i = 0; i < int(blocks.size()); ++i)
        out.push_back(blockText(blocks.at(i)));
    return out;
}

template <typename Strings> Texts textsOf(const Strings& strings)
{
    Texts out;
    for (int i = 0; i < int(strings.size()); ++i)
        out.push_back(strings.at(i).toStdString());
    return out;
}

template <typename Numbers> std::vector<int> numbersOf(const Numbers& numbers)
{
    std::vector<int> out;
    for (int i = 0; i < int(numbers.size()); ++i)
        out.push_back(numbers.at(i));
    return out;
}

#endif
