#ifndef SHARED_MEMORY_H
#define SHARED_MEMORY_H

#include "plan/tag.h"

#include <QByteArray>

#include <utility>
#include <vector>

// The PLC's memory behind the areas. The areas of words and bits with the same letter (QW and QX,
// MW and MX, IW and IX) are the same memory: bit k of word w is bit 16 w + k.

/// The word that holds a bit.
struct WordBit
{
    QString area; ///< MW, IW or QW
    int number;   ///< address number of the word
    int bit;      ///< 0 to 15; bit 0 is the least significant bit
};

/// The place of a bit in its word. Every bit has a word: the last word of MX is number 6908 of MW,
/// and IX and QX end with the last words of IW and QW.
/// @param area    MX, IX or QX
/// @param number  address number of the bit
WordBit wordBitOf(const QString& area, int number);

/// The value of a bit of a word: one byte, 0 or 1.
/// @param word  two bytes, low byte first
/// @param bit   0 to 15
QByteArray bitOfWord(const QByteArray& word, int bit);

/// MW, IW or QW: the words of the memory that holds the area.
QString wordAreaOf(const QString& area);

/// All pairs of tags of one station that share memory, at least in part. A pair has the indices of
/// the tags, the smaller index first. The pairs ascend.
std::vector<std::pair<size_t, size_t>> sharingTags(const std::vector<Tag>& tags);

/// Why `count` bits from an address number on cannot be written, in words; empty: they can. The
/// coil functions number the coils of QX and MX in one sequence, in which coil 3000 is MX 0.0. A
/// write to a bit of QX with number 3000 or more would change a marker. Such a bit can be read, as
/// part of its word.
QString coilProblem(const QString& area, int number, int count);

#endif
