#include "verbs/readVerb.h"

#include "output/changeLines.h"
#include "plan/tagText.h"
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

void print(const Tag& tag, const TagState& state, ReadLabel label, bool json)
{
    WatchRow row = watchRow(tag, state, state.readAt);
    if (label == WITH_WORD_ORDER && tag.units() > 1) row.address = placeAndOrderText(tag);
    if (json)
        std::printf("%s\n", changeJson(row, state.readAt).constData());
    else
        std::printf("%s = %s\n", qUtf8Printable(labelOf(tag, label)), qUtf8Printable(row.value));
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
    return host.run([&] {
        host.connect();
        const int job = host.newJob();
        host.link().read(job, host.blocks());
        host.await(job);
        const std::vector<TagState> states = host.values().tags();
        for (size_t i = 0; i < tags.size(); ++i)
            print(tags[i], states[i], label, options.json);
        return EXIT_DONE;
    });
}
