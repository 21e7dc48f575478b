#include "verbs/memoryWords.h"

#include "driver/addressText.h"
#include "plan/addressReason.h"
#include "plan/tagText.h"
#include "plan/typedAddress.h"
#include "wire/deviceRegisters.h"

#include <set>

namespace {

using Places = std::set<MemoryDump::Place>;

void addWords(int station, const QString& area, int first, int last, Places& places)
{
    for (int number = first; number <= last; ++number)
        places.emplace(station, area, number);
}

/// Adds a whole area.
/// @return false when the text is no area, with or without a station
bool addArea(const QString& text, const DriverLibrary& driver, Places& places)
{
    Tag tag;
    const bool hasStation = text.contains(QLatin1Char(':'));
    if (hasStation && !takeStation(text.section(QLatin1Char(':'), 0, 0), tag)) return false;
    const QString area = areaName(hasStation ? text.section(QLatin1Char(':'), 1) : text, driver);
    if (area.isEmpty() || isBitArea(area)) return false;
    const bool isMarkers = area == QLatin1String("MW");
    addWords(tag.station, area, isMarkers ? int(FIRST_MARKER) : 0,
             isMarkers ? int(LAST_MARKER) : int(LAST_INPUT_OR_OUTPUT), places);
    return true;
}

void addAddress(const QString& text, const DriverLibrary& driver, Places& places)
{
    for (const Tag& tag : tagsFromAddress(text, driver)) {
        if (tag.isBit())
            throw TagFileError(text.toStdString() +
                               ": a dump has words; name the word that holds the bit");
        addWords(tag.station, tag.area, tag.number, tag.number + tag.units() - 1, places);
    }
}

} // namespace

Tag wordTag(const MemoryDump::Place& place, const DriverLibrary& driver)
{
    Tag tag;
    tag.station = std::get<0>(place);
    tag.area = std::get<1>(place);
    tag.number = std::get<2>(place);
    tag.address = addressText(driver, tag.area, tag.number);
    tag.name = typedAddressText(tag);
    return tag;
}

std::vector<Tag> memoryWords(const QStringList& texts, const DriverLibrary& driver)
{
    Places places;
    for (const QString& text : texts) {
        if (!addArea(text, driver, places)) addAddress(text, driver, places);
    }
    std::vector<Tag> tags;
    for (const MemoryDump::Place& place : places)
        tags.push_back(wordTag(place, driver));
    return tags;
}
