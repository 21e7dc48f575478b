#include "verbs/readVerb.h"

#include "output/changeLines.h"
#include "plan/tagText.h"
#include "verbs/readOnce.h"
#include "verbs/tagChoice.h"
#include "verbs/watchRows.h"

#include <cstdio>

namespace {

QString placeAndOrderText(const Tag& tag)
{
    return placeText(tag) + QLatin1Char(':') + typeTextWithOrder(tag);
}

/// The tag in a word order. A tag without another name is named by its place and order.
Tag inOrder(Tag tag, Tag::WordOrder order)
{
    const bool hasOtherName = tag.name != typedAddressText(tag);
    tag.wordOrder = order;
    if (!hasOtherName) tag.name = placeAndOrderText(tag);
    return tag;
}

QString labelOf(const Tag& tag, ReadLabel label)
{
    if (label == NAMED_ONLY || tag.units() == 1) return labelText(tag);
    const QString place = placeAndOrderText(tag);
    return tag.name == place ? place : tag.name + QLatin1String(" (") + place + QLatin1Char(')');
}

WatchRow rowOf(const Tag& tag, const TagState& state, ReadLabel label)
{
    WatchRow row = watchRow(tag, state, state.readAt);
    if (label == WITH_WORD_ORDER && tag.units() > 1) row.address = placeAndOrderText(tag);
    return row;
}

void printObjects(const std::vector<WatchRow>& rows, const std::vector<TagState>& states,
                  const TimeText& times)
{
    for (size_t i = 0; i < rows.size(); ++i)
        std::printf("%s\n", changeJson(rows[i], states[i].readAt, times).constData());
}

void printValues(const std::vector<Tag>& tags, const std::vector<WatchRow>& rows, ReadLabel label)
{
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].good)
            std::printf("%s = %s\n", qUtf8Printable(labelOf(tags[i], label)),
                        qUtf8Printable(rows[i].value));
    }
}

/// Says of each tag why it has no value, and returns the status of the first failure. The loss of
/// the link is one reason for all tags.
ExitStatus tellFailures(HostProgram& host, const std::vector<Tag>& tags,
                        const std::vector<WatchRow>& rows, const JobEnd& end, ReadLabel label)
{
    if (end.outcome == JobEnd::LOST) host.mustBeDone(end);
    for (size_t i = 0; i < rows.size(); ++i) {
        if (!rows[i].good)
            host.tell(labelOf(tags[i], label) + QLatin1String(": ") + rows[i].trouble);
    }
    return host.statusOf(end.outcome);
}

ExitStatus read(HostProgram& host, const std::vector<Tag>& tags, ReadLabel label, bool json)
{
    const auto [states, end] = readOnce(host);
    std::vector<WatchRow> rows;
    for (size_t i = 0; i < tags.size(); ++i)
        rows.push_back(rowOf(tags[i], states[i], label));
    if (json)
        printObjects(rows, states, host.times());
    else
        printValues(tags, rows, label);
    return end.outcome == JobEnd::DONE ? EXIT_DONE : tellFailures(host, tags, rows, end, label);
}

} // namespace

std::vector<Tag> inBothOrders(const std::vector<Tag>& tags)
{
    std::vector<Tag> both;
    for (const Tag& tag : tags) {
        if (tag.units() == 1) {
            both.push_back(tag);
            continue;
        }
        both.push_back(inOrder(tag, Tag::LOW_WORD_FIRST));
        both.push_back(inOrder(tag, Tag::HIGH_WORD_FIRST));
    }
    if (both.size() > tags.size()) return both;
    throw VerbFailure(EXIT_USAGE,
                      QLatin1String("--both-orders needs a 32-bit type, such as MW100:float32"));
}

ExitStatus readTags(const DriverLibrary& driver, const LinkOptions& options,
                    const std::vector<Tag>& tags, ReadLabel label)
{
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] { return read(host, tags, label, options.json); });
}
