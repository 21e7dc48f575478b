#include "plan/sharedMemory.h"

#include <algorithm>
#include <tuple>

namespace {

enum { WORD_BITS = 16, BYTE_BITS = 8 };

/// The memory of a tag.
struct Range
{
    int station;
    QChar letter;
    int firstBit;
    int end; ///< number behind the last bit
    size_t tag;
};

/// The first address number of the memory, in words and in bits.
int firstNumberOf(QChar letter)
{
    return letter == QLatin1Char('M') ? int(FIRST_MARKER_NUMBER) : 0;
}

Range rangeOf(const std::vector<Tag>& tags, size_t index)
{
    const Tag& tag = tags[index];
    const QChar letter = tag.area.at(0);
    const int base = firstNumberOf(letter);
    const int unitBits = isBitArea(tag.area) ? 1 : int(WORD_BITS);
    const int first = (tag.number - base) * unitBits;
    return {tag.station, letter, first, first + tag.units() * unitBits, index};
}

/// The ranges in the order of their starts. All later ranges that overlap a range follow it
/// directly.
std::vector<Range> sortedRanges(const std::vector<Tag>& tags)
{
    std::vector<Range> ranges;
    for (size_t i = 0; i < tags.size(); ++i)
        ranges.push_back(rangeOf(tags, i));
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
        return std::tie(a.station, a.letter, a.firstBit) <
               std::tie(b.station, b.letter, b.firstBit);
    });
    return ranges;
}

} // namespace

QString wordAreaOf(const QString& area)
{
    return area.left(1) + QLatin1Char('W');
}

WordBit wordBitOf(const QString& area, int number)
{
    const int base = firstNumberOf(area.at(0));
    const int bit = number - base;
    return {wordAreaOf(area), base + bit / WORD_BITS, bit % WORD_BITS};
}

QByteArray bitOfWord(const QByteArray& word, int bit)
{
    const int byte = static_cast<unsigned char>(word.at(bit / BYTE_BITS));
    return QByteArray(1, static_cast<char>(byte >> bit % BYTE_BITS & 1));
}

std::vector<std::pair<size_t, size_t>> sharingTags(const std::vector<Tag>& tags)
{
    std::vector<std::pair<size_t, size_t>> pairs;
    const std::vector<Range> ranges = sortedRanges(tags);
    for (size_t i = 0; i < ranges.size(); ++i) {
        const Range& range = ranges[i];
        for (size_t j = i + 1; j < ranges.size(); ++j) {
            const Range& other = ranges[j];
            if (other.station != range.station || other.letter != range.letter ||
                other.firstBit >= range.end)
                break;
            pairs.push_back(std::minmax(range.tag, other.tag));
        }
    }
    std::sort(pairs.begin(), pairs.end());
    return pairs;
}

QString coilProblem(const QString& area, int number, int count)
{
    if (area != QLatin1String("QX") || number + count <= FIRST_MARKER_NUMBER) return QString();
    return QString(QLatin1String("QX %1.%2 and above can be read but not written: their coils are "
                                 "those of the markers"))
        .arg(FIRST_MARKER_NUMBER / BYTE_BITS)
        .arg(FIRST_MARKER_NUMBER % BYTE_BITS);
}
