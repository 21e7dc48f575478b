#include "plan/typedAddress.h"

#include "driver/addressText.h"
#include "plan/addressReason.h"
#include "plan/tagText.h"

#include <algorithm>
#include <optional>

namespace {

using MaybeText = std::optional<QString>;

/// The parts of a typed address, each as typed.
struct Parts
{
    MaybeText station;
    QString first;  ///< with the area
    MaybeText last; ///< with or without the area
    MaybeText count;
    MaybeText type;
};

[[noreturn]] void fail(const QString& problem)
{
    throw TagFileError(problem.toStdString());
}

void mustBeEmpty(const QString& problem)
{
    if (!problem.isEmpty()) fail(problem);
}

/// Cuts a text at its first mark.
/// @return the text behind the mark; nothing when the text has no mark
MaybeText cutBehind(QString& text, const char* mark)
{
    const int at = int(text.indexOf(QLatin1String(mark)));
    if (at < 0) return std::nullopt;
    const QString behind = text.mid(at + int(qstrlen(mark)));
    text.truncate(at);
    return behind;
}

bool beginsWithArea(const QString& text)
{
    return !text.isEmpty() && (text.at(0).isLetter() || text.at(0) == QLatin1Char('%'));
}

Parts partsOf(const QString& text)
{
    Parts parts;
    parts.first = text;
    if (!beginsWithArea(text)) {
        QString station = text;
        const MaybeText place = cutBehind(station, ":");
        if (place) parts.station = station;
        parts.first = place.value_or(text);
    }
    parts.type = cutBehind(parts.first, ":");
    parts.last = cutBehind(parts.first, "..");
    if (!parts.last) parts.count = cutBehind(parts.first, "+");
    return parts;
}

/// The first tag of the address, with its station, place and type.
Tag firstTag(const Parts& parts, const DriverLibrary& driver)
{
    Tag tag;
    if (parts.station && !takeStation(*parts.station, tag)) fail(stationProblem(*parts.station));
    const AreaAndAddress place = areaAndAddress(parts.first, driver);
    if (!takeArea(place.area, tag, driver)) fail(unknownAreaReason(place.area, driver));
    tag.address = place.address;
    tag.type = isBitArea(tag.area) ? Tag::BOOL : Tag::UINT16;
    if (parts.type && !takeType(*parts.type, tag)) fail(typeProblem(*parts.type));
    mustBeEmpty(kindProblem(tag));
    mustBeEmpty(addressProblem(tag, driver));
    return tag;
}

/// Number of values from the first tag to the end of a range such as "MW62" or "62".
int valuesUpTo(const QString& text, const Tag& first, const DriverLibrary& driver)
{
    AreaAndAddress end = areaAndAddress(text, driver);
    if (end.area.isEmpty()) end.area = first.area;
    if (end.area != first.area) fail(QLatin1String("a range lies in one area"));
    Tag last;
    last.area = end.area;
    last.address = end.address;
    last.type = first.isBit() ? Tag::BOOL : Tag::UINT16;
    const QString problem = addressProblem(last, driver);
    if (!problem.isEmpty()) fail(QLatin1String("the end of the range: ") + problem);
    const int units = last.number - first.number + 1;
    if (units < 1) fail(QLatin1String("the range ends before it begins"));
    if (units % first.units() != 0)
        fail(QString(QLatin1String("the range has %1 words, but each value of type %2 takes %3"))
                 .arg(QString::number(units), tagTypeText(first), QString::number(first.units())));
    return units / first.units();
}

QString rangeLimitProblem(const QString& values)
{
    return QString(QLatin1String("a range has 1 to %1 values, not %2"))
        .arg(QString::number(MOST_RANGE_VALUES), values);
}

int valueCount(const Parts& parts, const Tag& first, const DriverLibrary& driver)
{
    if (parts.count) {
        bool ok = false;
        const int count = parts.count->toInt(&ok);
        if (!ok || count < 1 || count > MOST_RANGE_VALUES)
            fail(rangeLimitProblem(quoted(*parts.count)));
        return count;
    }
    if (!parts.last) return 1;
    const int count = valuesUpTo(*parts.last, first, driver);
    if (count > MOST_RANGE_VALUES) fail(rangeLimitProblem(QString::number(count)));
    return count;
}

std::vector<Tag> tagsOf(const Parts& parts, const DriverLibrary& driver)
{
    const Tag first = firstTag(parts, driver);
    return consecutiveTags(first, valueCount(parts, first, driver), driver);
}

} // namespace

std::vector<Tag> tagsFromAddress(const QString& text, const DriverLibrary& driver)
{
    try {
        return tagsOf(partsOf(text), driver);
    } catch (const TagFileError& error) {
        throw TagFileError(text.toStdString() + ": " + error.what());
    }
}

Tag tagFromAddress(const QString& text, const DriverLibrary& driver)
{
    const std::vector<Tag> tags = tagsFromAddress(text, driver);
    if (tags.size() != 1) fail(text + QLatin1String(": a single address is needed, not a range"));
    return tags.front();
}

std::vector<Tag> consecutiveTags(const Tag& first, int count, const DriverLibrary& driver)
{
    const int units = count * first.units();
    int number = 0;
    const int result =
        driver.checkAddr(first.area, first.address, number,
                         first.isBit() ? BIT_VARIABLE : WORD_VARIABLE, units, FOR_READING);
    mustBeEmpty(addressReason(result, first.area, first.address, units, driver));
    std::vector<Tag> tags(size_t(count), first);
    for (int i = 0; i < count; ++i) {
        Tag& tag = tags[size_t(i)];
        tag.number = first.number + i * first.units();
        tag.address = addressText(driver, tag.area, tag.number);
        tag.name = typedAddressText(tag);
    }
    return tags;
}

QString placeText(const Tag& tag)
{
    const QString place = tag.area + tag.address;
    return tag.station == 1 ? place : QString::number(tag.station) + QLatin1Char(':') + place;
}

QString typedAddressText(const Tag& tag)
{
    const QString place = placeText(tag);
    const bool isPlain = tag.isBit() || (tag.type == Tag::UINT16 && tag.format == Tag::DECIMAL);
    return isPlain ? place : place + QLatin1Char(':') + tagTypeText(tag);
}

bool looksLikeAddress(const QString& text, const DriverLibrary& driver)
{
    const AreaAndAddress place = areaAndAddress(partsOf(text).first, driver);
    return !areaName(place.area, driver).isEmpty() && !place.address.isEmpty() &&
           place.address.at(0).isDigit();
}

AreaAndAddress areaAndAddress(const QString& text, const DriverLibrary& driver)
{
    const auto* const start = std::find_if(text.begin(), text.end(), [](QChar character) {
        return !character.isLetter() && character != QLatin1Char('%');
    });
    const int letters = int(start - text.begin());
    const QString name = areaName(text.left(letters), driver);
    return {name.isEmpty() ? text.left(letters) : name, text.mid(letters)};
}
