#include "verbs/readVerb.h"

#include "output/changeLines.h"
#include "verbs/tagChoice.h"
#include "verbs/watchRows.h"

#include <cstdio>

namespace {

void print(const Tag& tag, const TagState& state, bool json)
{
    const WatchRow row = watchRow(tag, state, state.readAt);
    if (json)
        std::printf("%s\n", changeJson(row, state.readAt).constData());
    else
        std::printf("%s = %s\n", qUtf8Printable(labelText(tag)), qUtf8Printable(row.value));
}

} // namespace

ExitStatus readTags(const DriverLibrary& driver, const LinkOptions& options,
                    const std::vector<Tag>& tags)
{
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] {
        host.connect();
        const int job = host.newJob();
        host.link().read(job, host.blocks());
        host.await(job);
        const std::vector<TagState> states = host.values().tags();
        for (size_t i = 0; i < tags.size(); ++i)
            print(tags[i], states[i], options.json);
        return EXIT_DONE;
    });
}
