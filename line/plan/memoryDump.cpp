#include "plan/memoryDump.h"

#include "wire/deviceRegisters.h"

#include <optional>

namespace {

enum { LAST_STATION = 247, LAST_VALUE = 65535, FIELDS = 4 };

const char* const READ_COMMENT = "# read ";

/// First and last address number of an area of words; empty: no such area.
std::optional<std::pair<int, int>> numbersOf(const QString& area)
{
    if (area == QLatin1String("MW")) return std::make_pair(int(FIRST_MARKER), int(LAST_MARKER));
    if (area == QLatin1String("IW") || area == QLatin1String("QW"))
        return std::make_pair(0, int(LAST_INPUT_OR_OUTPUT));
    return std::nullopt;
}

/// The number in a text of digits; empty when it is not between the limits.
std::optional<int> numberOf(const QString& text, int lowest, int highest)
{
    for (const QChar digit : text) {
        if (digit < QLatin1Char('0') || digit > QLatin1Char('9')) return std::nullopt;
    }
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < lowest || number > highest) return std::nullopt;
    return number;
}

QString rangeSentence(const char* what, const QString& text, int lowest, int highest)
{
    return QString(QLatin1String("%1 \"%2\" is no number from %3 to %4"))
        .arg(QLatin1String(what), text, QString::number(lowest), QString::number(highest));
}

/// The station, the area and one or two address numbers of a line.
struct PlaceFields
{
    int station = 0;
    QString area;
    int first = 0;
    int last = 0;
};

/// @return what is wrong, in words; empty: nothing
QString takePlace(const QStringList& fields, int numbers, PlaceFields& place)
{
    const std::optional<int> station = numberOf(fields[0], 1, LAST_STATION);
    if (!station) return rangeSentence("station", fields[0], 1, LAST_STATION);
    const auto limits = numbersOf(fields[1]);
    if (!limits) return QString(QLatin1String("area \"%1\" is not MW, IW or QW")).arg(fields[1]);
    for (int i = 2; i < 2 + numbers; ++i) {
        const std::optional<int> number = numberOf(fields[i], limits->first, limits->second);
        if (!number)
            return rangeSentence("address number", fields[i], limits->first, limits->second);
        (i == 2 ? place.first : place.last) = *number;
    }
    place.station = *station;
    place.area = fields[1];
    return QString();
}

QString takeReadComment(const QStringList& fields, MemoryDump& dump)
{
    PlaceFields place;
    if (fields.size() != FIELDS)
        return QLatin1String("a line \"# read\" needs STATION AREA FIRST LAST");
    const QString problem = takePlace(fields, 2, place);
    if (!problem.isEmpty()) return problem;
    if (place.last < place.first)
        return QLatin1String("the last address number is below the first");
    dump.read.push_back({place.station, place.area, place.first, place.last});
    return QString();
}

QString takeWord(const QStringList& fields, MemoryDump& dump)
{
    PlaceFields place;
    if (fields.size() != FIELDS) return QLatin1String("a line needs STATION AREA NUMBER VALUE");
    const QString problem = takePlace(fields, 1, place);
    if (!problem.isEmpty()) return problem;
    const std::optional<int> value = numberOf(fields[3], 0, LAST_VALUE);
    if (!value) return rangeSentence("value", fields[3], 0, LAST_VALUE);
    const MemoryDump::Place key(place.station, place.area, place.first);
    if (!dump.words.emplace(key, *value).second)
        return QLatin1String("the word has a line already");
    return QString();
}

QString takeLine(const QString& line, MemoryDump& dump)
{
    const QString text = line.simplified();
    const QString comment = QLatin1String(READ_COMMENT);
    if (text.startsWith(comment))
        return takeReadComment(text.mid(comment.size()).split(QLatin1Char(' ')), dump);
    if (text.isEmpty() || text.startsWith(QLatin1Char('#'))) return QString();
    return takeWord(text.split(QLatin1Char(' ')), dump);
}

QString lineOf(int station, const QString& area, int number, int last)
{
    return QString(QLatin1String("%1 %2 %3 %4\n"))
        .arg(QString::number(station), area, QString::number(number), QString::number(last));
}

} // namespace

bool isMemoryDump(const QByteArray& text)
{
    bool hasRead = false;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (trimmed.isEmpty()) continue;
        if (trimmed.startsWith('#')) {
            hasRead = hasRead || trimmed.startsWith(READ_COMMENT);
            continue;
        }
        return trimmed.at(0) >= '0' && trimmed.at(0) <= '9';
    }
    return hasRead;
}

MemoryDump readMemoryDump(const QByteArray& text, const QString& fileName)
{
    MemoryDump dump;
    QStringList problems;
    int number = 0;
    for (const QByteArray& line : text.split('\n')) {
        ++number;
        const QString problem = takeLine(QString::fromUtf8(line), dump);
        if (problem.isEmpty()) continue;
        problems << QString(QLatin1String("%1: line %2: %3"))
                        .arg(fileName, QString::number(number), problem);
    }
    if (!problems.isEmpty()) throw TagFileError(problems.join(QLatin1Char('\n')).toStdString());
    return dump;
}

QByteArray memoryDumpText(const MemoryDump& dump)
{
    QString text;
    for (const MemoryDump::Words& words : dump.read)
        text += QLatin1String(READ_COMMENT) +
                lineOf(words.station, words.area, words.first, words.last);
    for (const auto& [place, value] : dump.words) {
        if (value == 0) continue;
        text += lineOf(std::get<0>(place), std::get<1>(place), std::get<2>(place), value);
    }
    return text.toUtf8();
}
