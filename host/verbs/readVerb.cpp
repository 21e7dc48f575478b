#include "verbs/readVerb.h"

#include "output/changeLines.h"
#include "verbs/tagChoice.h"
#include "verbs/watchRows.h"

#include <cstdio>

namespace {

/// The row of a tag after its only read. A later event, such as the silence of its station, does
/// not make the value worse.
WatchRow rowOf(const Tag& tag, const TagState& state, const JobEnd& end)
{
    WatchRow row = watchRow(tag, state, state.readAt);
    row.good = state.readAt >= 0;
    if (row.good)
        row.trouble.clear();
    else if (row.trouble.isEmpty())
        row.trouble = end.trouble;
    return row;
}

void printObjects(const std::vector<WatchRow>& rows, const std::vector<TagState>& states,
                  const TimeText& times)
{
    for (size_t i = 0; i < rows.size(); ++i)
        std::printf("%s\n", changeJson(rows[i], states[i].readAt, times).constData());
}

void printValues(const std::vector<Tag>& tags, const std::vector<WatchRow>& rows)
{
    for (size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].good)
            std::printf("%s = %s\n", qUtf8Printable(labelText(tags[i])),
                        qUtf8Printable(rows[i].value));
    }
}

/// Says of each tag why it has no value, and returns the status of the first failure. The loss of
/// the link is one reason for all tags.
ExitStatus tellFailures(HostProgram& host, const std::vector<Tag>& tags,
                        const std::vector<WatchRow>& rows, const JobEnd& end)
{
    if (end.outcome == JobEnd::LOST) host.mustBeDone(end);
    for (size_t i = 0; i < rows.size(); ++i) {
        if (!rows[i].good) host.tell(labelText(tags[i]) + QLatin1String(": ") + rows[i].trouble);
    }
    return host.statusOf(end.outcome);
}

ExitStatus read(HostProgram& host, const std::vector<Tag>& tags, bool json)
{
    host.connect();
    const int job = host.newJob();
    host.link().read(job, host.blocks());
    const JobEnd end = host.endOf(job);
    const std::vector<TagState> states = host.values().tags();
    std::vector<WatchRow> rows;
    for (size_t i = 0; i < tags.size(); ++i)
        rows.push_back(rowOf(tags[i], states[i], end));
    if (json)
        printObjects(rows, states, host.times());
    else
        printValues(tags, rows);
    return end.outcome == JobEnd::DONE ? EXIT_DONE : tellFailures(host, tags, rows, end);
}

} // namespace

ExitStatus readTags(const DriverLibrary& driver, const LinkOptions& options,
                    const std::vector<Tag>& tags)
{
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] { return read(host, tags, options.json); });
}
