#ifndef LIST_TEXTS_H
#define LIST_TEXTS_H

#include "driverFixture.h"

#include <QStringList>
#include <QVector>

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

/// The blocks in one line: "1 MW 3000 x2, 1 IX 0 x1".
template <typename Blocks> std::string blockLine(const Blocks& blocks)
{
    std::string out;
    for (const std::string& block : blocksOf(blocks))
        out += (out.empty() ? "" : ", ") + block;
    return out;
}

/// The keys that such a line names.
inline QList<KEY_ADDRESS> keysOf(const char* line)
{
    QList<KEY_ADDRESS> keys;
    if (line[0] == '\0') return keys;
    for (const QString& block : text(line).split(text(", "))) {
        const QStringList parts = block.split(text(" "));
        keys.append(key(parts.at(0).toInt(), parts.at(1).toLatin1().constData(),
                        parts.at(2).toInt(), parts.at(3).mid(1).toInt()));
    }
    return keys;
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

/// Places of recipe records in the host's buffer.
inline std::vector<int> offsetsOf(const QVector<_RCP_VAR_PRO>& records)
{
    std::vector<int> out;
    for (int i = 0; i < int(records.size()); ++i)
        out.push_back(records.at(i).bufOffset);
    return out;
}

#endif
