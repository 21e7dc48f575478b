#include "verbs/writeVerb.h"

#include "output/changeLines.h"
#include "plan/sharedMemory.h"
#include "plan/tagValue.h"
#include "plan/writeGroups.h"
#include "session/tagWrites.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

namespace {

VerbFailure usageError(const QString& text, const QString& problem)
{
    return VerbFailure(EXIT_USAGE, text + QLatin1String(": ") + problem);
}

/// Refuses two values for the same memory: the first value would be lost without a message.
void mustNotShare(const std::vector<Tag>& tags)
{
    const auto sharing = sharingTags(tags);
    if (sharing.empty()) return;
    const Tag& first = tags[sharing.front().first];
    const Tag& second = tags[sharing.front().second];
    if (first.area == second.area && first.number == second.number)
        throw usageError(labelText(second), QLatin1String("is written twice"));
    throw usageError(labelText(second), QLatin1String("shares memory with ") + labelText(first) +
                                            QLatin1String(", which is written as well"));
}

const char* outcomeText(JobEnd::Outcome outcome)
{
    switch (outcome) {
    case JobEnd::DONE:
        return "confirmed";
    case JobEnd::REFUSED:
        return "refused";
    case JobEnd::TIMED_OUT:
        return "timedOut";
    default:
        return "lost";
    }
}

/// Prints a confirmed write, and as an object also any other write.
void print(const Assignment& assigned, const JobEnd& end, bool json)
{
    const bool isConfirmed = end.outcome == JobEnd::DONE;
    if (!json) {
        if (!isConfirmed) return;
        std::printf("%s\n", qUtf8Printable(confirmedText(assigned)));
        return;
    }
    QJsonObject object;
    object.insert(QLatin1String("name"), assigned.tag.name);
    object.insert(QLatin1String("address"), placeText(assigned.tag));
    object.insert(QLatin1String("value"), jsonValue(tagValueText(assigned.tag, assigned.bytes)));
    object.insert(QLatin1String("confirmed"), isConfirmed);
    object.insert(QLatin1String("outcome"), QLatin1String(outcomeText(end.outcome)));
    object.insert(QLatin1String("trouble"), end.reason);
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

/// Hands in the job that writes a group.
void start(HostProgram& host, int job, const WriteGroup& group,
           const std::vector<Assignment>& assignments)
{
    const Assignment& first = assignments[group.tags.front()];
    if (!group.isOneFrame)
        return host.link().write(job, elementWrites(first.tag, first.bytes, labelText(first.tag)));
    std::vector<Tag> tags;
    std::vector<QByteArray> values;
    for (const size_t index : group.tags) {
        tags.push_back(assignments[index].tag);
        values.push_back(assignments[index].bytes);
    }
    host.link().transfer(oneFrameWrite(job, tags, values));
}

/// Writes the values and prints for each value, in the command's order, whether it is confirmed.
/// @return the status of the first failure
ExitStatus write(HostProgram& host, const std::vector<Assignment>& assignments, bool json)
{
    host.connect();
    const std::vector<int> jobs = startWrites(host, assignments);
    ExitStatus status = EXIT_DONE;
    for (size_t i = 0; i < jobs.size(); ++i) {
        const JobEnd end = host.endOf(jobs[i]);
        print(assignments[i], end, json);
        if (end.outcome == JobEnd::DONE) continue;
        host.tell(failureText(assignments[i], end));
        if (status == EXIT_DONE) status = host.statusOf(end.outcome);
    }
    return status;
}

} // namespace

QString confirmedText(const Assignment& assigned)
{
    return QString(QLatin1String("%1 = %2 confirmed"))
        .arg(labelText(assigned.tag), tagValueText(assigned.tag, assigned.bytes));
}

QString failureText(const Assignment& assigned, const JobEnd& end)
{
    return labelText(assigned.tag) + QLatin1String(": ") + end.reason;
}

std::vector<int> startWrites(HostProgram& host, const std::vector<Assignment>& assignments)
{
    std::vector<Tag> tags;
    std::vector<size_t> lists;
    for (const Assignment& assigned : assignments) {
        tags.push_back(assigned.tag);
        lists.push_back(assigned.list);
    }
    std::vector<int> jobs(assignments.size());
    for (const WriteGroup& group : writeGroups(tags, lists)) {
        const int job = host.newJob();
        for (const size_t index : group.tags)
            jobs[index] = job;
        start(host, job, group, assignments);
    }
    return jobs;
}

ExitStatus writeTags(const DriverLibrary& driver, const LinkOptions& options,
                     const std::vector<Assignment>& assignments)
{
    std::vector<Tag> tags;
    for (const Assignment& assigned : assignments)
        tags.push_back(assigned.tag);
    mustNotShare(tags);
    HostProgram host(driver, options, tags, LinkRun::ON_REQUEST);
    return host.run([&] { return write(host, assignments, options.json); });
}
